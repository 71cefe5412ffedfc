#include "AttachmentFixture.h"

#include "async/Cancelled.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "attachments/AttachmentWorkers.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"
#include "support/SamplePictures.h"

#include <QDir>
#include <QFile>
#include <csignal>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

class AttachmentWorkersTest : public AttachmentFixture {
protected:
    ~AttachmentWorkersTest() override { scheduler.shutdown(5s); }

    /// A reader that tells that it runs and then waits for ever.
    ReaderProcess hangingReader()
    {
        const QString path =
            home.write(u"reader"_s, "#!/bin/sh\necho $$ > " + QFile::encodeName(home.path()) +
                                        "/pid.$$\nexec sleep 1000\n");
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return ReaderProcess(path, 1h);
    }
    qsizetype startedReaders() const { return QDir(home.path()).entryList({u"pid.*"_s}).size(); }
    QUrl picture(int number) const
    {
        return QUrl::fromLocalFile(home.write(u"%1.png"_s.arg(number), "bytes"));
    }

    FakeClock clock;
    Scheduler scheduler{clock};
};

TEST_F(AttachmentWorkersTest, FileIsProcessedOffTheMainThread)
{
    AttachmentWorkers workers(processor);
    const QUrl file =
        QUrl::fromLocalFile(home.write(u"a.png"_s, encoded(samplePhoto({2'000, 1'000}), "png")));
    const ChatAttachment attachment = runTask(scheduler, workers.process(file));
    EXPECT_EQ(attachment.mimeType, u"image/jpeg"_s);
}

TEST_F(AttachmentWorkersTest, APictureToLookAtComesAsPixels)
{
    AttachmentWorkers workers(processor);
    QImage photo({1'600, 800}, QImage::Format_RGB32);
    photo.fill(QColor(10, 200, 30));
    const QByteArray png = encoded(photo, "png");
    const QImage small = runTask(scheduler, workers.picture(png, PictureSize::thumbnail));
    EXPECT_EQ(small.size(), QSize(256, 128));
    EXPECT_EQ(small.pixelColor(100, 50), QColor(10, 200, 30));
    EXPECT_EQ(runTask(scheduler, workers.picture(png, PictureSize::preview)).size(), QSize(1'400, 700));
    const QByteArray tiny = encoded(photo.scaled(2, 1), "png");
    EXPECT_EQ(runTask(scheduler, workers.picture(tiny, PictureSize::thumbnail)).size(), QSize(2, 1));
    EXPECT_TRUE(runTask(scheduler, workers.picture(png.first(40), PictureSize::thumbnail)).isNull());
    EXPECT_TRUE(runTask(scheduler, workers.picture({}, PictureSize::preview)).isNull());
}

TEST_F(AttachmentWorkersTest, AnIconOfASiteIsSmallAndOfFewPixels)
{
    AttachmentWorkers workers(processor);
    QImage mark({128, 96}, QImage::Format_ARGB32);
    mark.fill(QColor(10, 200, 30));
    for (const char *format : {"ico", "png"}) {
        const QImage icon = runTask(scheduler, workers.picture(encoded(mark, format), PictureSize::icon));
        EXPECT_EQ(icon.size(), QSize(64, 48)) << format;
        EXPECT_EQ(icon.pixelColor(32, 24), QColor(10, 200, 30)) << format;
    }
    const QByteArray large = encoded(mark.scaled(1'025, 1'024), "png");
    EXPECT_TRUE(runTask(scheduler, workers.picture(large, PictureSize::icon)).isNull());
    EXPECT_FALSE(runTask(scheduler, workers.picture(large, PictureSize::thumbnail)).isNull());
}

TEST_F(AttachmentWorkersTest, FailureIsThrown)
{
    AttachmentWorkers workers(processor);
    const QUrl missing = QUrl::fromLocalFile(home.path(u"missing"_s));
    EXPECT_THROW(runTask(scheduler, workers.process(missing)), AttachmentError);
    EXPECT_THROW(runTask(scheduler, workers.processImage({}, u"a.png"_s)), AttachmentError);
}

TEST_F(AttachmentWorkersTest, SeveralFilesAreReadAtOnceAndKeepNoToolFromItsThread)
{
    AttachmentWorkers workers{AttachmentProcessor(hangingReader())};
    QList<TaskHandle<ChatAttachment>> tasks;
    for (int number = 0; number < 8; ++number)
        tasks.append(scheduler.spawn(workers.process(picture(number))));
    EXPECT_TRUE(waitUntil([&] { return startedReaders() >= 2; }));
    EXPECT_EQ(runTask(scheduler, runOffMain([] { return 42; })), 42);
    for (auto &task : tasks)
        task.cancel();
    EXPECT_TRUE(waitUntil([&] {
        return std::all_of(tasks.begin(), tasks.end(), [](const auto &task) { return task.done(); });
    }));
}

TEST_F(AttachmentWorkersTest, CancellingEndsTheReader)
{
    AttachmentWorkers workers{AttachmentProcessor(hangingReader())};
    auto task = scheduler.spawn(workers.process(picture(1)));
    ASSERT_TRUE(waitUntil([&] { return startedReaders() == 1; }));
    const QString name = QDir(home.path()).entryList({u"pid.*"_s}).constFirst();
    task.cancel();
    ASSERT_TRUE(waitUntil([&] { return task.done(); }));
    EXPECT_THROW(task.result(), Cancelled);
    EXPECT_NE(::kill(name.section(u'.', 1).toInt(), 0), 0);
}

TEST_F(AttachmentWorkersTest, ShutdownDoesNotWaitForAReaderThatHangs)
{
    AttachmentWorkers workers{AttachmentProcessor(hangingReader())};
    auto task = scheduler.spawn(workers.process(picture(1)));
    ASSERT_TRUE(waitUntil([&] { return startedReaders() == 1; }));
    scheduler.shutdown(5s);
    EXPECT_TRUE(task.done());
}

} // namespace
} // namespace morvane
