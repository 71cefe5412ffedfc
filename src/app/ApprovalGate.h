#pragma once

#include "async/OneShot.h"
#include "async/Task.h"
#include "model/AITool.h"
#include "model/PendingToolCall.h"

#include <QObject>
#include <optional>

namespace morvane {

class SettingsStore;

/// Decides which tool calls wait for the user and holds them until the user answers. Main thread.
class ApprovalGate : public QObject {
    Q_OBJECT
public:
    explicit ApprovalGate(SettingsStore &settings, QObject *parent = nullptr);

    bool requiresApproval(const AIToolCall &call) const;

    /// Shows the request and waits, without a time limit, for resolvePermission. Cancellation does not end
    /// it.
    Task<bool> requestPermission(AIToolCall call);

    /// Answers the pending request, if any. With `alwaysAllow` the tool's name is remembered, unless the
    /// call is destructive or denied.
    void resolvePermission(bool allowed, bool alwaysAllow);

    const std::optional<PendingToolCall> &pendingToolCall() const { return m_pending; }

Q_SIGNALS:
    void pendingToolCallChanged();

private:
    SettingsStore &m_settings;
    std::optional<PendingToolCall> m_pending;
    std::optional<OneShot<bool>> m_permissionContinuation;
};

} // namespace morvane
