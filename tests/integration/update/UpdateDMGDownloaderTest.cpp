#include "update/UpdateDMGDownloader.h"

#include "async/Cancelled.h"
#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "support/DownloadServer.h"
#include "support/FileSteps.h"
#include "support/RunTask.h"
#include "support/SmallVolume.h"
#include "support/TemporaryHome.h"
#include "support/UnusedPort.h"
#include "support/WaitUntil.h"
#include "update/UpdateInstallError.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Each;
using testing::IsEmpty;

namespace morvane {
namespace {

using Fault = DownloadServer::Fault;

class UpdateDMGDownloaderTest : public testing::Test {
protected:
    UpdateDMGDownloaderTest()
    {
        QDir().mkpath(folder());
        host.setFile(u"/image"_s, {content});
    }
    ~UpdateDMGDownloaderTest() override { scheduler.shutdown(5s); }

    QString folder() const { return home.path(u"downloads"_s); }
    QStringList files() const
    {
        return QDir(folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    auto task(const QUrl &url)
    {
        return downloader.download(url, [this](double fraction) { fractions.append(fraction); });
    }
    std::shared_ptr<ImageFile> download(const QUrl &url) { return runTask(scheduler, task(url)); }
    std::shared_ptr<ImageFile> download() { return download(host.url(u"/image"_s)); }
    QString failure(const QUrl &url)
    {
        try {
            download(url);
        } catch (const UpdateInstallError &error) {
            EXPECT_THAT(files(), IsEmpty());
            return error.message();
        }
        return {};
    }
    QString failure() { return failure(host.url(u"/image"_s)); }

    const QByteArray content = QByteArray("image ").repeated(500'000);
    TemporaryHome home;
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    DownloadServer host;
    UpdateDMGDownloader downloader{http, folder()};
    QList<double> fractions;
};

TEST_F(UpdateDMGDownloaderTest, TheImageComesWholeAndHashed)
{
    {
        const auto file = download();
        EXPECT_EQ(home.read(u"downloads/"_s + files().value(0)), content);
        EXPECT_EQ(file->image().path, folder() + u'/' + files().value(0));
        EXPECT_EQ(file->image().sha256,
                  QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
        EXPECT_EQ(permissionBits(file->image().path), 0600U);
        EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
        EXPECT_EQ(fractions.constLast(), 1.0);
    }
    // The worker that has written its end may be the last to let go of it.
    EXPECT_TRUE(waitUntil([this] { return files().isEmpty(); }));
}

TEST_F(UpdateDMGDownloaderTest, NoProgramThatIsStartedMeanwhileHoldsTheImage)
{
    const auto file = download();
    int held = -1;
    for (const QString &name : QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System))
        if (QFile::symLinkTarget(u"/proc/self/fd/"_s + name) == file->image().path)
            held = name.toInt();
    ASSERT_GE(held, 0);
    EXPECT_EQ(::fcntl(held, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(UpdateDMGDownloaderTest, AnUnknownLengthGivesNoProgressUntilItIsDone)
{
    host.setFaults({{Fault::Kind::withoutLength}});
    const auto file = download();
    EXPECT_FALSE(fractions.isEmpty());
    EXPECT_THAT(fractions, Each(0.0));
    EXPECT_EQ(file->image().sha256, QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
}

TEST_F(UpdateDMGDownloaderTest, AnErrorPageIsAnImageOfAnotherHash)
{
    const auto file = download(host.url(u"/missing"_s));
    EXPECT_EQ(file->image().sha256, QCryptographicHash::hash("not here", QCryptographicHash::Sha256).toHex());
}

TEST_F(UpdateDMGDownloaderTest, ABrokenConnectionFailsOnceAndLeavesNothing)
{
    host.setFaults({{Fault::Kind::cutOff, 1'000'000}});
    EXPECT_EQ(failure(), u"The download failed: The connection was lost."_s);
    EXPECT_EQ(host.requests().size(), 1);
}

TEST_F(UpdateDMGDownloaderTest, AConnectionThatIsLostRightAtTheEndIsOneFailure)
{
    host.setFaults({{Fault::Kind::cutOff, content.size() - 1}});
    EXPECT_EQ(failure(), u"The download failed: The connection was lost."_s);
}

TEST_F(UpdateDMGDownloaderTest, TheImageIsAskedForAsItLiesThere)
{
    download();
    ASSERT_EQ(host.requests().size(), 1);
    EXPECT_EQ(host.requests().constFirst().headers.value("Accept-Encoding"), "identity");
}

TEST_F(UpdateDMGDownloaderTest, AnImageThatSaysThatItIsHugeIsNotFetched)
{
    RawHttpServer huge([](RawHttpConnection &connection) {
        if (!connection.readRequest())
            return;
        connection.send(rawHttpHead(200, {{"Content-Length", "4000000001"}}));
        connection.waitUntilClosedByPeer();
    });
    EXPECT_EQ(failure(huge.url(u"/image"_s)), u"The download failed: The server's answer is too large."_s);
    EXPECT_THAT(fractions, IsEmpty());
}

TEST_F(UpdateDMGDownloaderTest, AnImageThatTurnsOutToBeHugeIsNotFetchedToItsEnd)
{
    UpdateDMGDownloader careful(http, folder(), 1'000'000);
    host.setFaults({{Fault::Kind::withoutLength}});
    EXPECT_THROW(runTask(scheduler, careful.download(host.url(u"/image"_s), [](double) {})),
                 UpdateInstallError);
    EXPECT_THAT(files(), IsEmpty());
    host.setFile(u"/small"_s, {content.first(1'000'000)});
    EXPECT_TRUE(runTask(scheduler, careful.download(host.url(u"/small"_s), [](double) {})));
}

TEST_F(UpdateDMGDownloaderTest, AHostThatIsNotThereFails)
{
    EXPECT_EQ(failure(QUrl(u"http://127.0.0.1:%1/image"_s.arg(unusedPort()))),
              u"The download failed: The server could not be reached."_s);
}

TEST_F(UpdateDMGDownloaderTest, AFolderThatCannotBeWrittenIsTold)
{
    ASSERT_TRUE(QDir(folder()).removeRecursively());
    UpdateDMGDownloader elsewhere(http, folder());
    EXPECT_THROW(runTask(scheduler, elsewhere.download(host.url(u"/image"_s), [](double) {})),
                 UpdateInstallError);
    EXPECT_THAT(host.requests(), IsEmpty());
}

TEST_F(UpdateDMGDownloaderTest, AFullDiskIsTold)
{
    const SmallVolume volume(folder(), 1'000'000);
    ASSERT_TRUE(volume.isMounted());
    EXPECT_EQ(failure(), u"Could not save the downloaded update."_s);
}

TEST_F(UpdateDMGDownloaderTest, AnImageThatDoesNotReachTheDiskIsTold)
{
    const FileSteps steps(EIO);
    EXPECT_EQ(failure(), u"Could not save the downloaded update."_s);
}

TEST_F(UpdateDMGDownloaderTest, AnEndOfTheProgramLeavesNothing)
{
    host.setFaults({{Fault::Kind::stall, 1'000'000}});
    auto handle = scheduler.spawn(task(host.url(u"/image"_s)));
    ASSERT_TRUE(waitUntil([this] { return !fractions.isEmpty() && fractions.constLast() > 0.3; }));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    EXPECT_THAT(files(), IsEmpty());
}

} // namespace
} // namespace morvane
