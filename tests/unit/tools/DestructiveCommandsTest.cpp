#include "tools/DestructiveCommands.h"

#include "support/DestructiveByIcu.h"

#include <QStringList>
#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(DestructiveCommandsTest, EveryPatternFindsItsCommands)
{
    for (const char *const command : {"rm -rf /tmp/x",
                                      "rm -r folder",
                                      "rm -f file",
                                      "rm  file --force",
                                      "rm a b -vr c",
                                      "rmdir empty",
                                      "mkfs /dev/sda1",
                                      "mkfs.ext4 /dev/sda1",
                                      "dd if=/dev/zero of=disk",
                                      "diskutil erase disk2",
                                      "diskutil reformat disk2",
                                      "fdisk -l",
                                      "gdisk /dev/sda",
                                      "parted /dev/sda",
                                      "shutdown now",
                                      "reboot",
                                      "halt",
                                      "poweroff",
                                      "kill -s 9 123",
                                      "kill -KILL 123",
                                      "kill -9 123",
                                      "kill -15 1",
                                      "killall Finder",
                                      "pkill bash",
                                      "systemctl stop cups",
                                      "sudo ls",
                                      "git push origin main --force",
                                      "git push -f",
                                      "git  push origin +main --force-with-lease",
                                      "chmod -R 777 /",
                                      "chmod --recursive 777 .",
                                      "chown -R user .",
                                      "chown --recursive user .",
                                      "echo x > /dev/disk2",
                                      "echo x >> /dev/rdisk3",
                                      ">/dev/disk0",
                                      "find . -name '*.o' -delete"})
        EXPECT_TRUE(isDestructiveCommand(command)) << command;
}

TEST(DestructiveCommandsTest, HarmlessCommandsAreLeftAlone)
{
    for (const char *const command : {"",
                                      "ls -la",
                                      "rm file.txt",
                                      "rm file\n-rf",
                                      "git push -u origin main",
                                      "git push",
                                      "git pull --force",
                                      "kill 123",
                                      "kill -l",
                                      "cat /dev/null > file",
                                      "cat x >/dev/null",
                                      "cat /dev/disk2",
                                      "diskutil list",
                                      "diskutil eraseDisk JHFS+ X disk2",
                                      "chmod 644 file",
                                      "chmod +x run",
                                      "find . -name deleted",
                                      "forms and terms",
                                      "add address",
                                      "halting rebooted",
                                      "pseudonym sudoku"})
        EXPECT_FALSE(isDestructiveCommand(command)) << command;
}

TEST(DestructiveCommandsTest, RmWithFlagsAsksAndWithoutDoesNot)
{
    EXPECT_TRUE(isDestructiveCommand("rm -rf /tmp/x"));
    EXPECT_FALSE(isDestructiveCommand("rm file.txt"));
    EXPECT_TRUE(isDestructiveCommand("RM -RF /"));
}

TEST(DestructiveCommandsTest, OnlyAForcedPushAsks)
{
    EXPECT_TRUE(isDestructiveCommand("git push origin main --force"));
    EXPECT_FALSE(isDestructiveCommand("git push -u origin main"));
}

TEST(DestructiveCommandsTest, OnlyAKillWithASignalNumberAsks)
{
    EXPECT_TRUE(isDestructiveCommand("kill -9 123"));
    EXPECT_FALSE(isDestructiveCommand("kill 123"));
}

TEST(DestructiveCommandsTest, WritingToADiskAsksAndReadingFromADeviceDoesNot)
{
    EXPECT_TRUE(isDestructiveCommand("echo x > /dev/disk2"));
    EXPECT_FALSE(isDestructiveCommand("cat /dev/null > file"));
}

TEST(DestructiveCommandsTest, SudoAsksAnywhereAsAWord)
{
    EXPECT_TRUE(isDestructiveCommand("echo sudo"));
    EXPECT_TRUE(isDestructiveCommand("ls;sudo ls"));
    EXPECT_FALSE(isDestructiveCommand("echo pseudosudo1"));
}

TEST(DestructiveCommandsTest, EraseAsksButItsLongerRelativesDoNot)
{
    EXPECT_TRUE(isDestructiveCommand("diskutil erase disk2"));
    EXPECT_FALSE(isDestructiveCommand("diskutil secureErase 0 disk2"));
    EXPECT_FALSE(isDestructiveCommand("diskutil zeroDisk disk2"));
}

