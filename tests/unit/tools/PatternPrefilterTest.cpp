#include "tools/PatternPrefilter.h"

#include "base/Regex.h"
#include "tools/PatternTranslator.h"

#include <QString>
#include <QStringList>
#include <gtest/gtest.h>
#include <random>

namespace morvane {
namespace {

bool passes(const QString &pattern, const QString &text)
{
    return PatternPrefilter(pattern).mayMatch(text.toUtf8());
}

std::string translated(const QString &pattern)
{
    return PatternTranslator(pattern).translate().value_or("gave up");
}

TEST(PatternPrefilterTest, RefusesTextsThatCannotMatch)
{
    for (const auto &[pattern, text] :
         std::initializer_list<std::pair<const char *, const char *>>{{"needle", "hay"},
                                                                      {"needle|pin", "hay"},
                                                                      {"[a-z]+_[0-9]+", "abc-123"},
                                                                      {"\\d{3}-\\d{4}", "12-3456"},
                                                                      {"\\w+\\s*=\\s*7", "x == 8"},
                                                                      {"(?i)needle", "hay"},
                                                                      {"a(?=b)c", "ab"},
                                                                      {"^b", "ab"},
                                                                      {"a.c", "a\nc"},
                                                                      {"(a|b){2}x", "ax"},
                                                                      {"\\Qa.c\\E", "abc"},
                                                                      {"\\u0041", "a"},
                                                                      {"[^a]b", "ab"},
                                                                      {"class \\w+View", "struct MyView"}})
        EXPECT_FALSE(passes(pattern, text)) << pattern << " in " << text;
}

TEST(PatternPrefilterTest, AFlagCountsForWhatStandsInFrontOfIt)
{
    EXPECT_TRUE(passes("[^a-z](?i:todo)", "XTODO"));
    EXPECT_TRUE(passes("[^a-z](?i)todo", "XTODO"));
    EXPECT_TRUE(passes("(?:[^x]|y)(?i:z)", "Xz"));
    EXPECT_FALSE(passes("[a-z](?i:todo)", "1TODO"));
}

TEST(PatternPrefilterTest, AClassInBracketsIsNoSetOfItsLetters)
{
    EXPECT_TRUE(passes("v[:digit:]+", "release v12"));
    EXPECT_TRUE(passes("v[:^alpha:]+", "release v12"));
    EXPECT_TRUE(passes("v[[:digit:].]+$", "release v1.2"));
    EXPECT_TRUE(passes("v[^[:alpha:]]", "release v12"));
    EXPECT_FALSE(passes("w[:digit:]+", "release v12"));
}

TEST(PatternPrefilterTest, LetsEveryTextPassWhenAPatternCannotBePutToRe2)
{
    for (const char *const pattern :
         {"(?x) a b", "\\N{LATIN SMALL LETTER A}", "\\cA", "[]a]", "a{2000}{2000}"})
        EXPECT_TRUE(passes(pattern, "zzz")) << pattern;
}

TEST(PatternPrefilterTest, LetsTextsBeyondAsciiPassWhereCaseIsIgnored)
{
    EXPECT_TRUE(passes("(?i)strasse", u"Straße"_qs));
    EXPECT_TRUE(passes("(?i)straße", "STRASSE"));
    EXPECT_TRUE(passes("(?i)kelvin", u"\u212aelvin"_qs));
}

TEST(PatternTranslatorTest, WidensWhatTheTwoUnderstandDifferently)
{
    EXPECT_EQ(translated("a.b"), "a[^\\n]b");
    EXPECT_EQ(translated("(?s)a.b"), "a(?s:.)b");
    EXPECT_EQ(translated("\\ba\\b"), "(?:)a(?:)");
    EXPECT_EQ(translated("(?<!x)a(?=y)"), "(?:)a(?:)");
    EXPECT_EQ(translated("(a)\\1"), "(?:a)(?s:.*)");
    EXPECT_EQ(translated("a*+b++c?+d{2}+"), "a*b+c?d{2,2}");
    EXPECT_EQ(translated("a{2000,3000}"), "a{1000,}");
    EXPECT_EQ(translated("[a-z&&[^b]]x"), "(?s:.)x");
    EXPECT_EQ(translated("\\p{L}x"), "(?s:.)x");
}

TEST(PatternTranslatorTest, GivesUpOnWhatItDoesNotKnow)
{
    for (const char *const pattern :
         {"(", ")", "[", "a)", "*a", "\\", "\\j", "(?x)a", "[a\\Q]\\E]", "\\x{41}"})
        EXPECT_EQ(translated(pattern), "gave up") << pattern;
}

/// Patterns and texts put together by chance from pieces that are likely to meet.
class Chance {
public:
    explicit Chance(unsigned seed) : m_engine(seed) {}

