#include "base/DefaultsFile.h"

#include "base/IniReader.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

class DefaultsFileTest : public testing::Test {
protected:
    TemporaryHome home;
    const QString path = home.path("Morvane/Morvane.conf");
    DefaultsFile file{path};
};

TEST_F(DefaultsFileTest, AMissingFileHasNoValues)
{
    const DefaultsFile::Content content = file.read();
    EXPECT_TRUE(content.values.isEmpty());
    EXPECT_FALSE(content.identity);
    EXPECT_FALSE(content.isDamaged);
}

TEST_F(DefaultsFileTest, AnUpdateKeepsTheOtherKeysAndIsForTheUserAlone)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\nlist=x, y\n");
    EXPECT_TRUE(file.update([](QVariantMap &values) { values.insert("bytes", QByteArray("[1]")); }));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"),
              QByteArray("[General]\nbytes=@ByteArray([1])\nlist=x, y\nmodel=a\n"));
    EXPECT_EQ(permissionBits(path), 0600U);
    EXPECT_EQ(permissionBits(home.path("Morvane")), 0700U);
}

TEST_F(DefaultsFileTest, WritesOfOneSizeInQuickSuccessionAreTold)
{
    for (int number = 100; number < 400; ++number) {
        ASSERT_TRUE(file.update([number](QVariantMap &values) { values.insert("number", number); }));
        ASSERT_EQ(file.read().values.value("number").toInt(), number);
    }
}

TEST_F(DefaultsFileTest, AnOlderVersionOfTheSameSizeIsNotTakenForTheNewestOne)
{
    for (int round = 0; round < 100; ++round) {
        for (const char *text : {"aaa", "longer", "bbb"}) {
            ASSERT_TRUE(file.update([text](QVariantMap &values) { values.insert("text", QString(text)); }));
            if (qstrcmp(text, "longer") != 0)
                ASSERT_EQ(file.read().values.value("text").toString(), QString(text));
        }
    }
}

TEST_F(DefaultsFileTest, UpdatesOfManyThreadsLoseNothing)
{
    constexpr int threads = 4;
    constexpr int updates = 50;
    std::vector<std::thread> workers;
    for (int worker = 0; worker < threads; ++worker)
        workers.emplace_back([this] {
            DefaultsFile own(path);
            for (int update = 0; update < updates; ++update)
                EXPECT_TRUE(own.update(
                    [](QVariantMap &values) { values.insert("count", values.value("count").toInt() + 1); }));
        });
    for (std::thread &worker : workers)
        worker.join();
    EXPECT_EQ(file.read().values.value("count").toInt(), threads * updates);
}

TEST_F(DefaultsFileTest, AReaderBesideAWriterNeverSeesAnOldVersionForGood)
{
    constexpr int versions = 300;
    std::atomic<bool> ends = false;
    std::thread reader([&] {
        DefaultsFile own(path);
        while (!ends)
            own.read();
    });
    for (int version = 1; version <= versions; ++version) {
        ASSERT_TRUE(file.update([version](QVariantMap &values) { values.insert("version", version); }));
        ASSERT_EQ(file.read().values.value("version").toInt(), version);
    }
    ends = true;
    reader.join();
}

TEST_F(DefaultsFileTest, ALockTurnsOthersAwayUntilItEnds)
{
    const DefaultsFile other(path);
    {
        const DefaultsFile::Lock held = file.lock(1s);
        EXPECT_TRUE(held.isHeld());
        EXPECT_FALSE(other.lock(1ms).isHeld());
    }
    EXPECT_TRUE(other.lock(1ms).isHeld());
}

TEST_F(DefaultsFileTest, WhatAnotherIsChangingIsNotChangedBesideIt)
{
    home.write("Morvane/Morvane.conf", "[General]\na=1\nno key here\n");
    const DefaultsFile other(path);
    const auto change = [](QVariantMap &values) { values.insert("b", "2"); };
    {
        const DefaultsFile::Lock held = file.lock(1s);
        ASSERT_TRUE(held.isHeld());
        EXPECT_FALSE(other.update(change, 1ms));
        EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\na=1\nno key here\n"));
        ASSERT_TRUE(file.write({{"a", "1"}}));
        EXPECT_FALSE(other.update(change, 1ms));
        EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\na=1\n"));
    }
    EXPECT_TRUE(other.update(change, 1ms));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\na=1\nb=2\n"));
}

TEST_F(DefaultsFileTest, AFolderThatCannotBeMadeFailsTheUpdate)
{
    home.write("Morvane", "a file in the folder's place");
    EXPECT_FALSE(file.update([](QVariantMap &values) { values.insert("a", 1); }));
}

