#include "base/Regex.h"

#include <atomic>
#include <ctime>
#include <gtest/gtest.h>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

Regex compiled(QStringView pattern, Regex::Options options = {})
{
    auto regex = Regex::compile(pattern, options);
    if (!regex)
        throw std::runtime_error(regex.error().toStdString());
    return *regex;
}

TEST(RegexTest, FindsAnywhere)
{
    EXPECT_TRUE(*compiled(u"\\bsudo\\b").contains(u"echo sudo"));
    EXPECT_FALSE(*compiled(u"\\bsudo\\b").contains(u"pseudosudoku"));
    EXPECT_FALSE(*compiled(u"x").contains(QString()));
    EXPECT_TRUE(*compiled(u"").contains(QString()));
}

TEST(RegexTest, DefaultsAreCaseSensitiveAndLineBound)
{
    EXPECT_FALSE(*compiled(u"abc").contains(u"ABC"));
    EXPECT_FALSE(*compiled(u"a.b").contains(u"a\nb"));
    EXPECT_FALSE(*compiled(u"^b").contains(u"a\nb"));
}

TEST(RegexTest, OptionsChangeTheMeaning)
{
    EXPECT_TRUE(*compiled(u"äbc", Regex::Option::caseInsensitive).contains(u"ÄBC"));
    EXPECT_TRUE(*compiled(u"a.b", Regex::Option::dotMatchesLineEnds).contains(u"a\nb"));
    EXPECT_TRUE(*compiled(u"^b", Regex::Option::anchorsMatchLines).contains(u"a\nb"));
}

TEST(RegexTest, GivesGroupsInUtf16Offsets)
{
    const QString text = u"🙂 42% of x"_s;
    const auto match = compiled(u"(\\d+)%( off)?").find(text);
    ASSERT_TRUE(match.has_value());
    ASSERT_TRUE(match->has_value());
    EXPECT_EQ((*match)->start(), 3);
    EXPECT_EQ((*match)->end(), 6);
    EXPECT_EQ((*match)->groupCount(), 2);
    EXPECT_EQ((*match)->captured(text, 1), u"42");
    EXPECT_EQ((*match)->range(2).start, -1);
    EXPECT_TRUE((*match)->captured(text, 2).isNull());
}

TEST(RegexTest, SearchFromAnOffsetSeesWhatIsBefore)
{
    const QString text = u"ab ab"_s;
    EXPECT_EQ((*compiled(u"ab").find(text, 1))->start(), 3);
    EXPECT_EQ((*compiled(u"(?<=a)b").find(text, 1))->start(), 1);
    EXPECT_FALSE((*compiled(u"^ab").find(text, 1)).has_value());
    EXPECT_FALSE((*compiled(u"ab").find(text, 99)).has_value());
}

TEST(RegexTest, FindsAllUpToTheMaximum)
{
    const QString text = u"a1 b2 c3"_s;
    const auto all = compiled(u"[a-z](\\d)").findAll(text, 100);
    ASSERT_TRUE(all.has_value());
    ASSERT_EQ(all->size(), 3);
    EXPECT_EQ(all->at(2).captured(text, 1), u"3");
    EXPECT_EQ(compiled(u"[a-z](\\d)").findAll(text, 2)->size(), 2);
    EXPECT_EQ(compiled(u"x*").findAll(u"abc", 100)->size(), 4);
}

TEST(RegexTest, ReplacesWithPlainText)
{
    EXPECT_EQ(compiled(u"<[^>]+>").replaced(u"a<b>c</b>d", u"$0\\"), u"a$0\\c$0\\d"_s);
    EXPECT_EQ(compiled(u"x").replaced(u"abc", u"y"), u"abc"_s);
    EXPECT_EQ(compiled(u"b").replaced(QString(), u"y"), QString());
}

TEST(RegexTest, SaysWhatIsWrongWithAPattern)
{
    const auto regex = Regex::compile(u"a(b");
    ASSERT_FALSE(regex.has_value());
    EXPECT_EQ(regex.error(), u"unbalanced parenthesis at character 3"_s);
    for (const QStringView pattern :
         {u"[a", u"*a", u"a{2,1}", u"\\p{nope}", u"(?<=a*)b", u"\\1", u"a{", u"(?z)"})
        EXPECT_FALSE(Regex::compile(pattern).has_value()) << pattern.toString().toStdString();
}

TEST(RegexTest, RefusesAPatternThatWouldTakeLongToCompile)
{
    EXPECT_TRUE(Regex::compile(QString(Regex::maximumPatternLength, u'a')).has_value());
    EXPECT_EQ(Regex::compile(QString(Regex::maximumPatternLength + 1, u'a')).error(),
              u"pattern too large at character 0"_s);
}

TEST(RegexTest, EndsABacktrackingPatternAtTheTimeLimit)
{
    const auto result = compiled(u"(a+)+$").contains(QString(60, u'a') + u'b', 50ms);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), RegexFailure::timeout);
}

TEST(RegexTest, EndsAPatternThatIsSlowFromEveryPositionAtTheTimeLimit)
{
    const auto result = compiled(u"a*b").contains(QString(200'000, u'a'), 50ms);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), RegexFailure::timeout);
}

TEST(RegexTest, EndsAPatternWhoseLoopsGiveNothingBackAtTheTimeLimit)
{
    const auto result = compiled(u"(?>[^x]*)x").contains(QString(300'000, u'a'), 50ms);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), RegexFailure::timeout);
}

TEST(RegexTest, ABusyMachineFindsWhatAnIdleOneFinds)
{
    const Regex regex = compiled(u"a*b");
    const QString text = QString(3'000, u'a') + u'\n' + u'b';
    const std::clock_t start = std::clock();
    ASSERT_TRUE(*regex.contains(text, 60s));
    const auto alone = std::chrono::milliseconds(1 + 1000 * (std::clock() - start) / CLOCKS_PER_SEC);
    std::atomic<int> found = 0;
    std::vector<std::jthread> threads;
    const unsigned count = 20 * std::max(1U, std::thread::hardware_concurrency());
    std::latch together(count);
    for (unsigned i = 0; i < count; ++i)
        threads.emplace_back([&] {
            together.arrive_and_wait();
            found += regex.contains(text, 5 * alone).value_or(false) ? 1 : 0;
        });
    threads.clear();
    EXPECT_EQ(found, static_cast<int>(count));
}

TEST(RegexTest, ReportsExhaustedBacktrackingMemory)
{
    const auto result = compiled(u"(?:a|b)*c").contains(QString(20'000'000, u'a'), 60s);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), RegexFailure::tooComplex);
}

TEST(RegexTest, HostilePatternsNeverCrashTheCompiler)
{
    for (const QString &pattern :
         {QString(100'000, u'('), QString(100'000, u'['), u"a{1000}"_s.repeated(2'800),
          u"("_s.repeated(5'000) + u")*"_s.repeated(5'000),
          u"(?<="_s.repeated(2'000) + u'a' + QString(2'000, u')'),
          u"[^"_s.repeated(20'000) + QString(20'000, u']')}) {
        const auto regex = Regex::compile(pattern);
        if (regex)
            static_cast<void>(regex->contains(u"aaaaaaaa", 50ms));
    }
}

} // namespace
} // namespace morvane
