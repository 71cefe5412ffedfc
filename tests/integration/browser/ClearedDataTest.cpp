#include "EngineFixture.h"

#include "support/FileSteps.h"
#include "support/LogRecorder.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <algorithm>
#include <cerrno>

namespace morvane {
namespace {

/// What a user meets who goes on while browsing data is cleared.
class ClearedDataTest : public EngineFixture {
protected:
    ClearedDataTest()
    {
        HttpHeaders headers;
        headers.set("Content-Type", "text/html");
        headers.set("Cache-Control", "max-age=9999");
        server.answer("/kept", rawHttpResponse(200, "<title>Kept</title>", headers));
        server.page("/other", "<title>Other</title>");
    }

    qsizetype timesAsked(const QString &path) const { return server.requests(path).size(); }
    bool isAsked(const QString &path, qsizetype times)
    {
        return waitUntil([&] { return timesAsked(path) == times; });
    }
    /// Of which the rest never comes; the user is asked where it should go.
    void offerUnfinishedFile()
    {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        headers.set("Content-Length", "100000");
        server.answer("/file", rawHttpHead(200, headers) + QByteArray(5000, 'x'));
        server.stayOpenAfter("/file");
        page().load(server.url("/file"));
        ASSERT_TRUE(waitUntil([this] { return window.destinations.size() == 1; }));
    }
    static QStringList caches() { return QDir(folder()).entryList({"Cache*"}, QDir::Dirs); }
};

TEST_F(ClearedDataTest, WhatCannotBeNotedForTheNextStartIsTold)
{
    const LogRecorder log;
    {
        const FileSteps disk(EIO);
        engine().removeAllSiteData();
    }
    EXPECT_TRUE(
        log.lines().contains("morvane.browser.engine: what sites have stored stays after the next start: "
                             "\"Input/output error\""))
        << log.lines().join('\n').toStdString();
}

TEST_F(ClearedDataTest, WhatTheCacheHeldIsAskedForAnew)
{
    open("/kept");
    open("/other");
    open("/kept");
    EXPECT_EQ(timesAsked("/kept"), 1);
    const QStringList before = caches();
    engine().removeAllSiteData();
    open("/kept");
    EXPECT_EQ(timesAsked("/kept"), 2);
    open("/other");
    open("/kept");
    EXPECT_EQ(timesAsked("/kept"), 2) << "and kept again";
    ASSERT_EQ(before.size(), 1);
    EXPECT_TRUE(waitUntil([&] {
        const QDir old(folder() + "/" + before.first() + "/Cache/Cache_Data");
        return old.entryList({"*_0", "*_s"}, QDir::Files).isEmpty();
    }));
}

TEST_F(ClearedDataTest, ALoadThatBeginsWithItIsNotLost)
{
    for (int round = 0; round < 20; ++round) {
        const QString path = QString("/round%1").arg(round);
        server.keepWaiting(path);
        engine().removeAllSiteData();
        page().load(server.url(path));
        ASSERT_TRUE(isAsked(path, 1));
        server.page(path, "<title>Arrived</title>");
        ASSERT_TRUE(arrives(path)) << round;
        ASSERT_EQ(tab().title(), "Arrived");
    }
}

TEST_F(ClearedDataTest, ALoadUnderWayIsBegunOnceMore)
{
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(isAsked("/slow", 1));
    engine().removeAllSiteData();
    ASSERT_TRUE(isAsked("/slow", 2));
    server.page("/slow", "<title>Slow</title>");
    EXPECT_TRUE(arrives("/slow"));
    EXPECT_EQ(tab().title(), "Slow");
    EXPECT_EQ(visits.size(), 1);
    EXPECT_FALSE(announcer.spoken.join('|').contains("Failed")) << announcer.spoken.join('|').toStdString();
}

TEST_F(ClearedDataTest, AFolderThatWasLeftIsNotTakenForTheNewCache)
{
    constexpr int mostLeft = 50; // more than the tests before have taken
    for (int number = 1; number <= mostLeft; ++number)
        QDir(folder()).mkdir(QString("Cache-%1").arg(number));
    const QStringList before = caches();
    engine().removeAllSiteData();
    open("/kept");
    const auto isNew = [&](const QString &name) { return !before.contains(name); };
    EXPECT_TRUE(waitUntil([&] { return std::ranges::any_of(caches(), isNew); }));
}

TEST_F(ClearedDataTest, ALoadOfTheSameMomentArrives)
{
    for (const QString &path : {"/one", "/two"}) {
        server.page(path, "<title>Arrived</title>");
        page().load(server.url(path));
        engine().removeAllSiteData();
        EXPECT_TRUE(page().isLoading());
        EXPECT_TRUE(arrives(path));
        EXPECT_EQ(tab().title(), "Arrived");
    }
    // Its end was not taken for that of another.
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(isAsked("/slow", 1));
    page().stop();
    EXPECT_TRUE(waitUntil([this] { return !page().isLoading(); }));
}

TEST_F(ClearedDataTest, ALoadThatTheUserStopsIsNotBegunOnceMore)
{
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(isAsked("/slow", 1));
    engine().removeAllSiteData();
    page().stop();
    EXPECT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    open("/other");
    EXPECT_EQ(timesAsked("/slow"), 1);
}

TEST_F(ClearedDataTest, TwiceIsAsOnce)
{
    server.keepWaiting("/slow");
    page().load(server.url("/slow"));
    ASSERT_TRUE(isAsked("/slow", 1));
    engine().removeAllSiteData();
    engine().removeAllSiteData();
    ASSERT_TRUE(waitUntil([this] { return timesAsked("/slow") >= 2; }));
    const qsizetype before = timesAsked("/slow");
    engine().removeAllSiteData();
    EXPECT_TRUE(page().isLoading()) << "the end of the load before is not that of this one";
    ASSERT_TRUE(waitUntil([&] { return timesAsked("/slow") > before; }));
    server.page("/slow", "<title>Slow</title>");
    EXPECT_TRUE(arrives("/slow"));
    EXPECT_EQ(visits.size(), 1);
}

TEST_F(ClearedDataTest, AStepBackUnderWayIsBegunOnceMore)
{
    HttpHeaders headers;
    headers.set("Content-Type", "text/html");
    headers.set("Cache-Control", "no-store");
    server.answer("/slow", rawHttpResponse(200, "<title>Slow</title>", headers));
    open("/slow");
    open("/other");
    server.keepWaiting("/slow");
    page().goBack();
    ASSERT_TRUE(waitUntil([this] { return page().isLoading(); }));
    ASSERT_TRUE(isAsked("/slow", 2));
    engine().removeAllSiteData();
    ASSERT_TRUE(isAsked("/slow", 3));
    server.page("/slow", "<title>Slow</title>");
    EXPECT_TRUE(arrives("/slow"));
    EXPECT_FALSE(page().canGoBack());
    EXPECT_TRUE(page().canGoForward());
}

TEST_F(ClearedDataTest, AFormUnderWayIsNotSentTwiceButToldToHaveFailed)
{
    server.keepWaiting("/slow");
    show("<form method=post action=/slow><button>Send</button></form>");
    runInPage("document.forms[0].submit()");
    ASSERT_TRUE(isAsked("/slow", 1));
    announcer.spoken.clear();
    engine().removeAllSiteData();
    EXPECT_FALSE(page().isLoading());
    EXPECT_EQ(announcer.spoken,
              QStringList("Failed to load: The connection ended when browsing data was cleared."));
    EXPECT_EQ(page().address(), server.url("/page"));
    EXPECT_TRUE(open("/other").startsWith("Page: Other\n"));
    EXPECT_EQ(timesAsked("/slow"), 1);
}

TEST_F(ClearedDataTest, APageThatIsThereInPartEnds)
{
    server.keepWaiting("/picture");
    server.page("/part", "<title>Part</title><p>words<img src=/picture>");
    page().load(server.url("/part"));
    ASSERT_TRUE(isAsked("/picture", 1));
    ASSERT_TRUE(waitUntil([this] { return page().address() == server.url("/part"); }));
    announcer.spoken.clear();
    engine().removeAllSiteData();
    EXPECT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    EXPECT_TRUE(
        announcer.spoken.contains("Failed to load: The connection ended when browsing data was cleared."))
        << announcer.spoken.join('|').toStdString();
    EXPECT_TRUE(read().contains("words"));
}

TEST_F(ClearedDataTest, TheStartPageAndAPageThatIsThereHearNothing)
{
    engine().removeAllSiteData();
    manager->newTab();
    engine().removeAllSiteData();
    EXPECT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    show("<p>x");
    announcer.spoken.clear();
    engine().removeAllSiteData();
    EXPECT_EQ(value("1 + 1").toInt(), 2);
    EXPECT_EQ(announcer.spoken, QStringList());
}

TEST_F(ClearedDataTest, AFileThatIsBeingWrittenComesToAnEnd)
{
    const TemporaryHome home;
    offerUnfinishedFile();
    window.destinations.last()(home.path("file.bin"));
    ASSERT_TRUE(waitUntil([this] { return !manager->downloads().running().isEmpty(); }));
    engine().removeAllSiteData();
    EXPECT_TRUE(waitUntil([this] { return manager->downloads().running().isEmpty(); }))
        << announcer.spoken.join('|').toStdString();
    EXPECT_EQ(announcer.spoken.last(),
              "Download failed: The connection ended when browsing data was cleared.");
}

TEST_F(ClearedDataTest, AFileThatNobodyHasAcceptedYetFailsWhenSomebodyDoes)
{
    const TemporaryHome home;
    offerUnfinishedFile();
    engine().removeAllSiteData();
    window.destinations.last()(home.path("file.bin"));
    EXPECT_EQ(announcer.spoken.last(),
              "Download failed: The connection ended when browsing data was cleared.");
    EXPECT_TRUE(manager->downloads().running().isEmpty());
}

} // namespace
} // namespace morvane
