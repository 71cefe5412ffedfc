#include "providers/StreamText.h"

#include <algorithm>
#include <utility>

namespace morvane {
namespace {

constexpr QChar replacement(QChar::ReplacementCharacter);

bool isContinuation(char byte)
{
    return (byte & 0xC0) == 0x80;
}

/// How many bytes the character has that begins with this one.
std::size_t sequenceLength(char lead)
{
    const auto byte = static_cast<unsigned char>(lead);
    if (byte < 0xC2 || byte > 0xF4)
        return 1;
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// How many bytes at the end begin a character whose rest is missing.
std::size_t cutLength(std::string_view bytes)
{
    constexpr std::size_t longestCut = 3;
    for (std::size_t length = 1; length <= std::min(longestCut, bytes.size()); ++length) {
        const char byte = bytes[bytes.size() - length];
        if (!isContinuation(byte))
            return length < sequenceLength(byte) ? length : 0;
    }
    return 0;
}

QString plainText(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

/// Where the next surrogate in three bytes stands.
std::size_t findSurrogate(std::string_view bytes, std::size_t from)
{
    constexpr char lead = '\xED';
    for (std::size_t at = bytes.find(lead, from); at != std::string_view::npos; at = bytes.find(lead, at + 1))
        if (at + 2 < bytes.size() && (bytes[at + 1] & 0xE0) == 0xA0 && isContinuation(bytes[at + 2]))
            return at;
    return std::string_view::npos;
}

} // namespace

QString StreamText::add(std::string_view piece)
{
    std::string joined;
    if (!m_cutBytes.empty()) {
        joined = m_cutBytes.append(piece);
        piece = joined;
    }
    const std::size_t whole = piece.size() - cutLength(piece);
    m_cutBytes = piece.substr(whole);
    QString text = decoded(piece.substr(0, whole));
    m_text += text;
    return text;
}

QString StreamText::end()
{
    QString text;
    if (m_highSurrogate)
        text += replacement;
    if (!m_cutBytes.empty())
        text += replacement;
    m_highSurrogate.reset();
    m_cutBytes.clear();
    m_text += text;
    return text;
}

QString StreamText::decoded(std::string_view bytes)
{
    std::size_t surrogate = findSurrogate(bytes, 0);
    if (surrogate == std::string_view::npos && !m_highSurrogate)
        return plainText(bytes);
    QString text;
    std::size_t from = 0;
    for (; surrogate != std::string_view::npos; surrogate = findSurrogate(bytes, from)) {
        text += plainText(bytes.substr(from, surrogate - from));
        text += QChar(static_cast<char16_t>(0xD000 | (bytes[surrogate + 1] & 0x3F) << 6 |
                                            (bytes[surrogate + 2] & 0x3F)));
        from = surrogate + 3;
    }
    text += plainText(bytes.substr(from));
    return paired(text);
}

QString StreamText::paired(const QString &text)
{
    QString result;
    result.reserve(text.size() + 1);
    for (const QChar unit : text) {
        if (m_highSurrogate) {
            if (unit.isLowSurrogate())
                result += *m_highSurrogate;
            else
                result += replacement;
        }
        const bool follows = std::exchange(m_highSurrogate, std::nullopt).has_value();
        if (unit.isHighSurrogate())
            m_highSurrogate = unit;
        else
            result += unit.isLowSurrogate() && !follows ? replacement : unit;
    }
    return result;
}

} // namespace morvane
