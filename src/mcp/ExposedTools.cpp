#include "mcp/ExposedTools.h"

#include "base/Text.h"

#include <algorithm>
#include <unicode/uchar.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

char32_t firstCodePoint(QStringView character)
{
    if (character.size() > 1 && character[0].isHighSurrogate() && character[1].isLowSurrogate())
        return QChar::surrogateToUcs4(character[0], character[1]);
    return character[0].unicode();
}

bool isLetterOrNumber(QStringView character)
{
    const auto point = UChar32(firstCodePoint(character));
    return u_hasBinaryProperty(point, UCHAR_ALPHABETIC) ||
           u_getIntPropertyValue(point, UCHAR_NUMERIC_TYPE) != U_NT_NONE;
}

} // namespace

QString sanitize(const QString &text)
{
    const QString lower = text.toLower();
    QString safe;
    safe.reserve(lower.size());
    constexpr qsizetype enough = 128; // no character is longer than half of that
    for (QStringView rest = lower; !rest.isEmpty();) {
        // Two ASCII characters are never one, but for CR LF, and both of these become "_" alike.
        const bool plain =
            rest[0].unicode() < 0x80 && rest[0] != u'\r' && (rest.size() == 1 || rest[1].unicode() < 0x80);
        const QStringView character =
            rest.first(plain ? 1 : characterOffset(rest.first(std::min(rest.size(), enough)), 1));
        if (isLetterOrNumber(character))
            safe += character;
        else
            safe += u'_';
        rest = rest.sliced(character.size());
    }
    return safe;
}

QString exposedName(const QString &server, const QString &tool)
{
    return u"mcp_"_s + sanitize(server) + u'_' + sanitize(tool);
}

QList<ExposedTool> exposedTools(const QString &server, const QList<MCPTool> &tools)
{
    const QString prefix = u"mcp_"_s + sanitize(server) + u'_';
    QList<ExposedTool> exposed;
    exposed.reserve(tools.size());
    for (const MCPTool &tool : tools) {
        const QString description =
            u'[' + server + u"] "_s + (tool.description.isEmpty() ? tool.name : tool.description);
        exposed.append({tool.name, {prefix + sanitize(tool.name), description, tool.schema}});
    }
    return exposed;
}

} // namespace morvane
