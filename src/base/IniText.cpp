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

QByteArray escapedKey(QStringView key)
{
    QByteArray escaped;
    for (const QChar character : key) {
        const char16_t unit = character.unicode();
        if (unit == u'/')
            escaped += '\\';
        else if (isAsciiLetterOrDigit(unit) || unit == u'_' || unit == u'-' || unit == u'.')
            escaped += static_cast<char>(unit);
        else
            escaped += u"%%1%2"_s.arg(unit > 0xff ? u"U"_s : QString())
                           .arg(unit, unit > 0xff ? 4 : 2, 16, QChar(u'0'))
                           .toUpper()
                           .toLatin1();
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

/// One text as a value or as an element of a list.
QByteArray escapedText(const QString &text)
{
    QString escaped;
    bool needsQuotes = text.isEmpty() || text.startsWith(u' ') || text.endsWith(u' ');
    bool afterHexEscape = false; // a hexadecimal digit would be read as part of it
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        needsQuotes |= unit == u';' || unit == u',' || unit == u'=';
        if (const auto escape = shortEscape(unit)) {
            escaped += u'\\';
            escaped += QLatin1Char(*escape);
            afterHexEscape = false;
        } else if (unit < 0x20 || unit == 0x7f || (afterHexEscape && isHexDigit(unit))) {
            escaped += u"\\x"_s + QString::number(unit, 16);
            afterHexEscape = true;
        } else {
            escaped += character;
            afterHexEscape = false;
        }
    }
    const QByteArray utf8 = escaped.toUtf8();
    return needsQuotes ? '"' + utf8 + '"' : utf8;
}

/// QSettings takes a text with "@" in front for a value of another type, unless the "@" is doubled.
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

} // namespace

QByteArray iniText(const QVariantMap &values)
{
    QMap<QString, QByteArray> sections;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        const auto text = escapedValue(*value);
        if (!text)
            continue;
        const qsizetype slash = value.key().indexOf(u'/');
        sections[value.key().left(std::max<qsizetype>(slash, 0))] +=
            escapedKey(QStringView(value.key()).sliced(slash + 1)) + '=' + *text + '\n';
    }
    QByteArray text;
    for (auto section = sections.cbegin(); section != sections.cend(); ++section) {
        // "General" heads the keys without a group; a group of that name is marked.
        const QByteArray name = section.key().isEmpty() ? QByteArray("General")
                                : section.key().compare(u"general"_s, Qt::CaseInsensitive) == 0
                                    ? "%" + escapedKey(section.key())
                                    : escapedKey(section.key());
        text += (text.isEmpty() ? "[" : "\n[") + name + "]\n" + *section;
    }
    return text;
}

} // namespace morvane
