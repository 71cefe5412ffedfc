#include "tools/PatternTranslator.h"

#include <QList>
#include <algorithm>
#include <cstdio>

namespace morvane {
namespace {

/// Groups nested deeper than this are not worth the stack.
constexpr int greatestDepth = 50;
/// What RE2 takes as a number of repetitions.
constexpr qulonglong mostRepetitions = 1000;

constexpr const char *anyCharacter = "(?s:.)";
constexpr const char *anyText = "(?s:.*)";
constexpr const char *nothing = "(?:)";

/// A class of characters as the inside of an RE2 set. Beyond ASCII every character may belong to every class.
/// The two differ where ICU's documents and its versions do.
struct CharacterClass {
    char16_t letter;
    const char *atMost;  ///< No ASCII character of the class is missing.
    const char *atLeast; ///< No ASCII character is in it that does not belong to the class.
};

constexpr CharacterClass characterClasses[] = {
    {u'd', "0-9", "0-9"},
    {u'D', "\\x00-/:-\\x7f", "\\x00-/:-\\x7f"},
    {u'w', "0-9A-Za-z_", "0-9A-Za-z_"},
    {u'W', "\\x00-/:-@\\[-\\^`{-\\x7f", "\\x00-/:-@\\[-\\^`{-\\x7f"},
    {u's', "\\x09-\\x0d\\x1c-\\x20", "\\x09\\x0a\\x0c\\x0d\\x20"},
    {u'S', "\\x00-\\x08\\x0b\\x0e-\\x1f!-\\x7f", "\\x00-\\x08\\x0e-\\x1b!-\\x7f"},
};
constexpr const char *beyondAscii = "\\x{80}-\\x{10ffff}";

const CharacterClass *classOf(QChar letter)
{
    const auto *const found = std::find_if(std::begin(characterClasses), std::end(characterClasses),
                                           [letter](const auto &c) { return letter == c.letter; });
    return found == std::end(characterClasses) ? nullptr : found;
}

bool isAsciiLetterOrDigit(char32_t c)
{
    return (c >= U'0' && c <= U'9') || (c >= U'A' && c <= U'Z') || (c >= U'a' && c <= U'z');
}

std::string quoted(char32_t character)
{
    if (isAsciiLetterOrDigit(character))
        return {static_cast<char>(character)};
    char text[16];
    std::snprintf(text, sizeof text, "\\x{%x}", static_cast<unsigned>(character));
    return text;
}

} // namespace

std::optional<std::string> PatternTranslator::translate()
{
    translateWhole();
    // What stands in front of the flag was translated as if case mattered there.
    if (m_ignoresCase)
        translateWhole();
    if (m_gaveUp)
        return std::nullopt;
    return m_output;
}

void PatternTranslator::translateWhole()
{
    m_position = 0;
    m_output.clear();
    m_hasFlags = false;
    translateAlternatives();
    if (m_position < m_pattern.size()) // a ")" without its "("
        m_gaveUp = true;
}

void PatternTranslator::translateAlternatives()
{
    while (!atEnd() && !next(u")"))
        if (skip(u"|"))
            m_output += '|';
        else
            translateElement();
}

void PatternTranslator::translateElement()
{
    if (skip(u"\\"))
        return translateEscape();
    if (skip(u"("))
        return translateGroup();
    if (next(u"["))
        translateSet();
    else if (skip(u"."))
        m_output += m_hasFlags ? anyCharacter : "[^\\n]";
    else if (skip(u"^"))
        m_output += m_hasFlags ? nothing : "\\A";
    else if (skip(u"$"))
        m_output += nothing;
    else if (QStringView(u"*+?{}]").contains(rest().front()))
        m_gaveUp = true; // not where ICU takes them
    else
        writeCharacter(readCharacter());
    translateRepetition();
}

void PatternTranslator::translateEscape()
{
    if (skip(u"Q")) {
        const QStringView literal = readUntil(u"\\E");
        for (const char32_t character : literal.toUcs4())
            writeCharacter(character);
        return literal.isEmpty() ? void() : translateRepetition();
    }
    const QChar letter = atEnd() ? QChar() : rest().front();
    if (const CharacterClass *const known = classOf(letter)) {
        ++m_position;
        m_output += std::string("[") + known->atMost + beyondAscii + ']';
    } else if (QStringView(u"bBAZzG").contains(letter)) {
        ++m_position;
        m_output += nothing;
    } else if (QStringView(u"hHvV").contains(letter)) {
        ++m_position;
        m_output += anyCharacter;
    } else if (QStringView(u"RX").contains(letter)) {
        ++m_position;
        m_output += anyText;
    } else if (skip(u"p{") || skip(u"P{")) {
        readUntil(u"}");
        m_output += anyCharacter;
    } else if (skip(u"k<")) {
        readUntil(u">");
        m_output += anyText;
    } else if (letter >= u'1' && letter <= u'9') {
        while (!atEnd() && rest().front() >= u'0' && rest().front() <= u'9')
            ++m_position;
        m_output += anyText;
    } else if (const auto character = readEscapedCharacter()) {
        writeCharacter(*character);
    } else {
        m_gaveUp = true;
    }
    translateRepetition();
}

void PatternTranslator::translateGroup()
{
    if (skip(u"?#")) {
        readUntil(u")");
        return;
    }
    const bool isLookAround = skip(u"?=") || skip(u"?!") || skip(u"?<=") || skip(u"?<!");
    if (!isLookAround && skip(u"?<")) {
        readUntil(u">"); // the group's name
    } else if (!isLookAround && !skip(u"?:") && !skip(u"?>") && skip(u"?")) {
        translateFlags();
        if (skip(u")"))
            return;
        if (!skip(u":"))
            m_gaveUp = true;
    }
    if (++m_depth > greatestDepth)
        m_gaveUp = true;
    const std::size_t start = m_output.size();
    m_output += "(?:";
    translateAlternatives();
    m_output += ')';
    if (isLookAround) {
        m_output.resize(start);
        m_output += nothing;
    }
    --m_depth;
    if (!skip(u")"))
        m_gaveUp = true;
    translateRepetition();
}

void PatternTranslator::translateFlags()
{
    m_hasFlags = true;
    bool isOn = true;
    while (!atEnd() && !next(u")") && !next(u":"))
        if (skip(u"-"))
            isOn = false;
        else if (skip(u"i"))
            m_ignoresCase = m_ignoresCase || isOn;
        else if (!skip(u"m") && !skip(u"s") && !skip(u"w"))
            m_gaveUp = true; // "x" gives blanks and "#" another meaning
}

void PatternTranslator::translateSet()
{
    const qsizetype start = m_position;
    const std::size_t outputStart = m_output.size();
    if (translateSimpleSet())
        return;
    m_position = start;
    m_output.resize(outputStart);
    skipSet();
    m_output += anyCharacter;
}

/// A set of characters, ranges and classes; false if there is anything else in it.
bool PatternTranslator::translateSimpleSet()
{
    // "[:digit:]" is a class and no set of letters.
    if (next(u"[:"))
        return false;
    skip(u"[");
    const bool isNegated = skip(u"^");
    // Without case, ICU adds the relatives of the members after it has negated the set.
    if (next(u"]") || (m_ignoresCase && isNegated))
        return false;
    m_output += isNegated ? "[^" : "[";
    while (!skip(u"]")) {
        if (atEnd() || next(u"[") || next(u"&&") || next(u"--"))
            return false;
        const CharacterClass *const known = next(u"\\") && rest().size() > 1 ? classOf(rest()[1]) : nullptr;
        if (known) {
            const bool isComplement = known->letter < u'a';
            if (m_ignoresCase && isComplement)
                return false;
            m_position += 2;
            m_output += isNegated ? known->atLeast : known->atMost;
            m_output += isNegated ? "" : beyondAscii;
            if (next(u"-") && !next(u"-]"))
                return false;
            continue;
        }
        const auto first = readSetCharacter();
        auto last = first;
        if (next(u"-") && !next(u"-]") && !next(u"--")) {
            skip(u"-");
            last = readSetCharacter();
        }
        if (!first || !last || *last < *first || (m_ignoresCase && *last > 0x7f))
            return false;
        m_output += quoted(*first) + (last == first ? "" : '-' + quoted(*last));
    }
    m_output += ']';
    return true;
}

void PatternTranslator::skipSet()
{
    int depth = 0;
    do {
        if (skip(u"\\")) {
            if (atEnd() || next(u"Q")) { // quotes brackets
                m_gaveUp = true;
                return;
            }
            readCharacter();
        } else if (skip(u"[")) {
            ++depth;
            skip(u"^");
            if (next(u"]")) // whether it ends the set or belongs to it
                m_gaveUp = true;
        } else if (skip(u"]")) {
            --depth;
        } else if (!atEnd()) {
            readCharacter();
        }
    } while (depth > 0 && !atEnd());
    if (depth > 0)
        m_gaveUp = true;
}

void PatternTranslator::translateRepetition()
{
    if (skip(u"*")) {
        m_output += '*';
    } else if (skip(u"+")) {
        m_output += '+';
    } else if (skip(u"?")) {
        m_output += '?';
    } else if (skip(u"{")) {
        const QStringView numbers = readUntil(u"}");
        const qsizetype comma = numbers.indexOf(u',');
        bool isNumber = false;
        const qulonglong least = numbers.left(comma < 0 ? numbers.size() : comma).toULongLong(&isNumber);
        const qulonglong most = comma < 0 ? least : numbers.sliced(comma + 1).toULongLong();
        if (!isNumber)
            m_gaveUp = true;
        m_output += '{' + std::to_string(std::min(least, mostRepetitions)) + ',';
        m_output +=
            most >= least && most <= mostRepetitions && (most > 0 || comma < 0) ? std::to_string(most) : "";
        m_output += '}';
    } else {
        return;
    }
    if (!skip(u"?"))
        skip(u"+");
}

void PatternTranslator::writeCharacter(char32_t character)
{
    // Without case, a letter beyond ASCII may stand for up to three ASCII ones.
    if (m_ignoresCase && character > 0x7f)
        m_output += "(?s:.{1,3})";
    else
        m_output += quoted(character);
}

std::optional<char32_t> PatternTranslator::readSetCharacter()
{
    if (skip(u"\\"))
        return readEscapedCharacter();
    if (atEnd() || next(u"[") || next(u"]") || next(u"&&"))
        return std::nullopt;
    return readCharacter();
}

std::optional<char32_t> PatternTranslator::readEscapedCharacter()
{
    if (atEnd())
        return std::nullopt;
    const char32_t character = readCharacter();
    switch (character) {
    case U'a':
        return U'\a';
    case U'e':
        return U'\x1b';
    case U'f':
        return U'\f';
    case U'n':
        return U'\n';
    case U'r':
        return U'\r';
    case U't':
        return U'\t';
    case U'u':
        return readHexadecimal(4);
    case U'U':
        return readHexadecimal(8);
    case U'x':
        return next(u"{") ? std::nullopt : readHexadecimal(2);
    default:
        if (character > 0x7f || isAsciiLetterOrDigit(character))
            return std::nullopt;
        return character;
    }
}

std::optional<char32_t> PatternTranslator::readHexadecimal(qsizetype digits)
{
    if (rest().size() < digits)
        return std::nullopt;
    bool isNumber = false;
    const uint character = rest().first(digits).toUInt(&isNumber, 16);
    m_position += digits;
    // Halves of characters are put together by ICU.
    if (!isNumber || character > QChar::LastValidCodePoint || QChar::isSurrogate(character))
        return std::nullopt;
    return character;
}

char32_t PatternTranslator::readCharacter()
{
    const QChar unit = rest().front();
    ++m_position;
    if (!unit.isSurrogate())
        return unit.unicode();
    if (!unit.isHighSurrogate() || atEnd() || !rest().front().isLowSurrogate()) {
        m_gaveUp = true;
        return 0;
    }
    return QChar::surrogateToUcs4(unit, m_pattern[m_position++]);
}

QStringView PatternTranslator::readUntil(QStringView end)
{
    const qsizetype found = rest().indexOf(end);
    if (found < 0) {
        m_gaveUp = true;
        return {};
    }
    const QStringView text = rest().first(found);
    m_position += found + end.size();
    return text;
}

bool PatternTranslator::skip(QStringView text)
{
    if (!next(text))
        return false;
    m_position += text.size();
    return true;
}

} // namespace morvane
