#include "update/UpdateChecker.h"

#include "async/Cancelled.h"
#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "support/DownloadServer.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"
#include "support/UnusedPort.h"
#include "update/UpdateCheckerError.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Each;

namespace morvane {
namespace {

using Fault = DownloadServer::Fault;

class UpdateCheckerTest : public testing::Test {
protected:
    UpdateCheckerTest() { offer(manifest(host.origin())); }
    ~UpdateCheckerTest() override { scheduler.shutdown(5s); }

    static QByteArray manifest(const QString &origin)
    {
        return R"({"version": "1.3", "build": 7, "date": "today", "dmg": ")" + origin.toUtf8() +
               R"(/downloads/image", "sha256": "ab", "notes": []})";
    }
    void offer(const QByteArray &content) { host.setFile(u"/downloads/latest.json"_s, {content}); }

    /// Fetches from `origin`; the second between two attempts passes at once.
    UpdateInfo fetch(const QString &origin)
    {
        UpdateChecker checker(http, {origin, origin, {}});
        auto task = scheduler.spawn(checker.fetchLatest());
        if (!waitUntil([&] { return task.done() || clock.pendingTimers() > 0; }))
            throw std::runtime_error("nothing happens");
        if (!task.done()) {
            EXPECT_THAT(clock.requestedDelays(), Each(1s));
            clock.advance(1s);
        }
        if (!waitUntil([&] { return task.done(); }))
            throw std::runtime_error("the check does not end");
        return task.result();
    }
    UpdateInfo fetch() { return fetch(host.origin()); }

    FakeClock clock;
    Scheduler scheduler{clock};
    HttpClient http;
    DownloadServer host;
};

TEST_F(UpdateCheckerTest, TheManifestIsAskedForWithoutACache)
{
    EXPECT_EQ(fetch().version, u"1.3"_s);
    ASSERT_EQ(host.requests().size(), 1);
    EXPECT_EQ(host.requests().constFirst().target, "/downloads/latest.json");
    EXPECT_EQ(host.requests().constFirst().headers.value("Cache-Control"), "no-cache");
}

TEST_F(UpdateCheckerTest, ASecondAttemptMayBringIt)
{
    host.setFaults({{Fault::Kind::status, 503}});
    EXPECT_EQ(fetch().version, u"1.3"_s);
    EXPECT_EQ(host.requests().size(), 2);
    host.setFaults({{Fault::Kind::cutOff, 10}});
    EXPECT_EQ(fetch().version, u"1.3"_s);
    EXPECT_EQ(host.requests().size(), 4);
}

TEST_F(UpdateCheckerTest, ThereIsNoThirdAttempt)
{
    host.setFaults({{Fault::Kind::status, 503}, {Fault::Kind::status, 404}});
    EXPECT_THROW(fetch(), UpdateCheckerError);
    EXPECT_EQ(host.requests().size(), 2);
}

TEST_F(UpdateCheckerTest, WhatIsNoManifestIsABadResponse)
{
    for (const QByteArray &content :
         {QByteArray("<html>"), QByteArray("{}"), QByteArray(), manifest(u"ftp://x"_s)}) {
        offer(content);
        try {
            UpdateChecker checker(http, {host.origin(), host.origin(), {}});
            auto task = scheduler.spawn(checker.fetchLatest());
            ASSERT_TRUE(waitUntil([this] { return clock.pendingTimers() > 0; }));
            clock.advance(1s);
            ASSERT_TRUE(waitUntil([&task] { return task.done(); }));
            task.result();
            FAIL() << content.toStdString();
        } catch (const UpdateCheckerError &error) {
            EXPECT_EQ(error.message(),
                      u"Could not reach the update server. Check your internet connection and try again."_s);
        }
    }
}

TEST_F(UpdateCheckerTest, AnImageFromAnotherPlaceWithoutEncryptionIsRefused)
{
    offer(manifest(u"http://elsewhere.example"_s));
    EXPECT_THROW(fetch(), UpdateCheckerError);
    offer(manifest(u"https://elsewhere.example"_s));
    EXPECT_EQ(fetch().url(), QUrl(u"https://elsewhere.example/downloads/image"_s));
}

TEST_F(UpdateCheckerTest, AManifestOfMoreThanAMegabyteIsNotRead)
{
    offer(manifest(host.origin()) + QByteArray(2'000'000, ' '));
    EXPECT_THROW(fetch(), TransportError);
}

TEST_F(UpdateCheckerTest, AManifestWithoutAnEndIsNotReadOn)
{
    RawHttpServer endless([](RawHttpConnection &connection) {
        if (!connection.readRequest())
            return;
        connection.send(rawHttpHead(200, {{"Transfer-Encoding", "chunked"}}));
        while (connection.sendChunk(QByteArray(64 * 1024, ' ')))
            ;
    });
    EXPECT_THROW(fetch(u"http://127.0.0.1:%1"_s.arg(endless.port())), TransportError);
    EXPECT_LT(endless.sentBytes(), 100'000'000);
}

TEST_F(UpdateCheckerTest, AManifestThatComesWithAnErrorStatusIsNone)
{
    RawHttpServer broken(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(500, manifest(u"https://updates.example"_s)); }));
    EXPECT_THROW(fetch(u"http://127.0.0.1:%1"_s.arg(broken.port())), UpdateCheckerError);
}

TEST_F(UpdateCheckerTest, AnEndOfTheProgramEndsTheCheckAtOnce)
{
    host.setFaults({{Fault::Kind::stall, 10}});
    UpdateChecker checker(http, {host.origin(), host.origin(), {}});
    auto task = scheduler.spawn(checker.fetchLatest());
    ASSERT_TRUE(waitUntil([this] { return host.requests().size() == 1; }));
    task.cancel();
    ASSERT_TRUE(waitUntil([&] { return task.done() || clock.pendingTimers() > 0; }));
    ASSERT_TRUE(task.done());
    EXPECT_THROW(task.result(), Cancelled);
}

TEST_F(UpdateCheckerTest, AHostThatIsNotThereIsATransportError)
{
    EXPECT_THROW(fetch(u"http://127.0.0.1:%1"_s.arg(unusedPort())), TransportError);
}

} // namespace
} // namespace morvane
