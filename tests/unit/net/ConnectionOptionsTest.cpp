#include "net/ConnectionOptions.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>

namespace morvane {
namespace {

using namespace std::chrono_literals;

std::optional<long> valueOf(CURLoption option, const HttpRequest &request)
{
    const auto options = connectionOptions(request);
    const auto found = std::find_if(options.begin(), options.end(),
                                    [option](const NumberOption &each) { return each.option == option; });
    return found == options.end() ? std::nullopt : std::optional(found->value);
}

TEST(ConnectionOptionsTest, ConnectingHasAsMuchTimeAsSilenceAndNotTheLibrarysOwnLimit)
{
    HttpRequest request;
    request.silenceLimit = 300s;
    EXPECT_EQ(valueOf(CURLOPT_CONNECTTIMEOUT_MS, request), 300'000);
    request.silenceLimit = 1h;
    EXPECT_EQ(valueOf(CURLOPT_CONNECTTIMEOUT_MS, request), 3'600'000);
}

TEST(ConnectionOptionsTest, ALimitOnConnectingIsKept)
{
    HttpRequest request;
    request.silenceLimit = 300s;
    request.connectLimit = 2500ms;
    EXPECT_EQ(valueOf(CURLOPT_CONNECTTIMEOUT_MS, request), 2500);
}

TEST(ConnectionOptionsTest, AnIdleConnectionIsLeftBeforeServersCloseIt)
{
    const auto limit = valueOf(CURLOPT_MAXAGE_CONN, HttpRequest());
    ASSERT_TRUE(limit);
    EXPECT_LT(*limit, 60);
    EXPECT_GT(*limit, 30); // the pauses within a turn, while a tool works
}

} // namespace
} // namespace morvane
