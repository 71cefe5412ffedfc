#include "net/LocalNetwork.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(LocalNetworkTest, LoopbackHosts)
{
    for (const char *host : {"localhost", "LocalHost", "model.localhost", "127.0.0.1", "127.255.0.3", "::1"})
        EXPECT_TRUE(isLoopbackHost(QString::fromLatin1(host))) << host;
}

TEST(LocalNetworkTest, OtherHosts)
{
    for (const char *host : {"", "localhost.example", "notlocalhost", "128.0.0.1", "127.example.test", "::2",
                             "10.0.0.1", "127.0.0.1.example"})
        EXPECT_FALSE(isLoopbackHost(QString::fromLatin1(host))) << host;
}

} // namespace
} // namespace morvane
