#include "MorvaneTest.h"

#include "support/WaitUntil.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What the program says to whoever started it. In an empty home there is no list of tool servers yet, which
/// it passes over.
class LogTest : public MorvaneTest {};

TEST_F(LogTest, TellsWhatItPassesOverToWhoeverAsks)
{
    const MorvaneSession &morvane = start({});
    EXPECT_TRUE(waitUntil([&] { return morvane.log().contains("morvane.mcp: no list of tool servers"_L1); }))
        << morvane.log().toStdString();
}

TEST_F(LogTest, IsSilentUnasked)
{
    MorvaneSession &morvane = prepare({});
    morvane.setVariable(u"QT_LOGGING_RULES"_s, {});
    morvane.start();
    morvane.quit();
    EXPECT_FALSE(morvane.log().contains("morvane."_L1)) << morvane.log().toStdString();
}

} // namespace
} // namespace morvane
