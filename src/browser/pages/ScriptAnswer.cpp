#include "browser/pages/ScriptAnswer.h"

#include "base/Json.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Many times what the scripts give of a page; more comes of a title or an address without end.
constexpr qsizetype largestAnswer = 1'000'000;

/// A script writes whole characters as they are, and escapes those that it holds one half of; no reader of
/// JSON takes these.
QString withoutHalfCharacters(QString json)
{
    constexpr qsizetype escapeLength = 6;
    for (qsizetype at = json.indexOf(u'\\'); at >= 0; at = json.indexOf(u'\\', at)) {
        bool isHex = false;
        const ushort unit = QStringView(json).mid(at + 2, 4).toUShort(&isHex, 16);
        if (QStringView(json).mid(at + 1, 1) == "u"_L1 && isHex && QChar::isSurrogate(unit)) {
            json.replace(at, escapeLength, QChar::ReplacementCharacter);
            ++at;
        } else {
            at += 2;
        }
    }
    return json;
}

} // namespace

std::optional<boost::json::object> readScriptAnswer(const QVariant &answer)
{
    if (answer.typeId() != QMetaType::QString)
        return std::nullopt;
    const QString json = answer.toString();
    if (json.size() > largestAnswer)
        return std::nullopt;
    auto object = parseJsonObject(withoutHalfCharacters(json).toUtf8());
    return object ? std::optional(*std::move(object)) : std::nullopt;
}

} // namespace morvane
