#include "app/ActivityLog.h"
#include "support/FakeAIService.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

TEST(ActivityLogTest, SucceedingToolIsSpelledWithBlanks)
{
    ActivityLog log;
    log.logResult(toolCall(QStringLiteral("read_file")), QStringLiteral(" a\nb\r\nc "), {});
    EXPECT_EQ(log.steps().first().text, QStringLiteral("read file returned: a b c"));
    EXPECT_EQ(log.steps().first().kind, ActivityStep::Kind::info);
}

TEST(ActivityLogTest, FailingToolKeepsTheWordError)
{
    ActivityLog log;
    log.logResult(toolCall(QStringLiteral("read_file")), QStringLiteral("Error: no such file"), {});
    EXPECT_EQ(log.steps().first().text, QStringLiteral("read file failed: Error: no such file"));
    EXPECT_EQ(log.steps().first().kind, ActivityStep::Kind::error);
}

TEST(ActivityLogTest, SubagentStandsBeforeTheToolsName)
{
    ActivityLog log;
    log.logResult(toolCall(QStringLiteral("read_file")), QStringLiteral("x"), QStringLiteral("Subagent"));
    EXPECT_EQ(log.steps().first().text, QStringLiteral("Subagent read file returned: x"));
}

TEST(ActivityLogTest, ResultsAreCutAt140Characters)
{
    ActivityLog log;
    log.logResult(toolCall(QStringLiteral("t")), QString(140, QLatin1Char('a')), {});
    log.logResult(toolCall(QStringLiteral("t")), QString(141, QLatin1Char('a')), {});
    EXPECT_EQ(log.steps().at(0).text, QStringLiteral("t returned: ") + QString(140, QLatin1Char('a')));
    EXPECT_EQ(log.steps().at(1).text, QStringLiteral("t returned: ") + QString(140, QLatin1Char('a')) + u'…');
}

TEST(ActivityLogTest, RunWithoutToolsSaysSo)
{
    ActivityLog log;
    log.logFinished({});
    EXPECT_EQ(log.steps().first().text, QStringLiteral("Finished. No tools were needed."));
    EXPECT_EQ(log.steps().first().kind, ActivityStep::Kind::success);
}

TEST(ActivityLogTest, FinishedRunNamesItsTools)
{
    ActivityLog log;
    log.logFinished({QStringLiteral("read_file"), QStringLiteral("calculate")});
    EXPECT_EQ(log.steps().first().text, QStringLiteral("Finished. Completed: read file, calculate."));
}

TEST(ActivityLogTest, EqualLinesAreNotMerged)
{
    ActivityLog log;
    log.log(QStringLiteral("same"), ActivityStep::Kind::info);
    log.log(QStringLiteral("same"), ActivityStep::Kind::info);
    EXPECT_EQ(log.steps().size(), 2);
    EXPECT_NE(log.steps().at(0).id, log.steps().at(1).id);
}

} // namespace
} // namespace morvane
