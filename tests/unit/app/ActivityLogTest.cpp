#include "app/ActivityLog.h"
#include "support/FakeAIService.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(ActivityLogTest, SucceedingToolIsSpelledWithBlanks)
{
    ActivityLog log;
    log.logResult(toolCall(u"read_file"_s), u" a\nb\r\nc "_s, {});
    EXPECT_EQ(log.steps().first().text, u"read file returned: a b c"_s);
    EXPECT_EQ(log.steps().first().kind, ActivityStep::Kind::info);
}

TEST(ActivityLogTest, FailingToolKeepsTheWordError)
{
    ActivityLog log;
    log.logResult(toolCall(u"read_file"_s), u"Error: no such file"_s, {});
    EXPECT_EQ(log.steps().first().text, u"read file failed: Error: no such file"_s);
    EXPECT_EQ(log.steps().first().kind, ActivityStep::Kind::error);
}

TEST(ActivityLogTest, SubagentStandsBeforeTheToolsName)
{
    ActivityLog log;
    log.logResult(toolCall(u"read_file"_s), u"x"_s, u"Subagent"_s);
    EXPECT_EQ(log.steps().first().text, u"Subagent read file returned: x"_s);
}

TEST(ActivityLogTest, ResultsAreCutAt140Characters)
{
    ActivityLog log;
    log.logResult(toolCall(u"t"_s), QString(140, u'a'), {});
    log.logResult(toolCall(u"t"_s), QString(141, u'a'), {});
    EXPECT_EQ(log.steps().at(0).text, u"t returned: "_s + QString(140, u'a'));
    EXPECT_EQ(log.steps().at(1).text, u"t returned: "_s + QString(140, u'a') + u'…');
}

TEST(ActivityLogTest, RunWithoutToolsSaysSo)
{
    ActivityLog log;
    log.logFinished({});
    EXPECT_EQ(log.steps().first().text, u"Finished. No tools were needed."_s);
    EXPECT_EQ(log.steps().first().kind, ActivityStep::Kind::success);
}

TEST(ActivityLogTest, FinishedRunNamesItsTools)
{
    ActivityLog log;
    log.logFinished({u"read_file"_s, u"calculate"_s});
    EXPECT_EQ(log.steps().first().text, u"Finished. Completed: read file, calculate."_s);
}

TEST(ActivityLogTest, EqualLinesAreNotMerged)
{
    ActivityLog log;
    log.log(u"same"_s, ActivityStep::Kind::info);
    log.log(u"same"_s, ActivityStep::Kind::info);
    EXPECT_EQ(log.steps().size(), 2);
    EXPECT_NE(log.steps().at(0).id, log.steps().at(1).id);
}

TEST(ActivityLogTest, ATextFromOutsideIsOneLineOfLimitedLengthAndStaysWhole)
{
    ActivityLog log;
    const QString command = u"run the command: "_s + QString(200, u'x') + u"\nls"_s;
    log.log(u"Running: "_s, command, ActivityStep::Kind::tool);
    log.log(u"Denied: "_s, u"open a file"_s, ActivityStep::Kind::error);
    ASSERT_EQ(log.steps().size(), 2);
    EXPECT_EQ(log.steps()[0].text, u"Running: "_s + command.first(140) + u'…');
    EXPECT_EQ(log.steps()[0].whole, u"Running: "_s + command);
    EXPECT_EQ(log.steps()[1].text, u"Denied: open a file"_s);
    EXPECT_EQ(log.steps()[1].whole, QString());
}

} // namespace
} // namespace morvane
