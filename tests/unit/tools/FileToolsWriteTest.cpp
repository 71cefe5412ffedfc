#include "FileToolsFixture.h"

#include "tools/FileTools.h"

#include <QFileInfo>
#include <QStringList>

namespace morvane {
namespace {

using WriteFileTest = FileToolsTest;
using EditFileTest = FileToolsTest;

QString edit(const QString &path, const QString &oldString, const QString &newString)
{
    return FileTools::editFile(path, oldString, newString, Occurrences::single);
}

TEST_F(WriteFileTest, CreatesAFileAndTheFoldersAboveIt)
{
    EXPECT_EQ(FileTools::writeFile(path("one/two/file.txt"), "text\n"),
              "Wrote 5 characters to " + path("one/two/file.txt") + ".");
    EXPECT_EQ(home.read("one/two/file.txt"), "text\n");
}

TEST_F(WriteFileTest, ReplacesWhatStoodThere)
{
    write("a", "a much longer text than the new one");
    EXPECT_EQ(FileTools::writeFile(path("a"), ""), "Wrote 0 characters to " + path("a") + ".");
    EXPECT_EQ(home.read("a"), "");
}

TEST_F(WriteFileTest, ShowsTheExpandedPath)
{
    EXPECT_EQ(FileTools::writeFile("~/a", "x"), "Wrote 1 characters to " + path("a") + ".");
    makeFolder("folder");
    EXPECT_EQ(FileTools::writeFile("~/folder", "x"), "Error writing " + path("folder") + ": Is a directory");
}

TEST_F(WriteFileTest, CountsCharactersThatAUserPerceivesAndWritesUtf8)
{
    EXPECT_EQ(FileTools::writeFile(path("a"), u"👩‍👩‍👧é\r\n"_qs),
              "Wrote 3 characters to " + path("a") + ".");
    EXPECT_EQ(home.read("a"), "👩‍👩‍👧é\r\n");
}

TEST_F(WriteFileTest, APathWithoutAFolderIsInTheCurrentFolder)
{
    const QString before = QDir::currentPath();
    makeFolder("current");
    QDir::setCurrent(path("current"));
    const QString answer = FileTools::writeFile("plain.txt", "x");
    QDir::setCurrent(before);
    EXPECT_EQ(answer, "Wrote 1 characters to plain.txt.");
    EXPECT_EQ(home.read("current/plain.txt"), "x");
}

TEST_F(WriteFileTest, KeepsThePermissionsOfAFileThatStoodThere)
{
    write("run.sh", "old");
    ASSERT_EQ(::chmod(QFile::encodeName(path("run.sh")).constData(), 0754), 0);
    FileTools::writeFile(path("run.sh"), "new");
    EXPECT_EQ(permissionBits(path("run.sh")), 0754u);
    EXPECT_EQ(home.read("run.sh"), "new");
}

TEST_F(WriteFileTest, ANewFileGetsThePermissionsOfAnyOther)
{
    const mode_t before = ::umask(027);
    FileTools::writeFile(path("new"), "x");
    ::umask(before);
    EXPECT_EQ(permissionBits(path("new")), 0640u);
}

TEST_F(WriteFileTest, TakesALinksPlaceAndLeavesWhatItLedTo)
{
    write("target", "old");
    makeLink(path("target"), "link");
    EXPECT_EQ(FileTools::writeFile("~/link", "new"), "Wrote 3 characters to " + path("link") + ".");
    EXPECT_FALSE(QFileInfo(path("link")).isSymLink());
    EXPECT_EQ(home.read("link"), "new");
    EXPECT_EQ(home.read("target"), "old");
}

TEST_F(WriteFileTest, WhatTakesALinksPlaceMayBeRunIfWhatItLedToMayBe)
{
    write("target", "old");
    ASSERT_EQ(::chmod(QFile::encodeName(path("target")).constData(), 0750), 0);
    makeLink(path("target"), "link");
    FileTools::writeFile("~/link", "new");
    EXPECT_EQ(permissionBits(path("link")), 0750u);
}

TEST_F(WriteFileTest, ALinkToAFolderOrToNothingIsReplacedToo)
{
    makeFolder("folder");
    makeLink(path("folder"), "link");
    makeLink(path("nothing"), "broken");
    EXPECT_EQ(FileTools::writeFile("~/link", "new"), "Wrote 3 characters to " + path("link") + ".");
    EXPECT_EQ(FileTools::writeFile("~/broken", "new"), "Wrote 3 characters to " + path("broken") + ".");
    EXPECT_EQ(home.read("link"), "new");
    EXPECT_EQ(home.read("broken"), "new");
    EXPECT_TRUE(QFileInfo(path("folder")).isDir());
    EXPECT_FALSE(QFileInfo::exists(path("nothing")));
}

TEST_F(WriteFileTest, EditingThroughALinkReplacesTheLink)
{
    write("target", "one two");
    makeLink(path("target"), "link");
    EXPECT_EQ(FileTools::editFile("~/link", "two", "three", Occurrences::single),
              "Edited ~/link: replaced 1 occurrence(s).");
    EXPECT_FALSE(QFileInfo(path("link")).isSymLink());
    EXPECT_EQ(home.read("link"), "one three");
    EXPECT_EQ(home.read("target"), "one two");
}

TEST_F(WriteFileTest, LeavesNoOtherFileBehind)
{
    makeFolder("folder");
    FileTools::writeFile("~/folder/a", "x");
    FileTools::writeFile("~/folder/a", "y");
    FileTools::writeFile("~/folder/" + QString(300, 'n'), "z");
    EXPECT_EQ(QDir(path("folder")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList("a"));
}

TEST_F(WriteFileTest, FailuresNameTheirReason)
{
    write("file", "x");
    EXPECT_EQ(FileTools::writeFile("", "x"), "Error writing : No such file or directory");
    EXPECT_EQ(FileTools::writeFile("~/file/below", "x"),
              "Error writing " + path("file/below") + ": Not a directory");
    EXPECT_EQ(FileTools::writeFile("~/file/below/it", "x"),
              "Error writing " + path("file/below/it") + ": Not a directory");
    EXPECT_EQ(FileTools::writeFile("~/" + QString(300, 'n'), "x"),
              "Error writing " + path(QString(300, 'n')) + ": File name too long");
    EXPECT_EQ(FileTools::writeFile("/proc/morvane/x", "x"),
              "Error writing /proc/morvane/x: No such file or directory");
}

TEST_F(WriteFileTest, AFileThatMayNotBeWrittenStays)
{
    write("a", "old");
    ASSERT_EQ(::chmod(QFile::encodeName(path("a")).constData(), 0444), 0);
    const WithoutRootRights ordinary(path());
    EXPECT_EQ(FileTools::writeFile("~/a", "new"), "Error writing " + path("a") + ": Permission denied");
    EXPECT_EQ(edit("~/a", "old", "new"), "Error editing " + path("a") + ": Permission denied");
    EXPECT_EQ(home.read("a"), "old");
}

TEST_F(WriteFileTest, DevicesAndPipesAreNotReplaced)
{
    makePipe("pipe");
    EXPECT_EQ(FileTools::writeFile("~/pipe", "x"), "Error writing " + path("pipe") + ": Not a regular file");
    EXPECT_EQ(FileTools::writeFile("/dev/null", "x"), "Error writing /dev/null: Not a regular file");
    struct stat status{};
    ASSERT_EQ(::stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(WriteFileTest, APathWithANulWritesNothing)
{
    write("a", "old");
    const QString hidden = path("a") + QChar(0) + ".txt";
    EXPECT_EQ(FileTools::writeFile(hidden, "new"), "Error writing " + hidden + ": No such file or directory");
    EXPECT_EQ(home.read("a"), "old");
}

TEST_F(EditFileTest, ReplacesTheSingleOccurrence)
{
    write("a", "one two three");
    EXPECT_EQ(edit("~/a", "two", "2"), "Edited ~/a: replaced 1 occurrence(s).");
    EXPECT_EQ(home.read("a"), "one 2 three");
}

TEST_F(EditFileTest, ReplacesAllOccurrencesWhenTold)
{
    write("a", "aXaXa");
    EXPECT_EQ(FileTools::editFile(path("a"), "a", "bb", Occurrences::all),
              "Edited " + path("a") + ": replaced 3 occurrence(s).");
    EXPECT_EQ(home.read("a"), "bbXbbXbb");
}

TEST_F(EditFileTest, OneOccurrenceWithReplaceAllIsCountedAsOne)
{
    write("a", "x");
    EXPECT_EQ(FileTools::editFile("~/a", "x", "y", Occurrences::all),
              "Edited ~/a: replaced 1 occurrence(s).");
}

TEST_F(EditFileTest, TheSameTextIsStillWrittenAndCounted)
{
    write("a", "x y");
    EXPECT_EQ(edit("~/a", "x", "x"), "Edited ~/a: replaced 1 occurrence(s).");
    EXPECT_EQ(home.read("a"), "x y");
}

TEST_F(EditFileTest, AnEmptyReplacementRemoves)
{
    write("a", "one two");
    edit("~/a", " two", "");
    EXPECT_EQ(home.read("a"), "one");
}

TEST_F(EditFileTest, OccurrencesDoNotOverlap)
{
    write("a", "aaaaa");
    EXPECT_EQ(FileTools::editFile("~/a", "aa", "b", Occurrences::all),
              "Edited ~/a: replaced 2 occurrence(s).");
    EXPECT_EQ(home.read("a"), "bba");
}

TEST_F(EditFileTest, NeitherTextIsATemplate)
{
    write("a", "a.c $1 \\1 %1");
    EXPECT_EQ(edit("~/a", "a.c", "$0 \\0 & %2"), "Edited ~/a: replaced 1 occurrence(s).");
    EXPECT_EQ(home.read("a"), "$0 \\0 & %2 $1 \\1 %1");
    EXPECT_EQ(edit("~/a", "a?c", "x").left(6), "Error:");
}

TEST_F(EditFileTest, TheRestOfTheFileStaysByteForByte)
{
    write("a", "\xef\xbb\xbfone\r\ntwo\0three\n\n ");
    home.write("a", QByteArray("\xef\xbb\xbfone\r\ntwo\0three\n\n ", 20));
    EXPECT_EQ(edit("~/a", "two", "é"), "Edited ~/a: replaced 1 occurrence(s).");
    EXPECT_EQ(home.read("a"), QByteArray("\xef\xbb\xbfone\r\n\xc3\xa9\0three\n\n ", 19));
}

TEST_F(EditFileTest, AnEmptyTextToFindIsRefused)
{
    EXPECT_EQ(edit(path("none"), "", "x"), "Error: the text to find cannot be empty.");
}

TEST_F(EditFileTest, AMissingFileIsTold)
{
    EXPECT_EQ(edit("~/none", "a", "b"), "Error: the file \"~/none\" does not exist.");
    EXPECT_EQ(edit("", "a", "b"), "Error: the file \"\" does not exist.");
}

TEST_F(EditFileTest, ATextThatIsNotThereIsTold)
{
    write("a", "one");
    EXPECT_EQ(edit("~/a", "One", "x"), "Error: the text to replace was not found in \"~/a\". Include more "
                                       "surrounding context from the file.");
    EXPECT_EQ(home.read("a"), "one");
}

TEST_F(EditFileTest, TwoOccurrencesAreTooManyForOne)
{
    write("a", "one one");
    EXPECT_EQ(edit("~/a", "one", "x"), "Error: the text to replace appears 2 times in \"~/a\". Include more "
                                       "surrounding lines to make it unique, or set replace all to true.");
    EXPECT_EQ(home.read("a"), "one one");
}

TEST_F(EditFileTest, FailuresShowTheExpandedPath)
{
    makeFolder("folder");
    EXPECT_EQ(edit("~/folder", "a", "b"), "Error editing " + path("folder") + ": Is a directory");
    write("binary", "\xff one");
    EXPECT_EQ(edit("~/binary", "one", "b"),
              "Error editing " + path("binary") + ": The text is not valid UTF-8");
    makePipe("pipe");
    EXPECT_EQ(edit("~/pipe", "one", "b"), "Error editing " + path("pipe") + ": Not a regular file");
}

TEST_F(EditFileTest, AFileThatIsOrWouldBecomeHugeIsRefused)
{
    const QString huge = write("huge", "");
    ASSERT_EQ(::truncate(QFile::encodeName(huge).constData(), 1'000'000'000'000), 0);
    EXPECT_EQ(edit("~/huge", "a", "b"), "Error editing " + huge + ": File too large");

    write("growing", QByteArray(100'000, 'a'));
    EXPECT_EQ(FileTools::editFile("~/growing", "a", QString(1'000'000, 'b'), Occurrences::all),
              "Error editing " + path("growing") + ": File too large");
    EXPECT_EQ(home.read("growing").size(), 100'000);
}

TEST_F(EditFileTest, KeepsThePermissionsOfTheFile)
{
    write("run.sh", "echo one");
    ASSERT_EQ(::chmod(QFile::encodeName(path("run.sh")).constData(), 0711), 0);
    edit("~/run.sh", "one", "two");
    EXPECT_EQ(permissionBits(path("run.sh")), 0711u);
}

} // namespace
} // namespace morvane
