#include "tools/DestructiveCommands.h"

#include <gtest/gtest.h>

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

TEST(DestructiveCommandsTest, AHostileCommandIsTakenForDestructive)
{
    // Each "rm " starts a search to the end of the line: quadratic without a limit, minutes for this text.
    EXPECT_TRUE(isDestructiveCommand(QString("rm x ").repeated(400'000)));
    EXPECT_TRUE(isDestructiveCommand("git push " + QString("-").repeated(2'000'000)));
}

TEST(DestructiveCommandsTest, ALongHarmlessCommandIsReadToItsEnd)
{
    const QString line = "printf 'a line of a longer text for a file'\n";
    EXPECT_FALSE(isDestructiveCommand(line.repeated(500)));
    EXPECT_TRUE(isDestructiveCommand(line.repeated(500) + "sudo true"));
}

} // namespace
} // namespace morvane
