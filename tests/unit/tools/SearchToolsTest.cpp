#include "tools/SearchTools.h"

#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class SearchToolsTest : public testing::Test {
protected:
    QString path(const QString &relative = {}) const { return home.path(relative); }
    QString write(const QString &relative, const QByteArray &content) const
    {
        return home.write(relative, content);
    }
    QString grep(const QString &pattern, const QString &where, const QString &include = {}) const
    {
        return SearchTools::grepSearch(pattern, where, include);
    }
    /// What is found in one file with this content, without the path.
    QString grepText(const QString &pattern, const QByteArray &content) const
    {
        const QString file = write("text", content);
        return grep(pattern, file).replace(file + ":", "");
    }
    QStringList sorted(const QString &answer) const
    {
        QStringList lines = answer.split('\n');
        lines.sort();
        return lines;
    }

    TemporaryHome home;
};

using GrepSearchTest = SearchToolsTest;
using GlobFindTest = SearchToolsTest;

TEST_F(GrepSearchTest, FindsLinesInAllFilesBelowAFolder)
{
    write("r/a.txt", "one\n  two needle  \nthree\n");
    write("r/b/c.txt", "needle");
    write("r/d.txt", "nothing");
    EXPECT_EQ(sorted(grep("needle", path("r"))),
              QStringList({path("r/a.txt") + ":2: two needle", path("r/b/c.txt") + ":1: needle"}));
}

TEST_F(GrepSearchTest, NothingFoundIsTold)
{
    write("r/a.txt", "one");
    EXPECT_EQ(grep("two", "~/r"), "No matches found for \"two\" in ~/r.");
}

TEST_F(GrepSearchTest, WrongArgumentsAreTold)
{
    EXPECT_EQ(grep("", path()), "Error: empty search pattern.");
    EXPECT_EQ(grep("a", "~/none"), "Error: the path \"~/none\" does not exist.");
    EXPECT_EQ(grep("a", ""), "Error: the path \"\" does not exist.");
    EXPECT_EQ(grep("a(", path()).left(31), "Error: invalid search pattern: ");
    EXPECT_EQ(grep("a(", "~/none"), "Error: the path \"~/none\" does not exist.");
}

TEST_F(GrepSearchTest, HiddenFilesAndFoldersArePassedOverInAWalk)
{
    write("r/.a", "needle");
    write("r/.git/b", "needle");
    write("r/node_modules/c", "needle");
    EXPECT_EQ(grep("needle", path("r")), path("r/node_modules/c") + ":1: needle");
}

TEST_F(GrepSearchTest, ASingleHiddenFileIsSearched)
{
    const QString file = write(".hidden", "needle");
    EXPECT_EQ(grep("needle", file), file + ":1: needle");
    EXPECT_EQ(grep("needle", "~/.hidden"), file + ":1: needle");
}

TEST_F(GrepSearchTest, AHiddenFolderIsSearchedWhenItIsTheRoot)
{
    write(".config/a", "needle");
    EXPECT_EQ(grep("needle", "~/.config"), path(".config/a") + ":1: needle");
}

TEST_F(GrepSearchTest, IncludeLimitsTheFilesByTheirName)
{
    write("r/a.txt", "needle");
    write("r/b/c.txt", "needle");
    write("r/d.md", "needle");
    EXPECT_EQ(sorted(grep("needle", path("r"), "*.txt")),
              QStringList({path("r/a.txt") + ":1: needle", path("r/b/c.txt") + ":1: needle"}));
    EXPECT_EQ(grep("needle", path("r"), "*.txt.md"), "No matches found for \"needle\" in " + path("r") + ".");
    EXPECT_EQ(grep("needle", path("r"), "**/c.txt"), "No matches found for \"needle\" in " + path("r") + ".");
    EXPECT_EQ(grep("needle", path("r/d.md"), "*.txt"),
              "No matches found for \"needle\" in " + path("r/d.md") + ".");
}

TEST_F(GrepSearchTest, CaseMattersUnlessThePatternSaysOtherwise)
{
    EXPECT_EQ(grepText("Needle", "needle"), "No matches found for \"Needle\" in " + path("text") + ".");
    EXPECT_EQ(grepText("(?i)NEEDLE", "a Needle"), "1: a Needle");
    EXPECT_EQ(grepText("(?i)straSSe", "die Straße"), u"1: die Straße"_qs);
    EXPECT_EQ(grepText("(?i)straße", "DIE STRASSE"), "1: DIE STRASSE");
}

TEST_F(GrepSearchTest, AnAnchorMatchesOnlyAtTheStartOfTheFile)
{
    EXPECT_EQ(grepText("^foo", "foo\nfoo\n"), "1: foo");
    EXPECT_EQ(grepText("^foo", "x\nfoo\n"), "No matches found for \"^foo\" in " + path("text") + ".");
    EXPECT_EQ(grepText("(?m)^foo", "x\nfoo\nfoo"), "2: foo\n3: foo");
    EXPECT_EQ(grepText("^foo", "\xef\xbb\xbf"
                               "foo"),
              "1: foo");
}

