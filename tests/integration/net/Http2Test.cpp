#include "integration/net/NetFixture.h"
#include "support/TlsServer.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class Http2Test : public NetTest {
protected:
    static constexpr int lineCount = 500000;

    TestCertificate certificate{u"IP:127.0.0.1"_s};
    TlsServer server{TlsServer::Protocol::http2, certificate};
    HttpClient client2{optionsTrusting(certificate)};

    void SetUp() override
    {
        ASSERT_TRUE(server.isRunning());
        server.addFile(u"lines"_s, QByteArray("data: 0123456789\n").repeated(lineCount));
        server.addFile(u"page"_s, "small");
    }

    static HttpClientOptions optionsTrusting(const TestCertificate &trusted)
    {
        HttpClientOptions options;
        options.trustedCertificates = trusted.certificateFile();
        return options;
    }

    static Task<int> countLines(LineReader *reader)
    {
        int count = 0;
        while (co_await reader->next())
            ++count;
        co_return count;
    }
    static Task<bool> takeOne(LineReader *reader) { co_return (co_await reader->next()).has_value(); }

    LineReader openLines() { return runTask(scheduler, client2.open(get(server.url("lines")))).lines(); }
    FetchResult fetch2(HttpRequest request)
    {
        return runTask(scheduler, client2.fetch(std::move(request), ampleBytes));
    }
};

TEST_F(Http2Test, HeadAndBody)
{
    const FetchResult result = fetch2(get(server.url("page")));
    EXPECT_EQ(result.status, 200);
    EXPECT_EQ(result.body, "small");
    EXPECT_EQ(result.headers.value("content-length"), "5");
    EXPECT_EQ(fetch2(get(server.url("missing"))).status, 404);
}

TEST_F(Http2Test, LargeUploadComesBackWhole)
{
    QByteArray body;
    while (body.size() < 20 * 1000 * 1000)
        body += QByteArray::number(body.size()) + ' ';
    EXPECT_TRUE(fetch2(post(server.url("echo"), body)).body == body);
}

TEST_F(Http2Test, ManyLines)
{
    LineReader reader = openLines();
    EXPECT_EQ(runTask(scheduler, countLines(&reader)), lineCount);
}

TEST_F(Http2Test, PausedStreamsNeitherHoldUpOthersNorGetStuck)
{
    std::vector<LineReader> readers;
    for (int i = 0; i < 5; ++i) {
        readers.push_back(openLines());
        ASSERT_TRUE(runTask(scheduler, takeOne(&readers.back())));
    }
    EXPECT_EQ(fetch2(get(server.url("page"))).body, "small");
    {
        std::vector<LineReader> dropped;
        for (int i = 0; i < 5; ++i) {
            dropped.push_back(openLines());
            ASSERT_TRUE(runTask(scheduler, takeOne(&dropped.back())));
        }
    }
    EXPECT_EQ(fetch2(get(server.url("page"))).body, "small");
    for (LineReader &reader : readers)
        EXPECT_EQ(runTask(scheduler, countLines(&reader)), lineCount - 1);
}

TEST_F(Http2Test, RequestsAfterACancelledOne)
{
    for (int i = 0; i < 20; ++i) {
        auto handle = scheduler.spawn(client2.fetch(get(server.url("lines")), ampleBytes));
        settle();
        handle.cancel();
        ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
        ASSERT_EQ(fetch2(get(server.url("page"))).body, "small") << i;
    }
}

TEST_F(Http2Test, ManyRequestsAtOnce)
{
    QList<TaskHandle<FetchResult>> handles;
    for (int i = 0; i < 50; ++i)
        handles.append(scheduler.spawn(client2.fetch(get(server.url("page")), 100)));
    for (auto &handle : handles) {
        ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
        EXPECT_EQ(handle.result().body, "small");
    }
}

} // namespace
} // namespace morvane
