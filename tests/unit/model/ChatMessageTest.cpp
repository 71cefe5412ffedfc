#include "model/ChatMessage.h"

#include <gtest/gtest.h>

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
    EXPECT_EQ(row.displayText(), QStringLiteral("Thinking…"));
}

TEST(ChatMessageTest, StreamingWithTextShowsTheText)
{
    ChatMessage row = message(Role::assistant, QStringLiteral("Hel"));
    row.isStreaming = true;
    EXPECT_EQ(row.displayText(), QStringLiteral("Hel"));
}

TEST(ChatMessageTest, FinishedAssistantWithoutAnythingShowsThatThereWasNoResponse)
{
    EXPECT_EQ(message(Role::assistant, QString()).displayText(),
              QStringLiteral("(Morvane did not return a response.)"));
}

TEST(ChatMessageTest, FinishedUserWithOnlyAttachmentsShowsTheirNames)
{
    EXPECT_EQ(message(Role::user, QString(), {"a.png", "b.pdf"}).displayText(),
              QStringLiteral("a.png, b.pdf"));
}

TEST(ChatMessageTest, FinishedUserWithNothingShowsNothing)
{
    EXPECT_EQ(message(Role::user, QString()).displayText(), QString());
}

TEST(ChatMessageTest, TextIsShownBeforeTheNamesOfAttachments)
{
    EXPECT_EQ(message(Role::user, QStringLiteral("Look"), {"a.png"}).displayText(), QStringLiteral("Look"));
}

TEST(ChatMessageTest, LabelOfAStreamingMessageSaysOnlyThatMorvaneResponds)
{
    ChatMessage row = message(Role::assistant, QStringLiteral("Hel"), {"a.png"});
    row.isStreaming = true;
    row.errorMessage = QStringLiteral("x");
    EXPECT_EQ(row.accessibilityLabel(), QStringLiteral("Morvane is responding"));
}

TEST(ChatMessageTest, LabelNamesTheSpeaker)
{
    EXPECT_EQ(message(Role::assistant, QStringLiteral("Hello")).accessibilityLabel(),
              QStringLiteral("Morvane said Hello"));
    EXPECT_EQ(message(Role::user, QStringLiteral("Hi")).accessibilityLabel(), QStringLiteral("You said Hi"));
    EXPECT_EQ(message(Role::user, QString()).accessibilityLabel(), QStringLiteral("You said No text"));
}

TEST(ChatMessageTest, LabelEndsWithTheError)
{
    ChatMessage row = message(Role::assistant, QStringLiteral("Half"));
    row.errorMessage = QStringLiteral("It broke.");
    EXPECT_EQ(row.accessibilityLabel(), QStringLiteral("Morvane said Half. Error: It broke."));
}

TEST(ChatMessageTest, LabelOfAnErrorWithoutTextHasTwoBlanks)
{
    ChatMessage row = message(Role::assistant, QString());
    row.errorMessage = QStringLiteral("It broke.");
    EXPECT_EQ(row.accessibilityLabel(), QStringLiteral("Morvane said  Error: It broke."));
}

TEST(ChatMessageTest, LabelCountsAttachments)
{
    EXPECT_EQ(message(Role::user, QStringLiteral("Look"), {"a.png"}).accessibilityLabel(),
              QStringLiteral("You said Look. 1 attachment: a.png"));
    EXPECT_EQ(message(Role::user, QString(), {"a.png", "b.pdf", "c.txt"}).accessibilityLabel(),
              QStringLiteral("You said No text. 3 attachments: a.png, b.pdf, c.txt"));
}

TEST(ChatMessageTest, LabelOfAnErrorAlsoCountsAttachments)
{
    ChatMessage row = message(Role::user, QStringLiteral("Look"), {"a.png"});
    row.errorMessage = QStringLiteral("No");
    EXPECT_EQ(row.accessibilityLabel(), QStringLiteral("You said Look. Error: No. 1 attachment: a.png"));
}

} // namespace
} // namespace morvane