TEST_F(GrepSearchTest, APointDoesNotCrossLines)
{
    EXPECT_EQ(grepText("a.b", "a\nb"), "No matches found for \"a.b\" in " + path("text") + ".");
    EXPECT_EQ(grepText("a.b", "a\nb a😀b"), u"2: b a😀b"_qs);
}

TEST_F(GrepSearchTest, AMatchOverLinesGivesAllOfThem)
{
    EXPECT_EQ(grepText("b\\nc", "a\n b\nc d\ne"), "2: b\nc d");
}

TEST_F(GrepSearchTest, AMatchThatEndsWithALineEndDoesNotTakeTheNextLine)
{
    EXPECT_EQ(grepText("b\\n", "a\nb\nc"), "2: b");
    EXPECT_EQ(grepText("b\\r\\n", "a\r\nb\r\nc"), "2: b");
}

TEST_F(GrepSearchTest, TwoMatchesOnOneLineGiveTwoLines)
{
    EXPECT_EQ(grepText("a", "banana x\n"), "1: banana x\n1: banana x\n1: banana x");
}

TEST_F(GrepSearchTest, LinesAreCountedByLineFeedsAndEndAtEveryLineEnd)
{
    EXPECT_EQ(grepText("needle", "a\rb needle\rc"), "1: b needle");
    EXPECT_EQ(grepText("needle", "a\r\nb needle\r\nc"), "2: b needle");
    EXPECT_EQ(grepText("needle", u"a\u2028b needle\u0085c"_qs.toUtf8()), "1: b needle");
}

TEST_F(GrepSearchTest, AnEmptyMatchGivesItsLine)
{
    EXPECT_EQ(grepText("$", "a\nlast"), "2: last");
    EXPECT_EQ(grepText("(?m)^$", "a\n\nb"), "2: ");
}

TEST_F(GrepSearchTest, ALongLineIsCutTo300Characters)
{
    EXPECT_EQ(grepText("needle", "  needle" + QByteArray(1000, 'x')), "1: needle" + QString(294, 'x'));
    const QString family = u"👩‍👩‍👧"_qs;
    EXPECT_EQ(grepText("needle", ("needle" + family.repeated(400)).toUtf8()),
              "1: needle" + family.repeated(294));
}

TEST_F(GrepSearchTest, TenMatchesOfAFileAreKept)
{
    QStringList expected;
    for (int i = 1; i <= 10; ++i)
        expected.append(QString::number(i) + ": needle");
    EXPECT_EQ(grepText("needle", QByteArray("needle\n").repeated(100)), expected.join('\n'));
}

TEST_F(GrepSearchTest, FiftyLinesAreReturned)
{
    for (int i = 0; i < 700; ++i)
        write(u"r/%1/%2"_s.arg(i % 7).arg(i), "needle\nneedle\nneedle\n");
    EXPECT_EQ(grep("needle", path("r")).count('\n'), 49);
}

TEST_F(GrepSearchTest, ManyFilesAreAllSearched)
{
    for (int i = 0; i < 700; ++i)
        write(u"r/%1/%2"_s.arg(i % 7).arg(i), QByteArray("text ") + QByteArray::number(i) + "\n");
    for (const int i : {0, 15, 16, 17, 400, 699})
        EXPECT_EQ(grep(u" %1$"_s.arg(i), path("r")),
                  path(u"r/%1/%2"_s.arg(i % 7).arg(i)) + u":1: text %1"_s.arg(i));
}

TEST_F(GrepSearchTest, FilesOfFiveMillionBytesArePassedOver)
{
    const QByteArray needle = "needle";
    write("r/small", needle + QByteArray(5'000'000 - 1 - needle.size(), ' '));
    write("r/large", needle + QByteArray(5'000'000 - needle.size(), ' '));
    EXPECT_EQ(grep("needle", path("r")), path("r/small") + ":1: needle");
}

TEST_F(GrepSearchTest, FilesThatAreNoUtf8ArePassedOver)
{
    write("r/latin", "needle \xe9");
    write("r/utf16", QByteArray("\xff\xfen\0e\0", 6));
    write("r/text", "needle é");
    EXPECT_EQ(grep("needle", path("r")), path("r/text") + u":1: needle é"_qs);
}

TEST_F(GrepSearchTest, ATextWithANulIsSearched)
{
    EXPECT_EQ(grepText("needle", QByteArray("a\0b\nneedle", 10)), "2: needle");
}