    QString pattern(int depth = 0)
    {
        static const QStringList atoms{"a",
                                       "b",
                                       "ab",
                                       "K",
                                       "s",
                                       "ss",
                                       "é",
                                       "ß",
                                       ".",
                                       "^",
                                       "$",
                                       "\\b",
                                       "\\B",
                                       "\\w",
                                       "\\W",
                                       "\\d",
                                       "\\D",
                                       "\\s",
                                       "\\S",
                                       "[ab]",
                                       "[^ab]",
                                       "[a-c]",
                                       "[^\\w]",
                                       "[\\W]",
                                       "[^\\s]",
                                       "[\\S]",
                                       "[\\d-]",
                                       "[a&&b]",
                                       "[[a]b]",
                                       "[^a-cé]",
                                       "\\h",
                                       "\\v",
                                       "\\R",
                                       "\\X",
                                       "\\p{L}",
                                       "\\Qa.\\E",
                                       "\\n",
                                       "\\x41",
                                       "\\u00e9",
                                       "\\A",
                                       "\\z",
                                       "\\Z",
                                       "(?i)",
                                       "(?m)",
                                       "(?s)",
                                       "(?-i)",
                                       "\\.",
                                       " ",
                                       "[$]",
                                       "[{}]",
                                       "[.^]",
                                       "[-a]",
                                       "[&a]",
                                       "(?#x)",
                                       "\\1",
                                       "[^\\S]",
                                       "[^\\D]",
                                       "\\t",
                                       "1",
                                       "[^ß]",
                                       "[é]",
                                       "K",
                                       "[^a-z]",
                                       "[A-Z]",
                                       "[^K]",
                                       "[:digit:]",
                                       "[:^alpha:]",
                                       "[[:upper:]a]",
                                       "[^[:space:]]",
                                       "[:lower:]",
                                       "[a-z--[b]]",
                                       "[[a-c]&&[^b]]",
                                       "[\\p{Lu}x]",
                                       "[^\\p{L}]",
                                       "[^a[k]]",
                                       "[ -~]",
                                       "[a-]",
                                       "[\\-a]",
                                       "[\\x41-\\x43]",
                                       "[k-s]",
                                       "[^k-s]",
                                       "[:a]",
                                       "(?i-s)",
                                       "(?s-i)",
                                       "(?im)",
                                       "(?w)",
                                       "\\Qk\\E",
                                       "\\x4b",
                                       "(?#(?i)"};
        static const QStringList repetitions{"",    "",      "",     "*",  "+",  "?",
                                             "{2}", "{0,1}", "{1,}", "*?", "++", "{0}"};
        static const QStringList openings{"(",    "(?:",   "(?>",  "(?=",   "(?!",    "(?<=", "(?<!",
                                          "(?i:", "(?<n>", "(?s:", "(?-i:", "(?i-m:", "(?m:", "(?is:"};
        QString text;
        for (int i = below(4); i >= 0; --i) {
            if (depth < 3 && below(5) == 0)
                text += openings[below(openings.size())] + pattern(depth + 1) +
                        (below(3) ? "" : "|" + pattern(depth + 1)) + ')';
            else
                text += atoms[below(atoms.size())];
            text += repetitions[below(repetitions.size())];
        }
        return text;
    }

    QString text()
    {
        static const QStringList pieces{
            "a", "b",      "c",  "K",      "k",  "s",    "S",  "ss", "é",    "É",      "ß",      "\u212a",
            "1", "_",      "-",  " ",      "\n", "\r\n", "\t", "\v", "\f",   "\u0085", "\u2028", ".",
            "A", "\u0301", "😀", "\u200d", "$",  "{",    "&",  "^",  "\x1c", "\u00a0", "\u017f"};
        QString text;
        for (int i = below(8); i > 0; --i)
            text += pieces[below(pieces.size())];
        return text;
    }

private:
    qsizetype below(qsizetype bound)
    {
        return std::uniform_int_distribution<qsizetype>(0, bound - 1)(m_engine);
    }

    std::mt19937 m_engine;
};

TEST(PatternPrefilterTest, NeverRefusesATextThatIcuMatches)
{
    Chance chance(20240229);
    int compiled = 0;
    int matched = 0;
    int refused = 0;
    for (int i = 0; i < 1'500; ++i) {
        const QString pattern = chance.pattern();
        const auto regex = Regex::compile(pattern);
        if (!regex)
            continue;
        ++compiled;
        const PatternPrefilter prefilter(pattern);
        for (int k = 0; k < 6; ++k) {
            const QString text = chance.text();
            const auto found = regex->contains(text);
            const bool mayMatch = prefilter.mayMatch(text.toUtf8());
            matched += found.value_or(false);
            refused += !mayMatch;
            ASSERT_TRUE(mayMatch || !found.value_or(false))
                << pattern.toStdString() << " in " << text.toUtf8().toPercentEncoding().constData() << " as "
                << translated(pattern);
        }
    }
    // The patterns and texts above must be of a kind that tries both answers.
    EXPECT_GT(compiled, 500);
    EXPECT_GT(matched, 500);
    EXPECT_GT(refused, 500);
}

} // namespace
} // namespace morvane
