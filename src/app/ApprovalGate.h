#pragma once

#include "app/PendingRequest.h"
#include "async/Task.h"
#include "model/AITool.h"
#include "model/PendingToolCall.h"
#include "tools/ToolDescription.h"
#include "tools/ToolPermit.h"

#include <QObject>
#include <optional>

namespace morvane {

class SettingsStore;

/// Decides which tool calls wait for the user and holds them until the user answers. Main thread.
class ApprovalGate : public QObject {
    Q_OBJECT
public:
    explicit ApprovalGate(SettingsStore &settings, QObject *parent = nullptr);

    /// The one decision on a call, which its caller passes on. Tools of the user's own tool servers always
    /// run unasked, whatever requiresApproval says of them. A long call is looked at off the main thread;
    /// cancelling the task meanwhile answers it as it answers a request that is shown, with a no.
    Task<ToolVerdict> decide(AIToolCall call) const;

    /// What the rule of the call's tool and the always-allowed list say.
    bool requiresApproval(const AIToolCall &call) const;

    /// The permit of a call that runs unasked; nothing for any other.
    std::optional<ToolPermit> permitUnasked(ToolVerdict verdict) const;

    /// Waits until no request is pending, so that what is said of the next one is said of what is shown.
    Task<void> untilFree() { return m_requests.untilFree(); }

    /// Shows the request, behind one that is pending, and waits, without a time limit, for resolvePermission:
    /// the permit, or nothing for a no. Cancellation does not end the wait, but leaveUnanswered does.
    Task<std::optional<ToolPermit>> requestPermission(ToolVerdict verdict);

    /// Answers the pending request, if any. With `alwaysAllow` the tool's name is remembered, unless the
    /// call is destructive or denied.
    void resolvePermission(bool allowed, bool alwaysAllow);

    /// Ends every wait for the user, now and later, with Cancelled, and so does decide: the program ends, and
    /// nothing is begun any more.
    void leaveUnanswered();

    const std::optional<PendingToolCall> &pendingToolCall() const { return m_requests.current(); }

Q_SIGNALS:
    void pendingToolCallChanged();

private:
    bool requiresApproval(const AIToolCall &call, const ToolDescription &description) const;
    ToolVerdict::Approval approvalOf(const AIToolCall &call, const ToolDescription &description) const;

    SettingsStore &m_settings;
    PendingRequest<PendingToolCall, bool> m_requests;
};

} // namespace morvane
