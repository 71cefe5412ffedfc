#include "tools/FileTools.h"

#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace morvane {
namespace {

/// Takes root's rights from the thread's process, which the tests run with in containers, as long as it
/// lives.
class WithoutRootRights {
public:
    explicit WithoutRootRights(const QString &home)
    {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 &&
            (::chown(QFile::encodeName(home).constData(), nobody, gid_t(-1)) != 0 || ::seteuid(nobody) != 0))
            ADD_FAILURE() << "cannot give up the rights of root";
    }
    ~WithoutRootRights() { EXPECT_EQ(::seteuid(::getuid()), 0); }
};

class FileToolsTest : public testing::Test {
protected:
    QString path(const QString &relative = {}) const { return home.path(relative); }
    QString write(const QString &relative, const QByteArray &content) const
    {
        return home.write(relative, content);
    }
    void makeFolder(const QString &relative) const { ASSERT_TRUE(QDir().mkpath(path(relative))); }
    void makePipe(const QString &relative) const
    {
        ASSERT_EQ(::mkfifo(QFile::encodeName(path(relative)).constData(), 0600), 0);
    }
    void makeLink(const QString &target, const QString &relative) const
    {
        ASSERT_TRUE(QFile::link(target, path(relative)));
    }

    TemporaryHome home;
};

using ListDirectoryTest = FileToolsTest;
using ReadFileTest = FileToolsTest;
using WriteFileTest = FileToolsTest;
using EditFileTest = FileToolsTest;

QString edit(const QString &path, const QString &oldString, const QString &newString)
{
    return FileTools::editFile(path, oldString, newString, Occurrences::single);
}

TEST_F(ListDirectoryTest, ListsNamesInUnicodeOrderWithFoldersMarked)
{
    for (const char *const name : {"folder/apple", "folder/Zebra", "folder/.hidden", "folder/inner/x"})
        write(name, "");
    EXPECT_EQ(FileTools::listDirectory(path("folder")),
              "Contents of " + path("folder") + ":\n.hidden\nZebra\napple\ninner/");
}

TEST_F(ListDirectoryTest, OrderIsByScalarsOfTheCanonicalForm)
{
    // Decomposed "é" sorts as composed; a character outside the basic plane behind the private use area.
    for (const QString &name : {u"e\u0301"_qs, u"z"_qs, u"\u00ea"_qs, u"\U0001F600"_qs, u"\uE000"_qs})
        write("folder/" + name, "");
    EXPECT_EQ(FileTools::listDirectory(path("folder")),
              "Contents of " + path("folder") + u":\nz\ne\u0301\n\u00ea\n\uE000\n\U0001F600"_qs);
}

TEST_F(ListDirectoryTest, LinksToFoldersAreMarkedAndBrokenOnesAreNot)
{
    makeFolder("folder");
    makeLink(path(), "folder/a");
    makeLink(path("nowhere"), "folder/b");
    makeLink("c", "folder/c"); // to itself
    EXPECT_EQ(FileTools::listDirectory(path("folder")), "Contents of " + path("folder") + ":\na/\nb\nc");
}

TEST_F(ListDirectoryTest, AFolderOf250EntriesGivesTheHeadingAndTheFirst199)
{
    for (int i = 0; i < 250; ++i)
        write(QStringLiteral("folder/%1").arg(i, 3, 10, QLatin1Char('0')), "");
    const QStringList lines = FileTools::listDirectory(path("folder")).split('\n');
    ASSERT_EQ(lines.size(), 200);
    EXPECT_EQ(lines.first(), "Contents of " + path("folder") + ":");
    EXPECT_EQ(lines[1], "000");
    EXPECT_EQ(lines.last(), "198");
}

TEST_F(ListDirectoryTest, AFolderOf199EntriesIsListedWhole)
{
    for (int i = 0; i < 199; ++i)
        write("folder/" + QString::number(i), "");
    EXPECT_EQ(FileTools::listDirectory(path("folder")).count('\n'), 199);
}

TEST_F(ListDirectoryTest, AnEmptyFolderSaysSo)
{
    makeFolder("folder");
    EXPECT_EQ(FileTools::listDirectory(path("folder")), "The folder \"" + path("folder") + "\" is empty.");
}

