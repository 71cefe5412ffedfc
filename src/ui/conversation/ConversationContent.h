#pragma once

#include "model/ActivityStep.h"
#include "model/ChatMessage.h"
#include "ui/conversation/ConversationItem.h"

#include <QString>

namespace morvane {

class ActivityLog;
class Transcript;

/// The rows of the conversation view in their order: the completed messages, the activity of the request
/// (a header and, unless they are folded, its steps), the response that grows.
class ConversationContent {
public:
    /// Both must outlive the content.
    ConversationContent(const Transcript &transcript, const ActivityLog &activity)
        : m_transcript(transcript), m_activity(activity)
    {
    }

    qsizetype count() const { return completedCount() + activityCount() + (hasActiveResponse() ? 1 : 0); }
    qsizetype messageCount() const;
    /// Number of messages above the activity: all but a last one of the assistant.
    qsizetype completedCount() const;
    /// Number of rows of the activity section; 0 without steps, 1 while they are folded, otherwise one more
    /// than steps.
    qsizetype activityCount() const;
    qsizetype stepCount() const;
    bool isActivityFolded() const { return m_isActivityFolded; }
    void setActivityFolded(bool folded) { m_isActivityFolded = folded; }
    bool hasActiveResponse() const;

    ConversationItem item(qsizetype position) const;
    /// Place of `item` among the rows, or -1 if it is gone.
    qsizetype position(const ConversationItem &item) const;

    const ChatMessage &message(const ConversationItem &item) const;
    const ActivityStep &step(const ConversationItem &item) const;

    /// What the row shows, without notes; a message's `displayText`.
    QString text(const ConversationItem &item) const;
    /// What a screen reader speaks for the row.
    QString accessibleName(const ConversationItem &item) const;
    /// All of what a row tells only a part of; empty where the row tells everything.
    QString whole(const ConversationItem &item) const;
    /// What the action "Copy" puts on the clipboard.
    QString copyText(const ConversationItem &item) const;
    /// Whether the row can be read again.
    bool isReadable(const ConversationItem &item) const
    {
        return item.kind == ConversationItem::Kind::message;
    }
    /// Whether the text is Markdown that is to be formatted.
    bool isFormatted(const ConversationItem &item) const;

    /// The time of day of a step in the short form of the user's locale.
    static QString timeText(const ActivityStep &step);

private:
    const Transcript &m_transcript;
    const ActivityLog &m_activity;
    bool m_isActivityFolded = false;
};

} // namespace morvane
