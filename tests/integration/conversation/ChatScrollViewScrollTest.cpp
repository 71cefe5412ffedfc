#include "ConversationFixture.h"

#include "ui/conversation/FoundText.h"

#include <QScrollBar>
#include <QTest>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using ChatScrollViewScrollTest = ConversationFixture;

TEST_F(ChatScrollViewScrollTest, JumpingToTheLatestGoesOnReadingThere)
{
    transcript.reset(dialogue(30));
    show();
    view.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&view, Qt::Key_Home);
    settle();
    EXPECT_EQ(view.currentRow(), 0);
    view.jumpToLatest();
    settle();
    EXPECT_EQ(view.currentRow(), 29);
    EXPECT_EQ(remaining(), 0);
}

TEST_F(ChatScrollViewScrollTest, OpensAtTheNewestMessage)
{
    transcript.reset(dialogue(200));
    show();
    EXPECT_GT(view.verticalScrollBar()->maximum(), 5000);
    EXPECT_EQ(remaining(), 0);
    EXPECT_TRUE(view.isNearBottom());
}

TEST_F(ChatScrollViewScrollTest, AMatchStaysInSightThatIsShownBeforeTheFirstFrame)
{
    show();
    transcript.reset(dialogue(200));
    view.showMatch({.message = 3, .part = RowPart::body, .from = 0, .occurrence = 0}, u"3"_s);
    EXPECT_FALSE(view.selectedText().isEmpty());
    settle();
    EXPECT_TRUE(view.viewport()->rect().intersects(view.rowRect(3)));
    EXPECT_FALSE(view.isNearBottom());
    transcript.append(message(Role::user, u"One more."_s));
    settle();
    EXPECT_TRUE(view.viewport()->rect().intersects(view.rowRect(3)));
}

TEST_F(ChatScrollViewScrollTest, FollowsAnAnswerThatGrows)
{
    transcript.reset(dialogue(20));
    startAnswer();
    show();
    for (int i = 0; i < 30; ++i)
        transcript.appendToken(u"A line of the answer.\n"_s);
    settle();
    EXPECT_EQ(remaining(), 0);
}

TEST_F(ChatScrollViewScrollTest, StaysLockedWhenTheUserScrollsUpByAHundredWhileAnAnswerStreams)
{
    transcript.reset(dialogue(40));
    startAnswer(u"Begun. "_s);
    show();
    scrollUpFromBottom(100);
    EXPECT_TRUE(view.isNearBottom());
    transcript.appendToken(u"more\n"_s);
    settle();
    EXPECT_EQ(remaining(), 0);
}

TEST_F(ChatScrollViewScrollTest, UnlocksAtThreeHundredAndStaysWhereTheUserLeftIt)
{
    transcript.reset(dialogue(40));
    startAnswer(u"Begun. "_s);
    show();
    scrollUpFromBottom(300);
    EXPECT_FALSE(view.isNearBottom());
    const int before = offset();
    for (int i = 0; i < 20; ++i)
        transcript.appendToken(u"more\n"_s);
    settle();
    EXPECT_EQ(offset(), before);
    EXPECT_GT(remaining(), 300);
}

TEST_F(ChatScrollViewScrollTest, LocksAgainOnlyWithinEightyPixelsOfTheEnd)
{
    transcript.reset(dialogue(40));
    show();
    scrollUpFromBottom(300);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() - 100);
    EXPECT_FALSE(view.isNearBottom());
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() - 80);
    EXPECT_TRUE(view.isNearBottom());
}

TEST_F(ChatScrollViewScrollTest, WhatTheUserReadsDoesNotMoveWhenTheAnswerIsFormatted)
{
    transcript.reset(dialogue(40));
    startAnswer(u"# Title\n\n- one\n- two\n\n```\ncode\n```\n\n"_s.repeated(20));
    show();
    view.setCurrentRow(10);
    const QRect before = view.rowRect(10);
    endAnswer();
    settle();
    EXPECT_EQ(view.rowRect(10), before);
}

