#include "EngineFixture.h"

#include "support/SmallVolume.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <atomic>

namespace morvane {
namespace {

/// Files that the real engine is given.
class EngineDownloadTest : public EngineFixture {
protected:
    /// Waits for a question of the window's; where a file is to go is answered until then.
    bool isAsked(const QString &question)
    {
        return waitUntil([&] {
            for (const auto &answer : std::exchange(window.destinations, {}))
                answer({});
            return window.asked.contains(question);
        });
    }
};

TEST_F(EngineDownloadTest, ADownloadGoesWhereTheUserSaysAndNowhereElse)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    headers.set("Content-Disposition", "attachment; filename=\"../../../.bashrc\"");
    server.answer("/file", rawHttpResponse(200, QByteArray(5000, 'x'), headers));
    const TemporaryHome home;
    open("/file");
    ASSERT_EQ(window.destinations.size(), 1);
    EXPECT_TRUE(window.asked.last() == "where to write bashrc of 127.0.0.1" ||
                window.asked.last() == "where to write _bashrc of 127.0.0.1")
        << window.asked.last().toStdString();
    window.destinations.last()(home.path("chosen.bin"));
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.contains("Download complete."); }));
    QFile file(home.path("chosen.bin"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray(5000, 'x'));
    EXPECT_FALSE(announcer.spoken.join(' ').contains("Failed to load"));
}

/// With so many bytes a download stops until it is wanted; some may come before it has.
constexpr qint64 mostUnasked = 8 * 1024 * 1024;

TEST_F(EngineDownloadTest, ALargeDownloadWaitsForItsPlaceAndIsWhole)
{
    const QByteArray half = QByteArray("0123456789abcdef").repeated(800'000);
    std::atomic<bool> goesOn = false;
    RawHttpServer slow([&](RawHttpConnection &connection) {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        headers.set("Content-Length", QByteArray::number(2 * half.size()));
        if (connection.readRequest() && connection.send(rawHttpHead(200, headers) + half) &&
            connection.waitUntil([&goesOn] { return goesOn.load(); }) && connection.send(half))
            connection.waitUntilClosedByPeer();
    });
    std::shared_ptr<PageDownload> download;
    QObject::connect(&page(), &WebPage::downloadRequested, [&](const auto &offered) { download = offered; });
    const TemporaryHome home;
    page().load(slow.url("/large"));
    ASSERT_TRUE(waitUntil([&] { return download && download->receivedBytes() > mostUnasked; }));
    settle(); // it is paused by now
    goesOn = true;
    window.destinations.last()(home.path("large.bin"));
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.contains("Download complete."); }));
    QFile file(home.path("large.bin"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), half + half);
}

TEST_F(EngineDownloadTest, OfAFileThatNobodyHasAcceptedTheRestIsNotFetched)
{
    const QByteArray part(16 * 1024 * 1024, 'x');
    constexpr int parts = 4;
    std::atomic<bool> goesOn = false;
    RawHttpServer slow([&](RawHttpConnection &connection) {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        headers.set("Content-Length", QByteArray::number(parts * part.size()));
        if (connection.readRequest() && connection.send(rawHttpHead(200, headers) + part) &&
            connection.waitUntil([&goesOn] { return goesOn.load(); }) &&
            connection.send(part.repeated(parts - 1)))
            connection.waitUntilClosedByPeer();
    });
    server.page("/other", "<title>Other</title>");
    std::shared_ptr<PageDownload> download;
    QObject::connect(&page(), &WebPage::downloadRequested, [&](const auto &offered) { download = offered; });
    page().load(slow.url("/large"));
    ASSERT_TRUE(waitUntil([&] { return download && download->receivedBytes() > mostUnasked; }));
    settle(); // it is paused by now
    goesOn = true;
    // The time that this takes would be more than enough.
    for (int times = 0; times < 3; ++times)
        open("/other");
    EXPECT_LT(download->receivedBytes(), parts * part.size());
}

TEST_F(EngineDownloadTest, ATruncatedDownloadIsAFailure)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    headers.set("Content-Length", "100000");
    PageServer cut;
    cut.answer("/file", rawHttpHead(200, headers) + QByteArray(5000, 'x'));
    cut.closeAfter("/file");
    const TemporaryHome home;
    page().load(cut.url("/file"));
    ASSERT_TRUE(waitUntil([this] { return window.destinations.size() == 1; }));
    window.destinations.last()(home.path("cut.bin"));
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.join('|').contains("Download failed: "); }))
        << announcer.spoken.join('|').toStdString();
    EXPECT_FALSE(announcer.spoken.contains("Download complete."));
}

