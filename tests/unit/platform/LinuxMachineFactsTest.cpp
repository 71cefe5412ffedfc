#include "platform/linux/LinuxMachineFacts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace morvane {
namespace {

class LinuxMachineFactsTest : public testing::Test {
protected:
    void write(const QString &path, const QByteArray &content)
    {
        const QString full = root.path() + path;
        ASSERT_TRUE(QDir().mkpath(QFileInfo(full).path()));
        QFile file(full);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QTemporaryDir root;
    LinuxMachineFacts facts{root.path()};
};

TEST_F(LinuxMachineFactsTest, WhatCannotBeReadIsUnknown)
{
    EXPECT_EQ(facts.modelIdentifier(), "Unknown");
    EXPECT_EQ(facts.chip(), "Unknown");
    EXPECT_EQ(facts.osVersion(), "Unknown");
}

TEST_F(LinuxMachineFactsTest, AFolderInPlaceOfAFileIsUnknown)
{
    QDir(root.path()).mkpath("sys/class/dmi/id/product_name");
    QDir(root.path()).mkpath("proc/cpuinfo");
    QDir(root.path()).mkpath("etc/os-release");
    EXPECT_EQ(facts.modelIdentifier(), "Unknown");
    EXPECT_EQ(facts.chip(), "Unknown");
    EXPECT_EQ(facts.osVersion(), "Unknown");
}

TEST_F(LinuxMachineFactsTest, TheModelIsTheFirmwaresProductName)
{
    write("/sys/class/dmi/id/product_name", "MacBookPro16,1\n");
    write("/proc/device-tree/model", "Other");
    EXPECT_EQ(facts.modelIdentifier(), "MacBookPro16,1");
}

TEST_F(LinuxMachineFactsTest, WithoutAProductNameTheModelIsTheDeviceTrees)
{
    write("/sys/class/dmi/id/product_name", "  \n");
    write("/proc/device-tree/model", QByteArray("Apple MacBook Air (M1, 2020)\0", 29));
    EXPECT_EQ(facts.modelIdentifier(), "Apple MacBook Air (M1, 2020)");
}

TEST_F(LinuxMachineFactsTest, TheChipIsTheFirstProcessorsName)
{
    write("/proc/cpuinfo",
          "processor\t: 0\nvendor_id\t: GenuineIntel\nmodel\t\t: 158\n"
          "model name\t: Intel(R) Core(TM)   i7 CPU @ 2.60GHz\n\nprocessor\t: 1\nmodel name\t: Other\n");
    EXPECT_EQ(facts.chip(), "Intel(R) Core(TM) i7 CPU @ 2.60GHz");
}

TEST_F(LinuxMachineFactsTest, AProcessorWithoutANameIsUnknown)
{
    write("/proc/cpuinfo", "processor\t: 0\nBogoMIPS\t: 48.00\nno colon here\n");
    EXPECT_EQ(facts.chip(), "Unknown");
    write("/proc/cpuinfo", "model name\t:\n");
    EXPECT_EQ(facts.chip(), "Unknown");
}

TEST_F(LinuxMachineFactsTest, TheSystemIsItsPrettyName)
{
    write("/etc/os-release", "NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nID=debian\n");
    EXPECT_EQ(facts.osVersion(), "Debian GNU/Linux 12 (bookworm)");
}

TEST_F(LinuxMachineFactsTest, TheSystemsNameMayLieBelowUsr)
{
    write("/usr/lib/os-release", "PRETTY_NAME=Arch\n");
    EXPECT_EQ(facts.osVersion(), "Arch");
}

TEST_F(LinuxMachineFactsTest, QuotesInTheSystemsNameAreReadAsAShellReadsThem)
{
    const QList<std::pair<QByteArray, QString>> cases{{"'single $x'", "single $x"},
                                                      {R"("a \"b\" \$c \\ \`")", R"(a "b" $c \ `)"},
                                                      {R"("keep \n")", R"(keep \n)"},
                                                      {R"("ends in \")", R"(ends in \)"},
                                                      {"\"", "\""},
                                                      {"plain words", "plain words"},
                                                      {"\"\"", "Unknown"},
                                                      {"", "Unknown"}};
    for (const auto &[written, expected] : cases) {
        write("/etc/os-release", "PRETTY_NAME=" + written + "\n");
        EXPECT_EQ(facts.osVersion(), expected) << written.constData();
    }
}

TEST_F(LinuxMachineFactsTest, BytesThatAreNoTextDoNoHarm)
{
    write("/sys/class/dmi/id/product_name", QByteArray("\xff\xfe Box", 6));
    EXPECT_EQ(facts.modelIdentifier(), QString("%1%1 Box").arg(QChar(QChar::ReplacementCharacter)));
    write("/proc/cpuinfo", QByteArray(1'000'000, 'x'));
    EXPECT_EQ(facts.chip(), "Unknown");
}

TEST_F(LinuxMachineFactsTest, TheRunningSystemHasMemoryAndAName)
{
    EXPECT_GE(facts.physicalMemory(), quint64(64) << 20);
    EXPECT_FALSE(LinuxMachineFacts().osVersion().isEmpty());
}

} // namespace
} // namespace morvane