TEST_F(ListDirectoryTest, WhatIsNoFolderIsTold)
{
    EXPECT_EQ(FileTools::listDirectory(path("none")),
              "Error: the path \"" + path("none") + "\" does not exist.");
    EXPECT_EQ(FileTools::listDirectory(""), "Error: the path \"\" does not exist.");
    EXPECT_EQ(FileTools::listDirectory(write("file", "")),
              "Error: \"" + path("file") + "\" is not a folder.");
    EXPECT_EQ(FileTools::listDirectory("/dev/null"), "Error: \"/dev/null\" is not a folder.");
}

TEST_F(ListDirectoryTest, ATildeIsExpandedInTheHeadingOnly)
{
    write("folder/a", "");
    EXPECT_EQ(FileTools::listDirectory("~/folder"), "Contents of " + path("folder") + ":\na");
    EXPECT_EQ(FileTools::listDirectory("~/none"), "Error: the path \"~/none\" does not exist.");
    EXPECT_TRUE(FileTools::listDirectory("~").startsWith("Contents of " + path() + ":\n"));
    EXPECT_EQ(FileTools::listDirectory("~no-such-user/x"),
              "Error: the path \"~no-such-user/x\" does not exist.");
    EXPECT_EQ(FileTools::listDirectory("folder~"), "Error: the path \"folder~\" does not exist.");
}

TEST_F(ListDirectoryTest, NamesThatAreNoUtf8DoNoHarm)
{
    makeFolder("folder");
    const QByteArray name = QFile::encodeName(path("folder")) + "/\xff\xfe";
    ASSERT_GE(::close(::open(name.constData(), O_CREAT | O_WRONLY, 0600)), 0);
    EXPECT_TRUE(FileTools::listDirectory(path("folder")).contains(QChar::ReplacementCharacter));
    ::unlink(name.constData()); // what removes the home folder cannot name it
}

TEST_F(ListDirectoryTest, AFolderThatMayNotBeReadIsTold)
{
    makeFolder("closed");
    ASSERT_EQ(::chmod(QFile::encodeName(path("closed")).constData(), 0), 0);
    {
        const WithoutRootRights ordinary(path());
        EXPECT_EQ(FileTools::listDirectory("~/closed"), "Error listing ~/closed: Permission denied");
    }
    ::chmod(QFile::encodeName(path("closed")).constData(), 0700); // so that it can be removed
}

TEST_F(ReadFileTest, GivesTheTextWithoutWhiteSpaceAtItsEnds)
{
    EXPECT_EQ(FileTools::readFile(write("a", "\n\t one\n  two \r\n\n")), "one\n  two");
}

TEST_F(ReadFileTest, AnEmptyFileOrOneOfBlanksIsEmpty)
{
    EXPECT_EQ(FileTools::readFile(write("a", "")), "The file \"" + path("a") + "\" is empty.");
    EXPECT_EQ(FileTools::readFile(write("a", " \n\t\r\n")), "The file \"" + path("a") + "\" is empty.");
}

TEST_F(ReadFileTest, AUtf16TextIsNoUtf8)
{
    EXPECT_EQ(FileTools::readFile(write("a", QByteArray("\xff\xfeh\0i\0", 6))),
              "Error reading " + path("a") + ": The text is not valid UTF-8");
}

TEST_F(ReadFileTest, BrokenUtf8IsRefused)
{
    for (const QByteArray &bytes : {QByteArray("a\xc3"), QByteArray("\xed\xa0\x80"), QByteArray("\xc0\xaf"),
                                    QByteArray("\xf4\x90\x80\x80"), QByteArray("ok\x80")})
        EXPECT_TRUE(FileTools::readFile(write("a", bytes)).startsWith("Error reading " + path("a") + ": "))
            << bytes.toHex().constData();
}

TEST_F(ReadFileTest, ATextWithANulIsBinary)
{
    EXPECT_EQ(FileTools::readFile(write("a", QByteArray("a\0b", 3))),
              "The file \"" + path("a") + "\" appears to be binary and was not read.");
}

TEST_F(ReadFileTest, AByteOrderMarkIsNotPartOfTheText)
{
    EXPECT_EQ(FileTools::readFile(write("a", "\xef\xbb\xbftext")), "text");
}

TEST_F(ReadFileTest, TwoMillionBytesAreReadAndOneMoreIsRefused)
{
    EXPECT_EQ(FileTools::readFile(write("a", QByteArray(1'999'999, ' ') + "x")), "x");
    EXPECT_EQ(
        FileTools::readFile(write("a", QByteArray(2'000'000, ' ') + "x")),
        "The file \"" + path("a") +
            "\" is 2000001 bytes, which is too large to read in full. Use run_shell_command with a tool like "
            "`sed` or `grep` to inspect it.");
}

