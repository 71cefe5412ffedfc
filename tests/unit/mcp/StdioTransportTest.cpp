#include "mcp/StdioTransport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(StdioTransportTest, TheCommandStandsAsItIsAndArgumentsAreQuoted)
{
    EXPECT_EQ(StdioTransport::shellLine(u"  npx -y 'a b'\t"_s, {}), u"npx -y 'a b'");
    EXPECT_EQ(StdioTransport::shellLine(u"run"_s, {u"a b"_s, u"$HOME"_s, u""_s}), u"run 'a b' '$HOME' ''");
    EXPECT_EQ(StdioTransport::shellLine(u"run"_s, {u"it's"_s}), u"run 'it'\\''s'");
}

} // namespace
} // namespace morvane
