#include "mcp/RefusalRepair.h"

#include "base/Json.h"
#include "mcp/HttpNames.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

using Repair = RefusalRepair::Repair;
using Answer = std::optional<boost::json::object>;

class RefusalRepairTest : public testing::Test {
protected:
    HttpRequest request() const
    {
        HttpRequest sent;
        sent.headers.set(protocolVersionHeader, repair.protocolVersion());
        return sent;
    }
    HttpRequest requestInSession() const
    {
        HttpRequest sent = request();
        sent.headers.set(sessionHeader, "s");
        return sent;
    }
    static Answer parsed(const char *text) { return parseJsonObject(text).value(); }

    const Answer refusal = parsed(
        R"({"jsonrpc":"2.0","error":{"message":"Bad Request: Unsupported protocol version: x"},"id":null})");
    RefusalRepair repair;
};

TEST_F(RefusalRepairTest, TheNameIsSentUntilItIsRefusedAndThenTheDate)
{
    EXPECT_EQ(repair.protocolVersion(), "Morvane/1.2");
    EXPECT_EQ(repair.repair(request(), false, 400, refusal), Repair::date);
    EXPECT_EQ(repair.protocolVersion(), "2025-03-26");
    EXPECT_EQ(repair.repair(request(), false, 400, refusal), Repair::none) << "once more only";
}

TEST_F(RefusalRepairTest, TheServersCapitalsDoNotMatter)
{
    EXPECT_EQ(repair.repair(request(), false, 400,
                            parsed(R"({"error":{"message":"Unsupported Protocol Version"}})")),
              Repair::date);
}

TEST_F(RefusalRepairTest, TwoRequestsThatWereUnderWayTogetherAreBothMended)
{
    const HttpRequest first = request();
    const HttpRequest second = request();
    EXPECT_EQ(repair.repair(first, false, 400, refusal), Repair::date);
    EXPECT_EQ(repair.repair(second, false, 400, refusal), Repair::date);
}

TEST_F(RefusalRepairTest, EveryOtherRefusalIsLeftAsItIs)
{
    EXPECT_EQ(repair.repair(request(), false, 401, refusal), Repair::none);
    EXPECT_EQ(repair.repair(request(), false, 400, std::nullopt), Repair::none);
    EXPECT_EQ(repair.repair(request(), false, 400, parsed(R"({"error":{"message":"no"}})")), Repair::none);
    EXPECT_EQ(repair.repair(request(), false, 400, parsed(R"({"message":"protocol version"})")),
              Repair::none);
    EXPECT_EQ(repair.repair(request(), false, 400,
                            parsed(R"({"id":7,"error":{"message":"Unsupported protocol version"}})")),
              Repair::none)
        << "it answers a request";
    EXPECT_EQ(repair.protocolVersion(), "Morvane/1.2");
}

TEST_F(RefusalRepairTest, AHandshakeRefusedWithinASessionIsTriedWithoutIt)
{
    const Answer initialized = parsed(R"({"error":{"message":"Server already initialized"},"id":null})");
    EXPECT_EQ(repair.repair(requestInSession(), true, 400, initialized), Repair::newSession);
    EXPECT_EQ(repair.repair(requestInSession(), true, 404, std::nullopt), Repair::newSession);
    EXPECT_EQ(repair.repair(requestInSession(), true, 500, initialized), Repair::none);
    EXPECT_EQ(repair.repair(request(), true, 404, std::nullopt), Repair::none) << "there is no session";
    EXPECT_EQ(repair.repair(requestInSession(), false, 404, std::nullopt), Repair::none) << "no handshake";
}

} // namespace
} // namespace morvane