TEST_F(DefaultsFileTest, ADamagedFileIsSetAsideAndWhatCanBeReadGoesOn)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\nno key here\n");
    ASSERT_TRUE(file.read().isDamaged);
    EXPECT_TRUE(file.update([](QVariantMap &values) { values.insert("b", "2"); }));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nb=2\nmodel=a\n"));
    EXPECT_EQ(home.read("Morvane/Morvane.conf.damaged"), QByteArray("[General]\nmodel=a\nno key here\n"));
}

TEST_F(DefaultsFileTest, AnotherFileUnderTheSameNameIsReadAnew)
{
    for (int round = 0; round < 200; ++round) {
        const TemporaryHome other;
        other.write("Morvane.conf", "[General]\nkey=" + QByteArray::number(100 + round));
        EXPECT_EQ(DefaultsFile(other.path("Morvane.conf")).read().values.value("key").toInt(), 100 + round);
        home.write("Morvane/Morvane.conf", "[General]\nkey=" + QByteArray::number(500 + round));
        ASSERT_EQ(file.read().values.value("key").toInt(), 500 + round);
    }
}

TEST_F(DefaultsFileTest, WhatIsNoFileIsNotReadAndStays)
{
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane"));
    const QByteArray native = QFile::encodeName(path);
    const auto tryIt = [this] {
        file.tidy();
        const DefaultsFile::Content content = file.read();
        EXPECT_TRUE(content.values.isEmpty());
        EXPECT_FALSE(content.isDamaged);
        EXPECT_FALSE(file.update([](QVariantMap &values) { values.insert("a", 1); }));
        EXPECT_FALSE(QFileInfo::exists(path + ".damaged"));
    };
    ASSERT_EQ(::mkfifo(native.constData(), 0600), 0);
    tryIt();
    ASSERT_EQ(::unlink(native.constData()), 0);
    for (const char *device : {"/dev/zero", "/dev/tty"}) {
        ASSERT_EQ(::symlink(device, native.constData()), 0);
        const unsigned before = permissionBits(device);
        tryIt();
        EXPECT_EQ(permissionBits(device), before);
        ASSERT_EQ(::unlink(native.constData()), 0);
    }
}

TEST_F(DefaultsFileTest, FileOfTheKernelThatNeverEndsIsNotRead)
{
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane"));
    ASSERT_EQ(::symlink("/proc/kmsg", QFile::encodeName(path).constData()), 0);
    EXPECT_TRUE(file.read().values.isEmpty());
}

TEST_F(DefaultsFileTest, FileTooLargeToBeSettingsIsSetAside)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\n");
    ASSERT_EQ(::truncate(QFile::encodeName(path).constData(), DefaultsFile::maximumBytes + 1), 0);
    EXPECT_TRUE(file.read().isDamaged);
    EXPECT_TRUE(file.update([](QVariantMap &values) { values.insert("b", "2"); }));
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nb=2\n"));
    EXPECT_EQ(QFileInfo(path + ".damaged").size(), DefaultsFile::maximumBytes + 1);
}

TEST_F(DefaultsFileTest, FileOfATerabyteIsNotReadWhole)
{
    home.write("Morvane/Morvane.conf", "[General]\nmodel=a\n");
    ASSERT_EQ(::truncate(QFile::encodeName(path).constData(), off_t(1) << 40), 0);
    EXPECT_TRUE(file.read().isDamaged);
}

TEST_F(DefaultsFileTest, ValuesTooLargeToBeReadAreNotWritten)
{
    ASSERT_TRUE(file.update([](QVariantMap &values) { values.insert("a", "old"); }));
    EXPECT_FALSE(file.update(
        [](QVariantMap &values) { values.insert("a", QString(DefaultsFile::maximumBytes, u'x')); }));
    EXPECT_EQ(file.read().values.value("a").toString(), u"old"_s);
}

TEST_F(DefaultsFileTest, TidyingRemovesWhatCrashedWritesLeftAlsoBesideALinkedFile)
{
    home.write("dotfiles/morvane.conf", "[General]\na=1\n");
    home.write("dotfiles/.morvane-write-abcdef", "[General]\napiKey_groq=secret\n");
    home.write("Morvane/.morvane-write-ghijkl", "[General]\napiKey_groq=secret\n");
    ASSERT_TRUE(QFile::link(home.path("dotfiles/morvane.conf"), path));
    file.tidy();
    EXPECT_FALSE(QFileInfo::exists(home.path("dotfiles/.morvane-write-abcdef")));
    EXPECT_FALSE(QFileInfo::exists(home.path("Morvane/.morvane-write-ghijkl")));
    EXPECT_EQ(permissionBits(home.path("dotfiles/morvane.conf")), 0600U);
}

