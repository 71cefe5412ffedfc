#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <string>

namespace morvane {

/// Translates a regular expression from ICU's syntax into one for RE2 that matches in every UTF-8 text in
/// which the original matches, and perhaps in more: what RE2 lacks (look-around, back references) is left
/// out, and what the two understand differently (classes beyond ASCII) is widened. What the translator does
/// not know for certain makes it give up.
///
/// When the original ignores case anywhere, the translation must be made to ignore it everywhere, and what is
/// said above holds for ASCII texts only: without case, ICU equates letters with groups of letters.
class PatternTranslator {
public:
    explicit PatternTranslator(QStringView pattern) : m_pattern(pattern) {}

    /// Nothing if it gave up. Once for an object.
    std::optional<std::string> translate();

    /// Whether the pattern ignores case anywhere. After translate().
    bool ignoresCase() const { return m_ignoresCase; }

private:
    void translateWhole();
    void translateAlternatives();
    void translateElement();
    void translateEscape();
    void translateGroup();
    void translateFlags();
    void translateSet();
    bool translateSimpleSet();
    void translateRepetition();
    void writeCharacter(char32_t character);
    void skipSet();

    std::optional<char32_t> readSetCharacter();
    std::optional<char32_t> readEscapedCharacter();
    std::optional<char32_t> readHexadecimal(qsizetype digits);
    char32_t readCharacter();
    QStringView readUntil(QStringView end);

    bool atEnd() const { return m_gaveUp || m_position >= m_pattern.size(); }
    QStringView rest() const { return m_pattern.sliced(m_position); }
    bool next(QStringView text) const { return !atEnd() && rest().startsWith(text); }
    bool skip(QStringView text);

    QStringView m_pattern;
    qsizetype m_position = 0; ///< Never beyond the end.
    std::string m_output;
    int m_depth = 0;
    bool m_ignoresCase = false;
    bool m_hasFlags = false; ///< From here on "." and "^" may mean more than without flags.
    bool m_gaveUp = false;
};

} // namespace morvane
