#include "base/IniReader.h"

#include "base/IniValue.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF", 3);

bool isWhiteSpace(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

bool endsLine(char character)
{
    return character == '\n' || character == '\r';
}

/// The name of a section or a key: "\" stands for "/", "%41" and "%U0041" for a code unit.
QString unescapedKey(QByteArrayView escaped)
{
    const QString text = QString::fromUtf8(escaped);
    const QStringView key = text;
    QString result;
    for (qsizetype at = 0; at < key.size();) {
        const bool isLong = key.sliced(at).startsWith("%U"_L1);
        const qsizetype digits = isLong ? 4 : 2;
        const qsizetype from = at + (isLong ? 2 : 1);
        bool isNumber = false;
        ushort unit = 0;
        if (key[at] == u'%' && from + digits <= key.size())
            unit = key.sliced(from, digits).toUShort(&isNumber, 16);
        if (isNumber)
            result += QChar(unit);
        else
            result += key[at] == u'\\' ? u'/' : key[at];
        at = isNumber ? from + digits : at + 1;
    }
    return result;
}

/// What the keys below a heading "[name" begin with.
QString keyPrefix(QByteArrayView name)
{
    if (name.compare("General", Qt::CaseInsensitive) == 0)
        return {};
    if (name.compare("%General", Qt::CaseInsensitive) == 0) // a group of that name
        name = name.sliced(1);
    return unescapedKey(name) + u'/';
}

} // namespace

IniReader::IniReader(QByteArrayView text) : m_text(text)
{
    if (m_text.startsWith(byteOrderMark))
        m_at = byteOrderMark.size();
}

IniReader::Content IniReader::read()
{
    Content content;
    QString prefix;
    qsizetype itemsLeft = maximumItems;
    bool isBelowHeading = false; // which has counted for the key
    while (const auto line = nextLine()) {
        const bool isHeading = line->text.startsWith('[');
        const bool isPaidFor = std::exchange(isBelowHeading, isHeading) && !isHeading;
        if (!isPaidFor && itemsLeft-- == 0) {
            content.isDamaged = true;
            break;
        }
        if (isHeading) {
            const qsizetype end = line->text.indexOf(']');
            content.isDamaged |= end < 0;
            prefix = keyPrefix(line->text.first(end < 0 ? line->text.size() : end).sliced(1).trimmed());
        } else if (line->equalsSign) {
            const QByteArrayView key = line->text.first(*line->equalsSign).trimmed();
            const auto value = iniValue(line->text.sliced(*line->equalsSign + 1), itemsLeft + 1);
            if (!value) {
                content.isDamaged = true;
                break;
            }
            itemsLeft -= value->typeId() == QMetaType::QStringList ? value->toStringList().size() - 1 : 0;
            content.values.insert(prefix + unescapedKey(key), *value);
        } else {
            content.isDamaged = true;
        }
    }
    return content;
}

std::optional<IniReader::Line> IniReader::nextLine()
{
    while (true) {
        skipBlanks();
        if (m_at == m_text.size())
            return std::nullopt;
        if (m_text[m_at] != ';')
            break;
        skipComment();
    }
    const qsizetype begin = m_at;
    Line line;
    bool inQuotes = false;
    for (; m_at < m_text.size(); ++m_at) {
        const char character = m_text[m_at];
        if (!inQuotes && (endsLine(character) || character == ';'))
            break;
        if (character == '"')
            inQuotes = !inQuotes;
        else if (character == '\\')
            skipEscape();
        else if (character == '=' && !inQuotes && !line.equalsSign)
            line.equalsSign = m_at - begin;
    }
    line.text = m_text.sliced(begin, m_at - begin);
    return line;
}

void IniReader::skipBlanks()
{
    while (m_at < m_text.size() && isWhiteSpace(m_text[m_at]))
        ++m_at;
}

void IniReader::skipComment()
{
    while (m_at < m_text.size() && !endsLine(m_text[m_at]))
        ++m_at;
}

void IniReader::skipEscape()
{
    const qsizetype left = m_text.size() - m_at - 1;
    if (left == 0)
        return;
    ++m_at;
    // A line end of two characters is one.
    const bool isPair =
        left > 1 && endsLine(m_text[m_at]) && endsLine(m_text[m_at + 1]) && m_text[m_at] != m_text[m_at + 1];
    if (isPair)
        ++m_at;
}

} // namespace morvane