TEST_F(DefaultsFileTest, TidyingFollowsAChainOfLinks)
{
    home.write("last/morvane.conf", "[General]\na=1\n");
    home.write("last/.morvane-write-abcdef", "[General]\napiKey_groq=secret\n");
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane"));
    ASSERT_TRUE(QDir(home.path()).mkpath("between"));
    ASSERT_TRUE(QFile::link("../last/morvane.conf", home.path("between/link.conf")));
    ASSERT_TRUE(QFile::link("../between/link.conf", path));
    file.tidy();
    EXPECT_FALSE(QFileInfo::exists(home.path("last/.morvane-write-abcdef")));
}

TEST_F(DefaultsFileTest, ADamagedFileBehindALinkIsSetAsideAndTheLinkStays)
{
    home.write("dotfiles/morvane.conf", "[General]\nmodel=a\nno key here\n");
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane"));
    ASSERT_TRUE(QFile::link(home.path("dotfiles/morvane.conf"), path));
    EXPECT_TRUE(file.update([](QVariantMap &values) { values.insert("b", "2"); }));
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_EQ(home.read("dotfiles/morvane.conf"), QByteArray("[General]\nb=2\nmodel=a\n"));
    EXPECT_EQ(home.read("dotfiles/morvane.conf.damaged"), QByteArray("[General]\nmodel=a\nno key here\n"));
}

TEST_F(DefaultsFileTest, ADamagedFileTakesTheNameOfNothingElse)
{
    ASSERT_TRUE(QDir(home.path()).mkpath("Morvane/Morvane.conf.damaged/inside"));
    const QByteArray pipe = QFile::encodeName(home.path("Morvane/Morvane.conf.damaged-2"));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    for (const char *name : {"Morvane/Morvane.conf.damaged-3", "Morvane/Morvane.conf.damaged-4"}) {
        const QByteArray text = "[General]\napiKey_groq=secret\nno key here: " + QByteArray(name) + '\n';
        home.write("Morvane/Morvane.conf", text);
        EXPECT_TRUE(file.update([](QVariantMap &values) { values.insert("b", "2"); }));
        EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\napiKey_groq=secret\nb=2\n"));
        EXPECT_EQ(home.read(name), text);
    }
    EXPECT_TRUE(QFileInfo(home.path("Morvane/Morvane.conf.damaged/inside")).isDir());
    struct stat status{};
    ASSERT_EQ(::lstat(pipe.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(DefaultsFileTest, ADamagedFileThatCannotBeSetAsideIsNotReplaced)
{
    const QString name = u"Morvane/"_s + QString(250, u'm'); // any longer, and no folder takes it
    const QByteArray text = "[General]\napiKey_groq=secret\nno key here\n";
    home.write(name, text);
    EXPECT_FALSE(DefaultsFile(home.path(name)).update([](QVariantMap &values) { values.clear(); }));
    EXPECT_EQ(home.read(name), text);
}

TEST_F(DefaultsFileTest, MoreValuesThanAreReadAreNotWritten)
{
    const auto withList = [this](qsizetype elements) {
        return file.update(
            [elements](QVariantMap &values) { values.insert("list", QStringList(elements, u"x"_s)); });
    };
    ASSERT_TRUE(withList(IniReader::maximumItems));
    EXPECT_FALSE(file.read().isDamaged);
    EXPECT_FALSE(withList(IniReader::maximumItems + 1));
    EXPECT_EQ(file.read().values.value("list").toStringList().size(), IniReader::maximumItems);
}

TEST_F(DefaultsFileTest, AFileThatMayNotBeReadIsSetAsideAndNotOverwritten)
{
    const QByteArray text = "[General]\napiKey_groq=secret\n";
    home.write("Morvane/Morvane.conf", text);
    // Who holds a lease keeps others out, the superuser too.
    const FileDescriptor leased(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::fcntl(leased.get(), F_SETSIG, SIGURG), 0); // says nothing where nobody listens
    ASSERT_EQ(::fcntl(leased.get(), F_SETLEASE, F_WRLCK), 0);
    EXPECT_TRUE(file.read().isDamaged);
    EXPECT_TRUE(file.update([](QVariantMap &values) { values.insert("b", "2"); }));
    ASSERT_EQ(::fcntl(leased.get(), F_SETLEASE, F_UNLCK), 0);
    EXPECT_EQ(home.read("Morvane/Morvane.conf"), QByteArray("[General]\nb=2\n"));
    EXPECT_EQ(home.read("Morvane/Morvane.conf.damaged"), text);
}

} // namespace
} // namespace morvane
