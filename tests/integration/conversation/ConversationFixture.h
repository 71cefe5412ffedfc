#pragma once

#include "app/ActivityLog.h"
#include "app/Transcript.h"
#include "support/FakeAnnouncer.h"
#include "ui/conversation/ChatScrollView.h"

#include <QAccessible>
#include <QString>
#include <functional>
#include <gtest/gtest.h>

namespace morvane {

/// A conversation view on its own, in a window of 760 by 500.
class ConversationFixture : public testing::Test {
protected:
    ConversationFixture();

    static ChatMessage message(Role role, const QString &text);
    /// `count` messages of the user and the assistant in turn, each with its number.
    static QList<ChatMessage> dialogue(qsizetype count);

    void say(Role role, const QString &text) { transcript.append(message(role, text)); }
    /// Appends an assistant message that streams.
    void startAnswer(const QString &text = {});
    void endAnswer() { transcript.setStreaming(transcript.messages().size() - 1, false); }

    /// Shows the view and waits until it drew its rows.
    void show();
    /// Waits until every change is drawn and the view stands still.
    void settle();
    void scrollUpFromBottom(int pixels);
    int offset() const;
    int remaining() const;

    QAccessibleInterface *accessible() { return QAccessible::queryAccessibleInterface(&view); }
    QAccessibleInterface *accessibleRow(int row) { return accessible()->child(row); }
    static QString clipboard();

    Transcript transcript;
    ActivityLog activity;
    FakeAnnouncer announcer;
    ChatScrollView view{transcript, activity, announcer};
};

} // namespace morvane
