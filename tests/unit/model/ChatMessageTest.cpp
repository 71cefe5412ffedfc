#include "model/ChatMessage.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

ChatMessage message(Role role, const QString &text, const QStringList &fileNames = {})
{
    ChatMessage result;
    result.role = role;
    result.text = text;
    for (const QString &name : fileNames) {
        ChatAttachment attachment;
        attachment.filename = name;
        result.attachments.append(attachment);
    }
    return result;
}

TEST(ChatMessageTest, StreamingWithoutTextShowsThatItThinks)
{
    ChatMessage row = message(Role::assistant, QString());
    row.isStreaming = true;
    EXPECT_EQ(row.displayText(), u"Thinking…"_s);
}

TEST(ChatMessageTest, StreamingWithTextShowsTheText)
{
    ChatMessage row = message(Role::assistant, u"Hel"_s);
    row.isStreaming = true;
    EXPECT_EQ(row.displayText(), u"Hel"_s);
}

TEST(ChatMessageTest, FinishedAssistantWithoutAnythingShowsThatThereWasNoResponse)
{
    EXPECT_EQ(message(Role::assistant, QString()).displayText(), u"(Morvane did not return a response.)"_s);
}

TEST(ChatMessageTest, FinishedUserWithOnlyAttachmentsShowsTheirNames)
{
    EXPECT_EQ(message(Role::user, QString(), {"a.png", "b.pdf"}).displayText(), u"a.png, b.pdf"_s);
}

TEST(ChatMessageTest, FinishedUserWithNothingShowsNothing)
{
    EXPECT_EQ(message(Role::user, QString()).displayText(), QString());
}

TEST(ChatMessageTest, TextIsShownBeforeTheNamesOfAttachments)
{
    EXPECT_EQ(message(Role::user, u"Look"_s, {"a.png"}).displayText(), u"Look"_s);
}

TEST(ChatMessageTest, LabelOfAStreamingMessageSaysOnlyThatMorvaneResponds)
{
    ChatMessage row = message(Role::assistant, u"Hel"_s, {"a.png"});
    row.isStreaming = true;
    row.errorMessage = u"x"_s;
    EXPECT_EQ(row.accessibilityLabel(), u"Morvane is responding"_s);
}

TEST(ChatMessageTest, LabelNamesTheSpeaker)
{
    EXPECT_EQ(message(Role::assistant, u"Hello"_s).accessibilityLabel(), u"Morvane said Hello"_s);
    EXPECT_EQ(message(Role::user, u"Hi"_s).accessibilityLabel(), u"You said Hi"_s);
    EXPECT_EQ(message(Role::user, QString()).accessibilityLabel(), u"You said No text"_s);
}

TEST(ChatMessageTest, LabelEndsWithTheError)
{
    ChatMessage row = message(Role::assistant, u"Half"_s);
    row.errorMessage = u"It broke."_s;
    EXPECT_EQ(row.accessibilityLabel(), u"Morvane said Half. Error: It broke."_s);
}

TEST(ChatMessageTest, LabelOfAnErrorWithoutTextHasTwoBlanks)
{
    ChatMessage row = message(Role::assistant, QString());
    row.errorMessage = u"It broke."_s;
    EXPECT_EQ(row.accessibilityLabel(), u"Morvane said  Error: It broke."_s);
}

TEST(ChatMessageTest, LabelCountsAttachments)
{
    EXPECT_EQ(message(Role::user, u"Look"_s, {"a.png"}).accessibilityLabel(),
              u"You said Look. 1 attachment: a.png"_s);
    EXPECT_EQ(message(Role::user, QString(), {"a.png", "b.pdf", "c.txt"}).accessibilityLabel(),
              u"You said No text. 3 attachments: a.png, b.pdf, c.txt"_s);
}

TEST(ChatMessageTest, LabelOfAnErrorAlsoCountsAttachments)
{
    ChatMessage row = message(Role::user, u"Look"_s, {"a.png"});
    row.errorMessage = u"No"_s;
    EXPECT_EQ(row.accessibilityLabel(), u"You said Look. Error: No. 1 attachment: a.png"_s);
}

} // namespace
} // namespace morvane
