#pragma once

#include "model/AITool.h"

#include <QString>
#include <utility>

namespace morvane {

/// What the approval gate decided on one call. It is made once, by the gate alone, and goes along with the
/// call: through the user's answer, the narration and the log to the tool.
class ToolVerdict {
public:
    enum class Approval {
        notNeeded, ///< Calls of this tool never ask.
        automatic, ///< Calls of this tool may ask; this one runs without.
        asks,      ///< The user is asked first.
        refused,   ///< The user is not asked any more: the run was cancelled while the call was looked at.
    };

    const AIToolCall &call() const { return m_call; }
    /// What the call does, in words that go on after "Morvane wants to …". As long as the argument it quotes.
    const QString &phrase() const { return m_phrase; }
    /// Whether it may delete data or is hard to undo.
    bool isDestructive() const { return m_destructive; }
    Approval approval() const { return m_approval; }

private:
    friend class ApprovalGate;
    ToolVerdict(AIToolCall call, QString phrase, bool destructive, Approval approval)
        : m_call(std::move(call)), m_phrase(std::move(phrase)), m_destructive(destructive),
          m_approval(approval)
    {
    }

    AIToolCall m_call;
    QString m_phrase;
    bool m_destructive;
    Approval m_approval;
};

} // namespace morvane
