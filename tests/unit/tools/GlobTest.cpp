#include "tools/Glob.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

bool matches(const QString &pattern, const QString &name)
{
    const auto glob = Glob::compile(pattern);
    EXPECT_TRUE(glob.has_value()) << pattern.toStdString();
    return glob && glob->matches(name.toStdString()) == Glob::Answer::yes;
}

TEST(GlobTest, EachCharacterHasItsExpression)
{
    EXPECT_EQ(Glob::globToRegex(""), "^$");
    EXPECT_EQ(Glob::globToRegex("**/*.md"), "^.*/[^/]*\\.md$");
    EXPECT_EQ(Glob::globToRegex("a?b"), "^a[^/]b$");
    EXPECT_EQ(Glob::globToRegex("***"), "^.*[^/]*$");
    EXPECT_EQ(Glob::globToRegex("****"), "^.*.*$");
    EXPECT_EQ(Glob::globToRegex("\\^$.|+()[]{}"), "^\\\\\\^\\$\\.\\|\\+\\(\\)\\[\\]\\{\\}$");
    EXPECT_EQ(Glob::globToRegex("a-b&c,d!é"), u"^a-b&c,d!é$"_qs);
}

TEST(GlobTest, AStarStaysWithinAFolder)
{
    EXPECT_TRUE(matches("*.md", "a.md"));
    EXPECT_TRUE(matches("*.md", ".md"));
    EXPECT_FALSE(matches("*.md", "docs/a.md"));
    EXPECT_FALSE(matches("*.md", "a.mdx"));
    EXPECT_FALSE(matches("*.md", "amd"));
}

TEST(GlobTest, TwoStarsReachOverFolders)
{
    EXPECT_TRUE(matches("**.md", "docs/inner/a.md"));
    EXPECT_TRUE(matches("**/*.md", "docs/a.md"));
    EXPECT_FALSE(matches("**/*.md", "a.md"));
}

TEST(GlobTest, AQuestionMarkIsOneCharacterButNoSlash)
{
    EXPECT_TRUE(matches("a?c", "abc"));
    EXPECT_TRUE(matches("a?c", u"a😀c"_qs));
    EXPECT_FALSE(matches("a?c", "a/c"));
    EXPECT_FALSE(matches("a?c", "ac"));
}

TEST(GlobTest, CharacterClassesAreNoClasses)
{
    EXPECT_TRUE(matches("[ab].txt", "[ab].txt"));
    EXPECT_FALSE(matches("[ab].txt", "a.txt"));
    EXPECT_TRUE(matches("{a,b}", "{a,b}"));
}

TEST(GlobTest, CaseMatters)
{
    EXPECT_FALSE(matches("*.MD", "a.md"));
}

TEST(GlobTest, NamesThatAreNoUtf8AreSearchedWithTheirReplacement)
{
    const auto glob = Glob::compile(u"a\uFFFDb"_qs);
    EXPECT_EQ(glob->matches("a\xff"
                            "b"),
              Glob::Answer::yes);
    EXPECT_EQ(Glob::compile("a*")->matches("a\xff"), Glob::Answer::yes);
}

TEST(GlobTest, AHostilePatternIsTooSlowInsteadOfHanging)
{
    const auto glob = Glob::compile(QString("**a").repeated(40) + "b");
    EXPECT_EQ(glob->matches(std::string(3000, 'a') + "bc"), Glob::Answer::tooSlow);
}

} // namespace
} // namespace morvane
