#pragma once

#include "ui/conversation/ConversationContent.h"

#include <QString>
#include <QStringList>

namespace morvane {

class Announcer;

/// What can be done with a row of the conversation, for the keyboard, the mouse and assistive technology
/// alike.
class RowActions {
public:
    static constexpr auto copyName = "Copy";
    static constexpr auto readAgainName = "Read again";

    /// Both must outlive the actions.
    RowActions(const ConversationContent &content, Announcer &announcer)
        : m_content(content), m_announcer(announcer)
    {
    }

    /// The names of the actions of a row, in order; empty for a row without any.
    QStringList names(const ConversationItem &item) const;
    /// The sentence that tells a screen reader's user of the actions.
    QString hint(const ConversationItem &item) const;
    void perform(const QString &name, const ConversationItem &item) const;

    void copy(const ConversationItem &item) const;
    void readAgain(const ConversationItem &item) const;

private:
    const ConversationContent &m_content;
    Announcer &m_announcer;
};

} // namespace morvane