TEST(DestructiveCommandsTest, CapitalLettersDoNotHide)
{
    EXPECT_TRUE(isDestructiveCommand("SUDO ls"));
    EXPECT_TRUE(isDestructiveCommand("Git Push --Force"));
    EXPECT_TRUE(isDestructiveCommand("CHMOD -R 777 /"));
    // The Kelvin sign is a capital whose small letter is "k".
    EXPECT_TRUE(isDestructiveCommand(u"\u212aillall Finder"_qs));
}

TEST(DestructiveCommandsTest, PatternsReachOverLinesOnlyWhereTheySaySo)
{
    EXPECT_TRUE(isDestructiveCommand("ls\nrm -rf x"));
    EXPECT_TRUE(isDestructiveCommand("rm\n-rf x"));
    EXPECT_FALSE(isDestructiveCommand("rm x\n-rf"));
    EXPECT_FALSE(isDestructiveCommand("find .\n-name x"));
    EXPECT_FALSE(isDestructiveCommand("git push origin\n--force"));
    EXPECT_TRUE(isDestructiveCommand("echo x\n> /dev/disk2"));
}

/// Commands put together by chance from pieces that are likely to meet in a pattern.
class Chance {
public:
    explicit Chance(unsigned seed) : m_engine(seed) {}

    QString command()
    {
        static const QStringList pieces{"rm",
                                        "rmdir",
                                        "mkfs",
                                        "dd",
                                        "diskutil",
                                        "erase",
                                        "secureerase",
                                        "reformat",
                                        "fdisk",
                                        "parted",
                                        "halt",
                                        "kill",
                                        "-s",
                                        "9",
                                        "-k",
                                        "-9",
                                        "-",
                                        "--",
                                        "killall",
                                        "systemctl",
                                        "sudo",
                                        "git",
                                        "push",
                                        "--force",
                                        "-f",
                                        "chmod",
                                        "chown",
                                        "-r",
                                        "--recursive",
                                        ">",
                                        ">>",
                                        "/dev/",
                                        "disk",
                                        "rdisk",
                                        "find",
                                        "-delete",
                                        "-rf",
                                        "r",
                                        "f",
                                        "x",
                                        "_",
                                        "W",
                                        "X",
                                        "K",
                                        "7",
                                        " ",
                                        " ",
                                        " ",
                                        "\t",
                                        "\n",
                                        "\r\n",
                                        "\v",
                                        "\f",
                                        "\x1",
                                        "\x2",
                                        "\x1c",
                                        "\x7f",
                                        ".",
                                        ";",
                                        "'",
                                        u"\u0301"_s,
                                        u"\u200b"_s,
                                        u"\u200c"_s,
                                        u"\u200d"_s,
                                        u"\u00ad"_s,
                                        u"\u00a0"_s,
                                        u"\u0085"_s,
                                        u"\u2028"_s,
                                        u"\u2029"_s,
                                        u"\u2003"_s,
                                        u"é"_s,
                                        u"ß"_s,
                                        u"\u0663"_s,
                                        u"\u212a"_s,
                                        u"\u0130"_s,
                                        u"\u0345"_s,
                                        u"\u20dd"_s,
                                        u"\u093e"_s,
                                        u"\u180e"_s,
                                        u"\u202e"_s,
                                        u"\ufeff"_s,
                                        u"\u24b6"_s,
                                        u"\u203f"_s,
                                        u"\u2160"_s,
                                        u"\U0001d7d8"_s,
                                        u"\U0001f600"_s,
                                        u"\U000e0061"_s,
                                        u"\U0001e8d0"_s,
                                        QString(QChar(0xd800)),
                                        QString(QChar(0xdc00)),
                                        QString(QChar(u'\0'))};
        QString text;
        for (int i = below(12); i >= 0; --i)
            text += pieces[below(pieces.size())];
        return text;
    }

private:
    int below(qsizetype bound)
    {
        return std::uniform_int_distribution(0, static_cast<int>(bound) - 1)(m_engine);
    }

