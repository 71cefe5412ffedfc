#include "support/LogListener.h"

#include "base/Log.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// A test in which this is logged, as the listener of every test program sees it.
void testThatLogs(const char *text)
{
    const testing::TestInfo &test = *testing::UnitTest::GetInstance()->current_test_info();
    LogListener listener;
    listener.OnTestStart(test);
    qCInfo(baseLog) << text;
    listener.OnTestEnd(test);
}

TEST(LogListenerTest, APathInTheLogFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(testThatLogs("no file: /home/jane/diary.txt"), "/home/jane/diary.txt");
}

TEST(LogListenerTest, APathWithinAFolderInTheLogFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(testThatLogs("no file: \"Conversations/A.json\""), "A.json");
}

TEST(LogListenerTest, AnAddressInTheLogFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(testThatLogs("no answer from https://example.com"), "https://example.com");
}

TEST(LogListenerTest, ASecretInTheLogFailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(testThatLogs("refused: sk-SECRET"), "sk-SECRET");
}

TEST(LogListenerTest, ALineAboutTheProgramMayStand)
{
    testThatLogs("the settings could not be written: No space left on device");
    testThatLogs("a conversation could not be read: \"Input/output error\"");
    testThatLogs("a request failed: HTTP/3 error; libcurl 95");
}

TEST(LogListenerTest, OfWhatAProgramHasWrittenItsOwnLinesCount)
{
    EXPECT_EQ(linesThatMayQuoteTheUser("qt.svg: Cannot open file '/home/jane/a.svg'\n"
                                       "morvane.store: no file: /home/jane/diary.txt\n"
                                       "morvane.net: a request failed: HTTP/3 error\n"
                                       "morvane.mcp: refused: secret"),
              (QStringList{"morvane.store: no file: /home/jane/diary.txt", "morvane.mcp: refused: secret"}));
}

TEST(LogRecorderTest, KeepsTheLinesWithTheirCategories)
{
    const LogRecorder log;
    qCInfo(baseLog) << "one" << 1;
    qCWarning(baseLog) << "two";
    EXPECT_EQ(log.lines(), (QStringList{"morvane.base: one 1", "morvane.base: two"}));
}

TEST(LogRecorderTest, OneWithinAnotherTakesTheLinesAndGivesTheRestBack)
{
    const LogRecorder outer;
    qCInfo(baseLog) << "before";
    {
        const LogRecorder inner;
        qCInfo(baseLog) << "within";
        EXPECT_EQ(inner.lines(), QStringList{"morvane.base: within"});
    }
    qCInfo(baseLog) << "after";
    EXPECT_EQ(outer.lines(), (QStringList{"morvane.base: before", "morvane.base: after"}));
}

} // namespace
} // namespace morvane
