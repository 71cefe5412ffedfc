#include "base/IniValue.h"

#include <QStringDecoder>
#include <QStringList>
#include <algorithm>
#include <optional>
#include <string_view>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

bool isSpaceOrTab(char character)
{
    return character == ' ' || character == '\t';
}

bool isAscii(char character)
{
    return static_cast<unsigned char>(character) < 0x80;
}

bool endsPlainText(char character)
{
    return character == '\\' || character == '"' || character == ',';
}

std::optional<unsigned> digitOf(char character, unsigned base)
{
    unsigned digit = base;
    if (character >= '0' && character <= '9')
        digit = static_cast<unsigned>(character - '0');
    else if (character >= 'a' && character <= 'f')
        digit = static_cast<unsigned>(character - 'a') + 10;
    else if (character >= 'A' && character <= 'F')
        digit = static_cast<unsigned>(character - 'A') + 10;
    return digit < base ? std::optional(digit) : std::nullopt;
}

/// Cuts a value into the texts that its commas divide.
class Elements {
public:
    explicit Elements(QByteArrayView value) : m_value(value) {}

    /// One more than `most`, if there are more.
    QStringList read(qsizetype most)
    {
        skipBlanks();
        while (m_at < m_value.size() && m_elements.size() <= most) {
            const char character = m_value[m_at];
            if (character == '\\')
                takeEscape();
            else if (character == '"')
                takeQuote();
            else if (character == ',' && !m_inQuotes)
                takeComma();
            else
                takePlain();
        }
        if (m_elements.size() <= most)
            finishElement();
        return m_elements;
    }

private:
    void skipBlanks()
    {
        while (m_at < m_value.size() && isSpaceOrTab(m_value[m_at]))
            ++m_at;
        m_kept = m_element.size();
    }

    void takeQuote()
    {
        ++m_at;
        m_isQuoted = true;
        m_inQuotes = !m_inQuotes;
        if (!m_inQuotes)
            skipBlanks();
    }

    void takeComma()
    {
        ++m_at;
        finishElement();
        m_element.clear();
        m_isQuoted = false;
        skipBlanks();
    }

    void takePlain()
    {
        const auto *const from = m_value.begin() + m_at;
        const auto *const end = std::find_if(from + 1, m_value.end(), endsPlainText);
        const QByteArrayView text(from, end);
        // The decoder, which is dear for a letter or two, is needed where it has something to put together.
        if (!m_isCut && std::all_of(from, end, isAscii))
            m_element += QLatin1String(text);
        else
            m_element += QString(m_decode(text));
        m_isCut = !isAscii(text.back());
        m_at = end - m_value.begin();
    }

    void takeEscape()
    {
        ++m_at;
        m_kept = m_element.size();
        if (m_at == m_value.size())
            return;
        static constexpr std::string_view letters = "abfnrtv\"?'\\";
        static constexpr std::string_view meanings = "\a\b\f\n\r\t\v\"?'\\";
        const char letter = m_value[m_at];
        const std::size_t found = letters.find(letter);
        if (found != std::string_view::npos) {
            ++m_at;
            m_element += QLatin1Char(meanings[found]);
        } else if (letter == 'x') {
            ++m_at;
            takeNumber(16);
        } else if (digitOf(letter, 8)) {
            takeNumber(8);
        } else {
            skipEscaped();
        }
        m_kept = m_element.size();
    }

    /// A code unit by its number; nothing if no digit follows.
    void takeNumber(unsigned base)
    {
        const qsizetype from = m_at;
        unsigned unit = 0;
        for (auto digit = nextDigit(base); digit; digit = nextDigit(base)) {
            unit = (unit * base + *digit) & 0xFFFF;
            ++m_at;
        }
        if (m_at > from)
            m_element += QChar(static_cast<char16_t>(unit));
    }

    std::optional<unsigned> nextDigit(unsigned base) const
    {
        return m_at < m_value.size() ? digitOf(m_value[m_at], base) : std::nullopt;
    }

    /// A backslash in front of anything else, or at the end of a line, stands for nothing.
    void skipEscaped()
    {
        const char first = m_value[m_at++];
        const char second = m_at < m_value.size() ? m_value[m_at] : '\0';
        if ((first == '\n' && second == '\r') || (first == '\r' && second == '\n'))
            ++m_at;
    }

    void finishElement()
    {
        if (!m_isQuoted)
            while (m_element.size() > m_kept && (m_element.endsWith(u' ') || m_element.endsWith(u'\t')))
                m_element.chop(1);
        m_elements.append(m_element);
    }

    QByteArrayView m_value;
    qsizetype m_at = 0;
    QStringList m_elements;
    QString m_element;
    qsizetype m_kept = 0; ///< Blanks before here belong to the element.
    bool m_inQuotes = false;
    bool m_isQuoted = false;
    bool m_isCut = false; ///< The last text may have ended within a character.
    QStringDecoder m_decode{QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom};
};

QString unmarked(const QString &text)
{
    return text.startsWith("@@"_L1) ? text.sliced(1) : text;
}

QVariant typed(const QString &text)
{
    constexpr auto bytes = "@ByteArray("_L1;
    constexpr auto plain = "@String("_L1; // of a text with a null
    if (text == "@Invalid()"_L1)
        return {};
    if (text.startsWith(bytes) && text.endsWith(u')'))
        return text.sliced(bytes.size()).chopped(1).toLatin1();
    if (text.startsWith(plain) && text.endsWith(u')'))
        return text.sliced(plain.size()).chopped(1);
    return unmarked(text);
}

} // namespace

std::optional<QVariant> iniValue(QByteArrayView escaped, qsizetype mostElements)
{
    QStringList elements = Elements(escaped).read(mostElements);
    if (elements.size() > mostElements)
        return std::nullopt;
    if (elements.size() == 1)
        return typed(elements.front());
    std::transform(elements.begin(), elements.end(), elements.begin(),
                   [](const QString &element) { return typed(element).toString(); });
    return QVariant(elements);
}

} // namespace morvane
