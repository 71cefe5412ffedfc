#include "base/IniText.h"

#include <QMap>
#include <QStringList>
#include <optional>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

bool isAsciiLetterOrDigit(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9');
}

bool isHexDigit(char16_t unit)
{
    return (unit >= u'a' && unit <= u'f') || (unit >= u'A' && unit <= u'F') || (unit >= u'0' && unit <= u'9');
}

void appendNumber(QByteArray &key, char16_t unit)
{
    const bool isLong = unit > 0xff;
    key += isLong ? "%U" : "%";
    for (int shift = isLong ? 12 : 4; shift >= 0; shift -= 4)
        key += "0123456789ABCDEF"[(unit >> shift) & 0xf];
}

QByteArray escapedKey(QStringView key)
{
    QByteArray escaped;
    for (qsizetype at = 0; at < key.size(); ++at) {
        const char16_t unit = key[at].unicode();
        if (unit == u'/' && at + 1 < key.size()) // at the end it would take the "=" for its own
            escaped += '\\';
        else if (isAsciiLetterOrDigit(unit) || unit == u'_' || unit == u'-' || unit == u'.')
            escaped += static_cast<char>(unit);
        else
            appendNumber(escaped, unit);
    }
    return escaped;
}

std::optional<char> shortEscape(char16_t unit)
{
    switch (unit) {
    case u'\a':
        return 'a';
    case u'\b':
        return 'b';
    case u'\f':
        return 'f';
    case u'\n':
        return 'n';
    case u'\r':
        return 'r';
    case u'\t':
        return 't';
    case u'\v':
        return 'v';
    case u'"':
    case u'\\':
        return static_cast<char>(unit);
    default:
        return std::nullopt;
    }
}

void appendNumber(QString &text, char16_t unit)
{
    text += u"\\x"_s;
    int shift = 12;
    while (shift > 0 && (unit >> shift) == 0)
        shift -= 4;
    for (; shift >= 0; shift -= 4)
        text += u"0123456789abcdef"[(unit >> shift) & 0xf];
}

/// Whether a half of a character has no other at its side, for which there is no UTF-8.
bool isLoneSurrogate(const QString &text, qsizetype at)
{
    if (text[at].isHighSurrogate())
        return at + 1 == text.size() || !text[at + 1].isLowSurrogate();
    return text[at].isLowSurrogate() && (at == 0 || !text[at - 1].isHighSurrogate());
}

/// One text as a value or as an element of a list.
QByteArray escapedText(const QString &text)
{
    QString escaped;
    bool needsQuotes = text.isEmpty() || text.startsWith(u' ') || text.endsWith(u' ');
    bool afterHexEscape = false; // a hexadecimal digit would be read as part of it
    for (qsizetype at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at].unicode();
        needsQuotes |= unit == u';' || unit == u',' || unit == u'=';
        if (const auto escape = shortEscape(unit)) {
            escaped += u'\\';
            escaped += QLatin1Char(*escape);
            afterHexEscape = false;
        } else if (unit < 0x20 || unit == 0x7f || (afterHexEscape && isHexDigit(unit)) ||
                   isLoneSurrogate(text, at)) {
            appendNumber(escaped, unit);
            afterHexEscape = true;
        } else {
            escaped += text[at];
            afterHexEscape = false;
        }
    }
    const QByteArray utf8 = escaped.toUtf8();
    return needsQuotes ? '"' + utf8 + '"' : utf8;
}

/// A text with "@" in front is taken for a value of another type, unless the "@" is doubled.
QString marked(const QString &text)
{
    return text.startsWith(u'@') ? u'@' + text : text;
}

std::optional<QByteArray> escapedValue(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return QByteArray("@Invalid()");
    case QMetaType::QStringList: {
        QByteArrayList elements;
        for (const QString &element : value.toStringList())
            elements.append(escapedText(marked(element)));
        return elements.isEmpty() ? QByteArray("@Invalid()") : elements.join(", ");
    }
    case QMetaType::QByteArray:
        return escapedText(u"@ByteArray("_s + QString::fromLatin1(value.toByteArray()) + u')');
    case QMetaType::QString:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return escapedText(marked(value.toString()));
    default:
        return std::nullopt;
    }
}

/// The heading over the keys that begin with `prefix`, which is empty or ends with "/".
QByteArray sectionName(const QString &prefix)
{
    if (prefix.isEmpty())
        return "General";
    const QString group = prefix.chopped(1);
    const bool wouldBeTakenForNone = group.compare("general"_L1, Qt::CaseInsensitive) == 0;
    return (wouldBeTakenForNone ? "%" : "") + escapedKey(group);
}

} // namespace

QByteArray iniText(const QVariantMap &values)
{
    QMap<QString, QByteArray> sections; // by what their keys begin with
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        const auto text = escapedValue(*value);
        if (!text)
            continue;
        const qsizetype prefix = value.key().indexOf(u'/') + 1;
        sections[value.key().first(prefix)] +=
            escapedKey(QStringView(value.key()).sliced(prefix)) + '=' + *text + '\n';
    }
    QByteArray text;
    for (auto section = sections.cbegin(); section != sections.cend(); ++section)
        text += (text.isEmpty() ? "[" : "\n[") + sectionName(section.key()) + "]\n" + *section;
    return text;
}

qsizetype iniItems(const QVariantMap &values)
{
    qsizetype items = values.size();
    for (const QVariant &value : values)
        if (value.typeId() == QMetaType::QStringList)
            items += qMax<qsizetype>(value.toStringList().size() - 1, 0);
    return items;
}

} // namespace morvane
