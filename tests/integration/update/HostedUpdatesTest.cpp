#include "update/HostedUpdates.h"

#include "async/SystemClock.h"
#include "integration/update/BundleFixture.h"
#include "net/HttpClient.h"
#include "support/DownloadServer.h"
#include "support/RunTask.h"
#include "support/WaitUntil.h"
#include "update/UpdateInstallError.h"

#include <QCryptographicHash>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

namespace morvane {
namespace {

/// A host, and a bundle that takes its updates.
class HostedUpdatesTest : public BundleTest {
protected:
    HostedUpdatesTest()
    {
        QDir().mkpath(downloads());
        make();
        qputenv("QT_PLUGIN_PATH", "/old/plugins");
    }
    ~HostedUpdatesTest() override
    {
        scheduler.shutdown(5s);
        qunsetenv("QT_PLUGIN_PATH");
    }

    QString downloads() const { return home.path(u"downloads"_s); }
    void make()
    {
        updates = std::make_unique<HostedUpdates>(http, UpdateHost{host.origin(), host.origin(), {}},
                                                  ProgramVersion{u"1.2"_s, 5}, bundle(), downloads(),
                                                  [this] { ++terminations; });
    }
    void offer(const SampleArchive &image)
    {
        const QByteArray bytes = image.bytes();
        const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
        host.setFile(u"/downloads/image?v=1.3-build7"_s, {bytes});
        host.setFile(u"/downloads/latest.json"_s,
                     {R"({"version": "1.3", "build": 7, "date": "today", "notes": [], "sha256": ")" +
                      hash.toUpper() + R"(", "dmg": ")" + host.origin().toUtf8() + R"(/downloads/image"})"});
    }
    /// Its relauncher writes down what it was started with.
    void layWritingRelauncher()
    {
        QFile script(relauncher());
        ASSERT_TRUE(script.open(QIODevice::WriteOnly));
        const QByteArray place = marker().toUtf8();
        script.write("#!/bin/sh\ncat /proc/$$/fdinfo/3 > " + place + ".part\nenv >> " + place + ".part\nmv " +
                     place + ".part " + place + "\n");
    }
    void install()
    {
        const UpdateInfo update = runTask(scheduler, updates->fetchLatest());
        const auto image =
            runTask(scheduler, updates->downloadUpdateDMG(update.cacheBustedDownloadURL(), [](double) {}));
        ASSERT_TRUE(updates->isGenuine(image->image(), update));
        runTask(scheduler, updates->stageAndScheduleRelaunch(image->image().path));
    }

    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    DownloadServer host;
    int terminations = 0;
    std::unique_ptr<HostedUpdates> updates;
};

TEST_F(HostedUpdatesTest, TheHostsUpdateTakesTheBundlesPlaceAndTheRelauncherWaitsForThisProcess)
{
    layWritingRelauncher();
    offer(sampleBundleImage());
    install();
    EXPECT_EQ(version(), "new");
    EXPECT_TRUE(QDir(downloads()).isEmpty());
    EXPECT_EQ(terminations, 0);
    ASSERT_TRUE(waitUntil([this] { return QFileInfo::exists(marker()); }));
    const QList<QByteArray> lines = contentOf(marker()).split('\n');
    EXPECT_THAT(lines, Contains("Pid:\t" + QByteArray::number(::getpid())));
    EXPECT_THAT(lines, Contains("HOME=" + home.path().toUtf8()));
    EXPECT_THAT(lines, Not(Contains("QT_PLUGIN_PATH=/old/plugins")));
    updates->terminate();
    EXPECT_EQ(terminations, 1);
}

TEST_F(HostedUpdatesTest, TheOldBundleIsKeptForAsLongAsItsProgramRuns)
{
    offer(sampleBundleImage());
    install();
    runTask(scheduler, updates->removeRemains());
    EXPECT_EQ(beside().size(), 1);
    make(); // a start of the new program
    runTask(scheduler, updates->removeRemains());
    EXPECT_THAT(beside(), IsEmpty());
    EXPECT_EQ(version(), "new");
}

TEST_F(HostedUpdatesTest, AnInstallationThatFailsSaysWhyAndLeavesNothing)
{
    offer(SampleArchive().file("Other.app/Contents/MacOS/Morvane", "new", 0755));
    try {
        install();
        FAIL() << "it was installed";
    } catch (const UpdateInstallError &error) {
        EXPECT_EQ(error.message(), u"The downloaded update did not contain the app."_s);
    }
    EXPECT_EQ(version(), "old");
    EXPECT_THAT(beside(), IsEmpty());
    EXPECT_TRUE(QDir(downloads()).isEmpty());
}

} // namespace
} // namespace morvane
