#include "FileToolsFixture.h"

#include "tools/FileTools.h"

#include <QStringList>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using ListDirectoryTest = FileToolsTest;
using ReadFileTest = FileToolsTest;

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
        write(u"folder/%1"_s.arg(i, 3, 10, QChar(u'0')), "");
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
        EXPECT_EQ(FileTools::readFile(device), u"Error reading %1: Not a regular file"_s.arg(device));

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

} // namespace
} // namespace morvane
