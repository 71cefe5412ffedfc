#include "async/Cancelled.h"
#include "integration/net/NetFixture.h"

#include <atomic>
#include <cstring>
#include <dlfcn.h>
#include <netdb.h>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *stalledName = "stalled.test";

std::atomic<int> lookupsUnderWay = 0;
std::atomic<bool> lookupsMayEnd = false;

} // namespace

/// Takes the place of the system's function for the whole test program: the lookup of one name hangs, as with
/// a name server that does not answer.
extern "C" int getaddrinfo(const char *node, const char *service, const addrinfo *hints, addrinfo **result)
{
    if (node && std::strcmp(node, stalledName) == 0) {
        ++lookupsUnderWay;
        lookupsMayEnd.wait(false);
        --lookupsUnderWay;
        return EAI_AGAIN;
    }
    using Function = int (*)(const char *, const char *, const addrinfo *, addrinfo **);
    static const auto system = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return system(node, service, hints, result);
}

namespace morvane {
namespace {

class NameLookupTest : public NetTest {
protected:
    void SetUp() override { lookupsMayEnd = false; }
    void TearDown() override
    {
        lookupsMayEnd = true;
        lookupsMayEnd.notify_all();
        EXPECT_TRUE(waitUntil([] { return lookupsUnderWay == 0; }));
    }

    static HttpRequest stalled() { return get(QUrl(u"http://stalled.test/"_s)); }
};

TEST_F(NameLookupTest, CancellationDoesNotWaitForTheNameServer)
{
    auto handle = scheduler.spawn(client.open(stalled()));
    ASSERT_TRUE(waitUntil([] { return lookupsUnderWay == 1; }));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_THROW(handle.result(), Cancelled);
    RawHttpServer server(
        RawHttpServer::answering([](const RawHttpRequest &) { return rawHttpResponse(200, "ok"); }));
    EXPECT_EQ(fetch(get(server.url())).body, "ok");
    EXPECT_EQ(lookupsUnderWay, 1);
}

TEST_F(NameLookupTest, LookupThatHangsTimesOut)
{
    HttpRequest request = stalled();
    request.connectLimit = std::chrono::milliseconds(150);
    EXPECT_EQ(fetchFailure(request), TransportError::Kind::timedOut);
    EXPECT_EQ(lookupsUnderWay, 1);
}

TEST_F(NameLookupTest, ClientGoesAwayWithoutWaitingForTheNameServer)
{
    auto goingAway = std::make_unique<HttpClient>();
    auto handle = scheduler.spawn(goingAway->fetch(stalled(), ampleBytes));
    ASSERT_TRUE(waitUntil([] { return lookupsUnderWay == 1; }));
    goingAway.reset();
    EXPECT_EQ(lookupsUnderWay, 1);
    ASSERT_TRUE(waitUntil([&handle] { return handle.done(); }));
    EXPECT_THROW(handle.result(), TransportError);
}

} // namespace
} // namespace morvane
