#include "tools/CommandLetters.h"

#include <array>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace morvane {
namespace {

// The stand-ins. A boundary lies between letters, digits, "_" and the rest.
constexpr char word = 'W';          ///< In \w, a letter at boundaries.
constexpr char wordBehindOther = 1; ///< In \w, none at boundaries: a mark that nothing carries.
constexpr char otherBehindWord =
    'X'; ///< Not in \w, a letter at boundaries: a formatting character in a word.
constexpr char other = 2;
constexpr char digit = '7';
constexpr char blank = '\t';
constexpr char lineEnd = '\r'; ///< Any but the line feed, which the expressions name.

constexpr std::array<char, 128> asciiLetters = [] {
    std::array<char, 128> letters{};
    for (int c = 0; c < 128; ++c)
        letters[static_cast<std::size_t>(c)] = c < ' ' || c == 0x7f ? other : static_cast<char>(c);
    for (int c = 'A'; c <= 'Z'; ++c)
        letters[static_cast<std::size_t>(c)] = static_cast<char>(c - 'A' + 'a');
    letters['\t'] = blank;
    letters['\n'] = '\n';
    letters['\v'] = letters['\f'] = letters['\r'] = lineEnd;
    return letters;
}();

bool isAsciiWord(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// Not through one of ICU's sets, which cost more.
bool isWord(UChar32 c, uint32_t category)
{
    constexpr uint32_t always = U_GC_L_MASK | U_GC_M_MASK | U_GC_ND_MASK | U_GC_NL_MASK |
                                U_GC_PC_MASK; // parts of the definition or of Alphabetic
    constexpr UChar32 zeroWidthNonJoiner = 0x200c;
    constexpr UChar32 zeroWidthJoiner = 0x200d;
    return (category & always) != 0 || c == zeroWidthNonJoiner || c == zeroWidthJoiner || u_isUAlphabetic(c);
}

char letterBeyondAscii(UChar32 c, char before)
{
    const uint32_t category = U_GET_GC_MASK(c);
    const bool isTransparent =
        (category & U_GC_CF_MASK) != 0 || u_hasBinaryProperty(c, UCHAR_GRAPHEME_EXTEND);
    if (isTransparent) {
        if (isWord(c, category))
            return isAsciiWord(before) ? word : wordBehindOther;
        return isAsciiWord(before) ? otherBehindWord : other;
    }
    if ((category & U_GC_ND_MASK) != 0)
        return digit;
    if (isWord(c, category))
        return word;
    if (c == 0x85 || c == 0x2028 || c == 0x2029)
        return lineEnd;
    return u_isUWhiteSpace(c) ? blank : other;
}

} // namespace

std::string commandLetters(QStringView text)
{
    const char16_t *const units = text.utf16();
    const qsizetype size = text.size();
    std::string letters(static_cast<std::size_t>(size), '\0');
    std::size_t written = 0;
    char before = other;
    for (qsizetype at = 0; at < size;) {
        if (units[at] < 0x80) {
            before = asciiLetters[units[at++]];
        } else {
            UChar32 c = 0;
            U16_NEXT(units, at, size, c);
            before = letterBeyondAscii(c, before);
        }
        letters[written++] = before;
    }
    letters.resize(written);
    return letters;
}

} // namespace morvane