TEST_F(GrepSearchTest, PipesAndDevicesDoNotBlock)
{
    write("r/a", "needle");
    const QString pipe = path("r/pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(grep("needle", path("r")), path("r/a") + ":1: needle");
    EXPECT_EQ(grep("needle", pipe), "No matches found for \"needle\" in " + pipe + ".");
    EXPECT_EQ(grep("a", "/dev/zero"), "No matches found for \"a\" in /dev/zero.");
}

TEST_F(GrepSearchTest, LinksAreNotFollowedButMayBeTheRoot)
{
    write("r/a", "needle");
    ASSERT_TRUE(QFile::link(path("r"), path("r/loop")));
    ASSERT_TRUE(QFile::link(path("r/a"), path("r/link")));
    EXPECT_EQ(grep("needle", path("r")), path("r/a") + ":1: needle");
    EXPECT_EQ(grep("needle", path("r/link")), path("r/link") + ":1: needle");
    EXPECT_EQ(grep("needle", path("r/loop")), path("r/loop/a") + ":1: needle");
}

TEST_F(GrepSearchTest, FilesOfTheKernelThatTellNoSizeAreSearched)
{
    EXPECT_TRUE(grep("^Name:", "/proc/self/status").startsWith("/proc/self/status:1: Name:"));
}

TEST_F(GrepSearchTest, AFileThatMayNotBeReadIsPassedOver)
{
    EXPECT_EQ(grep("needle", "/proc/self/mem"), "No matches found for \"needle\" in /proc/self/mem.");
}

TEST_F(GrepSearchTest, AHostilePatternEndsWithAnError)
{
    write("text", QByteArray(100'000, 'a') + "c");
    EXPECT_EQ(grep("(?=(a+)+b)a|(a+)+b|(?<!a)x(?=y)z", path("text")),
              "Error: invalid search pattern: matching takes too long");
}

TEST_F(GrepSearchTest, WhatIsFoundIsToldAlthoughAnotherFileTookTooLong)
{
    write("r/slow", QByteArray(100'000, 'a') + "c");
    write("r/quick", "aab");
    EXPECT_EQ(grep("(?=(a+)+b)a", path("r")),
              path("r/quick") + ":1: aab\n" + path("r/quick") +
                  ":1: aab\n(Matching took too long in some files, so matches may be missing.)");
}

TEST_F(GlobFindTest, PatternsAreMatchedWithTheRelativePath)
{
    for (const char *const name : {"r/a.md", "r/docs/b.md", "r/docs/inner/c.md", "r/docs/d.txt"})
        write(name, "");
    EXPECT_EQ(SearchTools::globFind("*.md", path("r")), "a.md");
    EXPECT_EQ(sorted(SearchTools::globFind("**/*.md", path("r"))),
              QStringList({"docs/b.md", "docs/inner/c.md"}));
    EXPECT_EQ(sorted(SearchTools::globFind("**.md", path("r") + "/")),
              QStringList({"a.md", "docs/b.md", "docs/inner/c.md"}));
    EXPECT_EQ(SearchTools::globFind("docs/?.txt", "~/r"), "docs/d.txt");
}

TEST_F(GlobFindTest, WhatIsFoundIsToldAlthoughAnotherNameTookTooLong)
{
    const QString pattern = QString("**a").repeated(10) + "b";
    write("r/quick" + QString(10, 'a') + 'b', "");
    write("r/slow" + QString(200, 'a') + "bc", "");
    EXPECT_EQ(SearchTools::globFind(pattern, path("r")),
              "quick" + QString(10, 'a') +
                  "b\n(Matching took too long for some names, so paths may be missing.)");
}

TEST_F(GlobFindTest, FoldersAndLinksMatchToo)
{
    write("r/docs/a", "");
    ASSERT_TRUE(QFile::link(path("r"), path("r/docs/dlink")));
    EXPECT_EQ(sorted(SearchTools::globFind("**d*", path("r"))), QStringList({"docs", "docs/dlink"}));
}

TEST_F(GlobFindTest, HiddenFilesAreNotFound)
{
    write("r/.a.md", "");
    write("r/.git/b.md", "");
    EXPECT_EQ(SearchTools::globFind("**.md", "~/r"), "No files found matching \"**.md\" in ~/r.");
}

TEST_F(GlobFindTest, WrongArgumentsAreTold)
{
    write("file", "");
    EXPECT_EQ(SearchTools::globFind("", "~/none"), "Error: empty pattern.");
    EXPECT_EQ(SearchTools::globFind("*", "~/none"), "Error: the path \"~/none\" is not a directory.");
    EXPECT_EQ(SearchTools::globFind("*", "~/file"), "Error: the path \"~/file\" is not a directory.");
    EXPECT_EQ(SearchTools::globFind("*", ""), "Error: the path \"\" is not a directory.");
}

TEST_F(GlobFindTest, AHundredPathsAreReturned)
{
    for (int i = 0; i < 150; ++i)
        write("r/" + QString::number(i), "");
    EXPECT_EQ(SearchTools::globFind("*", path("r")).count('\n'), 99);
}

TEST_F(GlobFindTest, AHostilePatternEndsWithAnError)
{
    for (int i = 0; i < 12; ++i)
        write("r/" + QString(200, 'a') + "b" + QString::number(i), "");
    EXPECT_EQ(SearchTools::globFind(QString("**a").repeated(40) + "**b", path("r")),
              "Error: invalid pattern.");
}

} // namespace
} // namespace morvane