TEST_F(ReadFileTest, EightThousandCharactersComeBackWhole)
{
    const QByteArray text(8'000, 'x');
    EXPECT_EQ(FileTools::readFile(write("a", text)), text);
    EXPECT_EQ(FileTools::readFile(write("a", text + "  \n")), text);
}

TEST_F(ReadFileTest, OneCharacterMoreIsCutWithANote)
{
    const QString note = u"\n… (file is larger, only the first part was shown)"_qs;
    EXPECT_EQ(FileTools::readFile(write("a", QByteArray(8'001, 'x'))), QString(8'000, 'x') + note);
    const QString family = u"👩‍👩‍👧"_qs;
    EXPECT_EQ(FileTools::readFile(write("a", family.repeated(8'000).toUtf8())), family.repeated(8'000));
    EXPECT_EQ(FileTools::readFile(write("a", family.repeated(8'001).toUtf8())),
              family.repeated(8'000) + note);
}

TEST_F(ReadFileTest, WhatIsNoFileIsTold)
{
    EXPECT_EQ(FileTools::readFile(path("none")), "Error: the file \"" + path("none") + "\" does not exist.");
    EXPECT_EQ(FileTools::readFile(""), "Error: the file \"\" does not exist.");
    EXPECT_EQ(FileTools::readFile(path()), "Error: \"" + path() + "\" is a folder, not a file.");
    EXPECT_EQ(FileTools::readFile("~"), "Error: \"~\" is a folder, not a file.");
    makeLink(path("none"), "broken");
    EXPECT_EQ(FileTools::readFile("~/broken"), "Error: the file \"~/broken\" does not exist.");
}

TEST_F(ReadFileTest, DevicesPipesAndSocketsAreNotOpened)
{
    for (const char *const device : {"/dev/zero", "/dev/null", "/dev/tty"})
        EXPECT_EQ(FileTools::readFile(device),
                  QStringLiteral("Error reading %1: Not a regular file").arg(device));

    makePipe("pipe");
    EXPECT_EQ(FileTools::readFile("~/pipe"), "Error reading ~/pipe: Not a regular file");

    const QByteArray socketPath = QFile::encodeName(path("socket"));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(socketPath.size(), qsizetype(sizeof address.sun_path));
    std::copy(socketPath.begin(), socketPath.end(), address.sun_path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    EXPECT_EQ(FileTools::readFile("~/socket"), "Error reading ~/socket: Not a regular file");
    ::close(socket);
}

TEST_F(ReadFileTest, AFileThatMayNotBeReadIsTold)
{
    write("closed", "secret");
    ASSERT_EQ(::chmod(QFile::encodeName(path("closed")).constData(), 0), 0);
    const WithoutRootRights ordinary(path());
    EXPECT_EQ(FileTools::readFile("~/closed"), "Error reading ~/closed: Permission denied");
}

TEST_F(ReadFileTest, FilesOfTheKernelThatTellNoSizeAreRead)
{
    EXPECT_TRUE(FileTools::readFile("/proc/self/status").contains("VmPeak"));
    EXPECT_TRUE(FileTools::readFile("/proc/self/mem").startsWith("Error reading /proc/self/mem: "));
}

TEST_F(ReadFileTest, APathWithANulNamesNoFile)
{
    const QString hidden = write("a", "text") + QChar(0) + ".txt";
    EXPECT_EQ(FileTools::readFile(hidden), "Error: the file \"" + hidden + "\" does not exist.");
}

TEST_F(ReadFileTest, APathThatIsTooLongNamesNoFile)
{
    const QString longPath = "/" + QString(100'000, 'x');
    EXPECT_EQ(FileTools::readFile(longPath), "Error: the file \"" + longPath + "\" does not exist.");
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

TEST_F(WriteFileTest, FollowsALinkAndLeavesIt)
{
    write("target", "old");
    makeLink(path("target"), "link");
    EXPECT_EQ(FileTools::writeFile("~/link", "new"), "Wrote 3 characters to " + path("link") + ".");
    EXPECT_TRUE(QFileInfo(path("link")).isSymLink());
    EXPECT_EQ(home.read("target"), "new");
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
    struct stat status {};
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
