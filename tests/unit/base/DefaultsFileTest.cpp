#include "base/DefaultsFile.h"

#include "support/TemporaryHome.h"

#include <QFileInfo>
#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

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
                own.update(
                    [](QVariantMap &values) { values.insert("count", values.value("count").toInt() + 1); });
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

} // namespace
} // namespace morvane