TEST_F(ChatScrollViewScrollTest, WhatTheUserReadsDoesNotMoveWhenTheLogGrowsBelow)
{
    transcript.reset(dialogue(40));
    startAnswer(u"Begun."_s);
    show();
    view.setCurrentRow(10);
    const QRect before = view.rowRect(10);
    for (int i = 0; i < 50; ++i)
        activity.log(u"step"_s, ActivityStep::Kind::info);
    settle();
    EXPECT_EQ(view.rowRect(10), before);
}

TEST_F(ChatScrollViewScrollTest, ScrollingToTheTopReachesTheFirstRow)
{
    transcript.reset(dialogue(500));
    show();
    view.verticalScrollBar()->setValue(0);
    EXPECT_EQ(offset(), 0);
    EXPECT_GE(view.rowRect(0).top(), 0);
}

TEST_F(ChatScrollViewScrollTest, ScrollingUpStepByStepKeepsWhatIsInSightInPlace)
{
    transcript.reset(dialogue(500));
    show();
    for (int step = 0; step < 200; ++step) {
        const qsizetype row = view.rowAt({380, 400});
        const int topBefore = view.rowRect(row).top();
        view.verticalScrollBar()->setValue(offset() - 50);
        ASSERT_EQ(view.rowRect(row).top(), topBefore + 50) << "step " << step;
    }
}

TEST_F(ChatScrollViewScrollTest, AResizedWindowKeepsTheEndInSight)
{
    transcript.reset(dialogue(200));
    show();
    view.resize(1400, 700);
    settle();
    EXPECT_EQ(remaining(), 0);
    view.resize(600, 300);
    settle();
    EXPECT_EQ(remaining(), 0);
}

TEST_F(ChatScrollViewScrollTest, AResizedWindowKeepsTheRowInSight)
{
    transcript.reset(dialogue(200));
    show();
    view.setCurrentRow(100);
    view.resize(1400, 500);
    settle();
    EXPECT_TRUE(view.rowRect(100).intersects(view.viewport()->rect()));
    view.resize(600, 500);
    settle();
    EXPECT_TRUE(view.rowRect(100).intersects(view.viewport()->rect()));
}

TEST_F(ChatScrollViewScrollTest, ALongAnswerIsLaidOutOnlyWhereItIsSeen)
{
    startAnswer();
    show();
    const QString batch = u"token "_s.repeated(1000);
    for (int i = 0; i < 100; ++i)
        transcript.appendToken(batch);
    settle();
    EXPECT_EQ(remaining(), 0);
    EXPECT_LT(view.rows().documentCount(), 64);
    endAnswer();
    settle();
    EXPECT_LT(view.rows().documentCount(), 64);
    EXPECT_EQ(remaining(), 0);
    EXPECT_GT(view.verticalScrollBar()->maximum(), 50'000);
}

TEST_F(ChatScrollViewScrollTest, AConversationScrolledFromEndToEndKeepsFewDocuments)
{
    transcript.reset(dialogue(1000));
    show();
    for (int step = 0; step <= 100; ++step) {
        view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() * step / 100);
        ASSERT_LT(view.rows().documentCount(), 128);
    }
    EXPECT_EQ(remaining(), 0);
}

TEST_F(ChatScrollViewScrollTest, AnotherConversationOpensAtItsOwnEnd)
{
    transcript.reset(dialogue(100));
    show();
    scrollUpFromBottom(1000);
    transcript.reset(dialogue(300));
    settle();
    EXPECT_EQ(remaining(), 0);
    EXPECT_TRUE(view.isNearBottom());
    transcript.reset({});
    settle();
    EXPECT_EQ(view.verticalScrollBar()->maximum(), 0);
}

TEST_F(ChatScrollViewScrollTest, ThousandsOfStepsStayCheap)
{
    say(Role::user, u"Go"_s);
    startAnswer();
    show();
    for (int i = 0; i < 5000; ++i)
        activity.log(u"Running: step %1"_s.arg(i), ActivityStep::Kind::tool);
    settle();
    EXPECT_EQ(view.content().count(), 5003);
    EXPECT_EQ(remaining(), 0);
    EXPECT_LT(view.rows().documentCount(), 128);
}

} // namespace
} // namespace morvane