TEST_F(EngineDownloadTest, AFileForAnotherDiskTouchesNothingBesideItsPlace)
{
    const TemporaryHome home;
    ASSERT_TRUE(QDir(home.path()).mkpath("disk"));
    const SmallVolume disk(home.path("disk"), 1'000'000);
    ASSERT_TRUE(disk.isMounted());
    home.write("disk/file.part", "the user's own");
    const auto take = [&](const QString &name, qsizetype size) {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        server.answer("/" + name.toLatin1(), rawHttpResponse(200, QByteArray(size, 'x'), headers));
        page().load(server.url("/" + name));
        EXPECT_TRUE(
            waitUntil([&] { return window.asked.contains("where to write " + name + " of 127.0.0.1"); }));
        announcer.spoken.clear();
        window.destinations.last()(home.path("disk/" + name));
        EXPECT_TRUE(waitUntil([this] { return manager->downloads().running().isEmpty(); }));
        return announcer.spoken.last();
    };
    EXPECT_EQ(take("file", 5000), "Download complete.");
    EXPECT_EQ(home.read("disk/file"), QByteArray(5000, 'x'));
    EXPECT_EQ(home.read("disk/file.part"), "the user's own");
    EXPECT_EQ(take("large", 2'000'000), "Download failed: The file could not be written there.");
    EXPECT_EQ(QDir(home.path("disk")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList({"file", "file.part"}));
}

TEST_F(EngineDownloadTest, AFileWhosePageIsGoneIsOfferedAllTheSame)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    server.keepWaiting("/file");
    show("<a download='late.txt' href=/file>save</a>");
    EXPECT_EQ(click(1), "Clicked 'save'.");
    ASSERT_TRUE(waitUntil([this] { return !server.requests("/file").isEmpty(); }));
    manager->closeTab(manager->activeTabID());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    server.answer("/file", rawHttpResponse(200, "x", headers));
    EXPECT_TRUE(isAsked("where to write late.txt of 127.0.0.1"));
}

TEST_F(EngineDownloadTest, AFileThatAPageHasMadeNamesItsSite)
{
    show("<a download='made.txt'>save</a><script>document.querySelector('a').href = URL.createObjectURL(new "
         "Blob(['words']))</script>");
    EXPECT_EQ(click(1), "Clicked 'save'.");
    EXPECT_TRUE(isAsked("where to write made.txt of 127.0.0.1"));
}

TEST_F(EngineDownloadTest, AFileThatIsNotWantedAnyMoreIsNotFetchedAnyMore)
{
    std::atomic<bool> isClosed = false;
    RawHttpServer slow([&isClosed](RawHttpConnection &connection) {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        headers.set("Content-Length", "100000");
        if (connection.readRequest() && connection.send(rawHttpHead(200, headers) + QByteArray(5000, 'x')))
            isClosed = connection.waitUntilClosedByPeer();
    });
    const TemporaryHome home;
    page().load(slow.url("/file"));
    ASSERT_TRUE(waitUntil([this] { return window.destinations.size() == 1; }));
    window.destinations.last()(home.path("file"));
    announcer.spoken.clear();
    manager->downloads().running().first()->cancel();
    EXPECT_TRUE(waitUntil([&] { return isClosed.load(); }));
    EXPECT_EQ(announcer.spoken, QStringList("Download cancelled."));
    EXPECT_TRUE(manager->downloads().running().isEmpty());
    EXPECT_FALSE(QFile::exists(home.path("file")));
}

TEST_F(EngineDownloadTest, ALongNameIsCutBetweenCharacters)
{
    constexpr int mostThatFit = 48; // of four bytes each, behind one
    const QString face = QString::fromUcs4(U"\U0001F600");
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    server.answer("/file", rawHttpResponse(200, "x", headers));
    show("<a download='x" + face.repeated(60).toUtf8() + ".txt' href=/file>save</a>");
    EXPECT_EQ(click(1), "Clicked 'save'.");
    EXPECT_TRUE(isAsked("where to write x" + face.repeated(mostThatFit) + ".txt of 127.0.0.1"))
        << window.asked.join('|').toStdString();
}

TEST_F(EngineDownloadTest, WhatAProgramThatWasKilledHadFetchedIsGone)
{
    EXPECT_TRUE(QDir(folder() + "/Downloads").exists());
    EXPECT_FALSE(QFile::exists(folder() + "/Downloads/left"));
}

TEST_F(EngineDownloadTest, WhatTheEngineIsToldByTheEnvironmentGoesNoFurther)
{
    EXPECT_FALSE(qEnvironmentVariableIsSet("QTWEBENGINE_ENABLE_LINUX_ACCESSIBILITY"));
    EXPECT_FALSE(qgetenv("QTWEBENGINE_CHROMIUM_FLAGS").contains("--proxy-server"));
}

} // namespace
} // namespace morvane