    std::mt19937 m_engine;
};

std::string shown(const QString &text)
{
    std::string escaped;
    for (const QChar unit : text)
        escaped += unit >= u' ' && unit < u'\x7f'
                       ? std::string{unit.toLatin1()}
                       : "\\u" + QString::number(unit.unicode(), 16).toStdString() + ' ';
    return escaped;
}

TEST(DestructiveCommandsTest, TheAnswerIsThatOfIcu)
{
    Chance chance(20240811);
    int destructive = 0;
    constexpr int commands = 40'000;
    for (int i = 0; i < commands; ++i) {
        const QString command = chance.command();
        const std::optional<bool> expected = destructiveByIcu(command);
        ASSERT_TRUE(expected);
        ASSERT_EQ(isDestructiveCommand(command), *expected) << shown(command);
        destructive += *expected;
    }
    EXPECT_GT(destructive, commands / 10);
    EXPECT_LT(destructive, commands / 2);
}

TEST(DestructiveCommandsTest, EveryCharacterCountsAsItDoesForIcu)
{
    // Every part of an expression that asks for more than a certain character, with and without a letter in
    // front.
    const QList<std::pair<QString, QString>> surroundings{
        {"a", "dd"}, {"dd", " "}, {"rm", "-f"}, {"rm - ", "f"}, {"git push x", "-f"}, {"kill -", " "}};
    constexpr char32_t end = 0x110000;
    // One by one where the scripts are; ideographs and the scripts of the second plane come in rows alike,
    // and beyond it there is little else than rows.
    const auto step = [](char32_t c) {
        const bool isOfScripts = c < 0x3200 || (c >= 0xa000 && c < 0xac00) || (c >= 0xf900 && c < 0x10000);
        return isOfScripts ? 1 : c < 0x20000 ? 61 : 4001;
    };
    for (char32_t c = 0; c < end; c += step(c)) {
        const QString character =
            c < 0x10000 ? QString(QChar(static_cast<char16_t>(c))) : QString::fromUcs4(&c, 1);
        QString command;
        for (const auto &[before, behind] : surroundings) {
            command = before + character + behind;
            ASSERT_EQ(isDestructiveCommand(command), *destructiveByIcu(command)) << std::hex << int(c);
        }
    }
}

TEST(DestructiveCommandsTest, AHostileCommandIsReadToItsEnd)
{
    // Quadratic and worse for an engine that goes back: hours for these texts.
    for (const char *const piece :
         {"rm x ", "rm ", "rm - ", "git push ", "find -", "kill -a ", "chmod -", "> ", "dd\xcc\x81"}) {
        const QString text = QString(piece).repeated(1'000'000 / static_cast<int>(qstrlen(piece)));
        EXPECT_FALSE(isDestructiveCommand(text)) << piece;
        EXPECT_TRUE(isDestructiveCommand(text + " sudo")) << piece;
    }
    EXPECT_FALSE(isDestructiveCommand("git push " + QString("-").repeated(2'000'000)));
}

TEST(DestructiveCommandsTest, ALongHarmlessCommandIsReadToItsEnd)
{
    const QString line = "printf 'a line of a longer text for a file'\n";
    EXPECT_FALSE(isDestructiveCommand(line.repeated(500)));
    EXPECT_TRUE(isDestructiveCommand(line.repeated(500) + "sudo true"));
}

TEST(DestructiveCommandsTest, TheAnswerIsTheSameHoweverBusyTheMachineIs)
{
    const QString source =
        QString("cat > it.c <<E\nfor (i = 0; i < n; ++i) rms += x[i] - \"rm \";\nE\n").repeated(800);
    std::atomic<bool> stops = false;
    std::vector<std::thread> load;
    for (unsigned i = 0; i < 4 * std::max(1U, std::thread::hardware_concurrency()); ++i) {
        load.emplace_back([&stops] {
            while (!stops)
                static_cast<void>(isDestructiveCommand("rm x"));
        });
    }
    int asked = 0;
    for (int i = 0; i < 1'000; ++i)
        asked += isDestructiveCommand(source);
    stops = true;
    for (std::thread &thread : load)
        thread.join();
    EXPECT_EQ(asked, 0);
}

} // namespace
} // namespace morvane
