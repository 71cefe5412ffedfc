#include "browser/tabs/Downloads.h"

#include "BrowserFixture.h"

#include "support/FakePageDownload.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

namespace morvane {
namespace {

class OfferedFile final : public PageDownload {
public:
    explicit OfferedFile(QString name = "disk.img") : m_name(std::move(name)) {}

    QString suggestedFileName() const override { return m_name; }
    QString site() const override { return "a.test"; }
    void accept(const QString &path) override { answer = path; }
    void cancel() override { answer = "cancelled"; }
    qint64 receivedBytes() const override { return 5; }
    qint64 totalBytes() const override { return -1; }

    QString answer;

private:
    QString m_name;
};

class DownloadsTest : public BrowserFixture {
protected:
    DownloadsTest()
    {
        manager.makeWindowIfNeeded();
        spoken();
    }

    std::shared_ptr<OfferedFile> offer(const QString &name = "disk.img")
    {
        auto file = std::make_shared<OfferedFile>(name);
        Q_EMIT page().downloadRequested(file);
        return file;
    }
    /// The user answers the question that was asked last.
    void choose(const QString &path) { window.destinations.last()(path); }

    Downloads &downloads = manager.downloads();
};

TEST_F(DownloadsTest, TheUserSaysWhereAFileGoes)
{
    const auto file = offer();
    EXPECT_EQ(window.asked, QStringList("where to write disk.img of a.test"));
    EXPECT_EQ(file->answer, "");
    EXPECT_TRUE(downloads.running().isEmpty());
    choose("/home/me/disk.img");
    EXPECT_EQ(file->answer, "/home/me/disk.img");
    EXPECT_EQ(spoken(), QStringList("Download started: disk.img"));
    ASSERT_EQ(downloads.running().size(), 1);
    const QSignalSpy changes(&downloads, &Downloads::changed);
    Q_EMIT file->progressed();
    EXPECT_EQ(changes.size(), 1);
    Q_EMIT file->finished();
    EXPECT_EQ(spoken(), QStringList("Download complete."));
    EXPECT_TRUE(downloads.running().isEmpty());
    EXPECT_EQ(changes.size(), 2);
}

TEST_F(DownloadsTest, AnUnwantedFileIsCancelled)
{
    const auto file = offer();
    choose("");
    EXPECT_EQ(file->answer, "cancelled");
    EXPECT_EQ(spoken(), QStringList("Download cancelled."));
}

TEST_F(DownloadsTest, OneDoesNotTakeThePlaceOfAnotherThatIsStillWritten)
{
    const auto first = offer("disk.tar.gz");
    choose("/home/me/disk.tar.gz");
    const auto second = offer("disk.tar.gz");
    EXPECT_EQ(window.asked.last(), "where to write disk.tar (2).gz of a.test");
    choose("/home/me/disk.tar (2).gz");
    const auto third = offer("disk.tar.gz");
    EXPECT_EQ(window.asked.last(), "where to write disk.tar (3).gz of a.test");
    spoken();
    choose("/home/me/disk.tar.gz");
    EXPECT_EQ(spoken(), QStringList("Another download is written there."));
    EXPECT_EQ(third->answer, "");
    EXPECT_EQ(window.asked.size(), 4);
    Q_EMIT first->finished();
    choose("/home/me/disk.tar.gz");
    EXPECT_EQ(third->answer, "/home/me/disk.tar.gz");
    EXPECT_EQ(second->answer, "/home/me/disk.tar (2).gz");
}

TEST_F(DownloadsTest, APlaceIsTheSameHoweverItIsSpelled)
{
    const TemporaryHome home;
    ASSERT_TRUE(QDir(home.path()).mkpath("files/below"));
    ASSERT_TRUE(QFile::link(home.path("files"), home.path("link")));
    offer();
    choose(home.path("files/disk.img"));
    const auto second = offer();
    for (const QString &spelling : {"link/disk.img", "files/below/../disk.img", "files/./disk.img"}) {
        spoken();
        choose(home.path(spelling));
        EXPECT_EQ(spoken(), QStringList("Another download is written there.")) << spelling.toStdString();
        EXPECT_EQ(second->answer, "");
    }
    choose(home.path("files/below/disk.img"));
    EXPECT_EQ(second->answer, home.path("files/below/disk.img"));
}

TEST_F(DownloadsTest, APlaceThatIsTakenIsAProblemUntilTheQuestionIsAnswered)
{
    offer();
    choose("/x");
    EXPECT_EQ(downloads.problem(), "");
    const QSignalSpy changes(&downloads, &Downloads::changed);
    for (const QString &answer : {QString(), QString("/y")}) {
        offer();
        choose("/x");
        EXPECT_EQ(downloads.problem(), "Another download is written there.");
        choose(answer);
        EXPECT_EQ(downloads.problem(), "");
    }
    EXPECT_GE(changes.size(), 4);
    offer();
    choose("/x");
    manager.windowClosed();
    EXPECT_EQ(downloads.problem(), "");
}

TEST_F(DownloadsTest, AFailureIsToldWithItsReason)
{
    const auto file = offer();
    choose("/x");
    spoken();
    Q_EMIT file->failed("The disk is full.");
    Q_EMIT file->failed("The disk is full.");
    EXPECT_EQ(spoken(), QStringList("Download failed: The disk is full."));
    EXPECT_TRUE(downloads.running().isEmpty());
}

TEST_F(DownloadsTest, OneIsAskedAboutAtATimeAndTooManyAreRefused)
{
    QList<std::shared_ptr<OfferedFile>> files;
    for (int i = 0; i < 7; ++i)
        files.append(offer(QString::number(i)));
    EXPECT_EQ(window.destinations.size(), 1);
    EXPECT_EQ(files[4]->answer, "");
    EXPECT_EQ(files[5]->answer, "cancelled");
    EXPECT_EQ(files[6]->answer, "cancelled");
    choose("/0");
    EXPECT_EQ(window.destinations.size(), 2);
    EXPECT_EQ(window.asked.last(), "where to write 1 of a.test");
    window.destinations.first()("/again");
    EXPECT_EQ(files[0]->answer, "/0") << "a question is answered once";
    EXPECT_EQ(downloads.running().size(), 1);
}

TEST_F(DownloadsTest, ASiteThatGoesOnOfferingIsRefusedUntilAnAddressIsGiven)
{
    for (int i = 0; i < 2; ++i) {
        offer();
        choose("");
    }
    offer();
    const auto waiting = offer("waiting");
    spoken();
    choose("");
    EXPECT_EQ(waiting->answer, "cancelled");
    EXPECT_EQ(spoken(), QStringList({"Download cancelled.",
                                     "Files from a.test are refused until an address is opened."}));
    EXPECT_EQ(offer()->answer, "cancelled");
    EXPECT_EQ(window.destinations.size(), 3);
    scheduler.spawn(manager.operations().browserOpen("a.test"));
    settle();
    offer();
    EXPECT_EQ(window.destinations.size(), 4);
    choose("/x");
    offer();
    choose("");
    EXPECT_EQ(offer()->answer, "") << "an agreement lets a site go on";
}

TEST_F(DownloadsTest, SiteAfterSiteIsRefusedInTheEnd)
{
    const auto offerFrom = [this](const QString &site) {
        const auto file = std::make_shared<FakePageDownload>("disk.img", site);
        Q_EMIT page().downloadRequested(file);
        return file;
    };
    for (const auto *site : {"a.test", "b.test", "c.test", "d.test", "e.test", "f.test"}) {
        EXPECT_TRUE(offerFrom(site)->log.isEmpty());
        choose("");
    }
    EXPECT_EQ(spoken().last(), "Files from all sites are refused until an address is opened.");
    EXPECT_EQ(offerFrom("g.test")->log, QStringList("cancel"));
    manager.forgetRefusals();
    EXPECT_TRUE(offerFrom("g.test")->log.isEmpty());
}

TEST_F(DownloadsTest, WithTheWindowItsQuestionGoesAndTheRunningGoOn)
{
    const auto running = offer("running");
    choose("/x");
    const auto asked = offer("asked");
    const auto waiting = offer("waiting");
    spoken();
    manager.windowClosed();
    EXPECT_EQ(asked->answer, "cancelled");
    EXPECT_EQ(waiting->answer, "cancelled");
    EXPECT_EQ(spoken(), QStringList("Download cancelled."));
    EXPECT_EQ(downloads.running().size(), 1);
    choose("/late");
    EXPECT_EQ(asked->answer, "cancelled");
    const auto unseen = offer("unseen");
    EXPECT_EQ(unseen->answer, "cancelled") << "there is nobody to ask";
    Q_EMIT running->finished();
    EXPECT_TRUE(downloads.running().isEmpty());
}

} // namespace
} // namespace morvane
