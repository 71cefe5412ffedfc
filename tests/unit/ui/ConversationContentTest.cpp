#include "ui/conversation/ConversationContent.h"

#include "app/ActivityLog.h"
#include "app/Transcript.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = ConversationItem::Kind;

class ConversationContentTest : public testing::Test {
protected:
    void say(Role role, const QString &text)
    {
        ChatMessage message;
        message.role = role;
        message.text = text;
        transcript.append(message);
    }

    Transcript transcript;
    ActivityLog activity;
    ConversationContent content{transcript, activity};
};

TEST_F(ConversationContentTest, AConversationThatEndsWithTheUserHasNoActiveResponse)
{
    say(Role::assistant, u"a"_s);
    say(Role::user, u"b"_s);
    EXPECT_FALSE(content.hasActiveResponse());
    EXPECT_EQ(content.completedCount(), 2);
}

TEST_F(ConversationContentTest, TheActivityStandsBetweenTheCompletedMessagesAndTheActiveResponse)
{
    say(Role::user, u"a"_s);
    say(Role::assistant, u"b"_s);
    activity.log(u"one"_s, ActivityStep::Kind::info);
    activity.log(u"two"_s, ActivityStep::Kind::tool);
    ASSERT_EQ(content.count(), 5);
    EXPECT_EQ(content.item(0), (ConversationItem{Kind::message, 0}));
    EXPECT_EQ(content.item(1), (ConversationItem{Kind::activityHeader, 0}));
    EXPECT_EQ(content.item(2), (ConversationItem{Kind::activityStep, 0}));
    EXPECT_EQ(content.item(3), (ConversationItem{Kind::activityStep, 1}));
    EXPECT_EQ(content.item(4), (ConversationItem{Kind::message, 1}));
}

TEST_F(ConversationContentTest, TheActivityComesLastWithoutAnActiveResponse)
{
    say(Role::user, u"a"_s);
    activity.log(u"one"_s, ActivityStep::Kind::info);
    ASSERT_EQ(content.count(), 3);
    EXPECT_EQ(content.item(2), (ConversationItem{Kind::activityStep, 0}));
}

TEST_F(ConversationContentTest, ItemsAndPlacesMatch)
{
    say(Role::user, u"a"_s);
    say(Role::assistant, u"b"_s);
    activity.log(u"one"_s, ActivityStep::Kind::info);
    for (qsizetype i = 0; i < content.count(); ++i)
        EXPECT_EQ(content.position(content.item(i)), i);
    EXPECT_EQ(content.position({Kind::message, 7}), -1);
    EXPECT_EQ(content.position({Kind::activityStep, 7}), -1);
    activity.clear();
    EXPECT_EQ(content.position({Kind::activityHeader, 0}), -1);
}

TEST_F(ConversationContentTest, TheHeaderTellsTheNumberOfSteps)
{
    activity.log(u"one"_s, ActivityStep::Kind::info);
    activity.log(u"two"_s, ActivityStep::Kind::info);
    EXPECT_EQ(content.accessibleName(content.item(0)), u"Activity, 2 steps"_s);
}

TEST_F(ConversationContentTest, OnlyAFinishedAnswerIsFormatted)
{
    say(Role::user, u"**a**"_s);
    say(Role::assistant, u"**b**"_s);
    EXPECT_FALSE(content.isFormatted(content.item(0)));
    EXPECT_TRUE(content.isFormatted(content.item(1)));
    transcript.setStreaming(1, true);
    EXPECT_FALSE(content.isFormatted(content.item(1)));
    say(Role::assistant, QString());
    EXPECT_FALSE(content.isFormatted(content.item(2)));
    EXPECT_EQ(content.text(content.item(2)), u"(Morvane did not return a response.)"_s);
}

} // namespace
} // namespace morvane
