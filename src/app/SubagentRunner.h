#pragma once

#include "app/SubagentRole.h"
#include "app/ToolCallRunner.h"
#include "app/TurnRunner.h"
#include "app/Workspace.h"
#include "async/Task.h"
#include "model/AIConfiguration.h"
#include "model/APIMessage.h"

#include <QList>
#include <QObject>

namespace morvane {

class SettingsStore;
class ToolServerPort;

/// Runs the `task` tool: a second, short agent loop with its own prompt and context, whose final text is the
/// tool's result. One level only, one at a time. Main thread.
class SubagentRunner : public QObject {
    Q_OBJECT
public:
    /// Model turns that a subagent has at most.
    static constexpr int turnLimit = 6;

    SubagentRunner(const SettingsStore &settings, const ToolServerPort &toolServers, Workspace &workspace,
                   TurnRunner &turns, ToolCallRunner &tools);

    /// Never throws: an error, a cancellation and a used-up limit are texts for the model too.
    Task<QString> runSubagent(AIToolCall call, AIConfiguration config);

    /// What the window shows while a subagent works; empty otherwise.
    const QString &label() const { return m_label; }

Q_SIGNALS:
    void labelChanged();

private:
    Task<QString> runSubagentLoop(QList<APIMessage> context, AIConfiguration config);
    Task<QString> runToolCall(AIToolCall call);
    void setLabel(const QString &label);

    const SettingsStore &m_settings;
    const ToolServerPort &m_toolServers;
    Workspace &m_workspace;
    TurnRunner &m_turns;
    ToolCallRunner &m_tools;
    QString m_label;
};

} // namespace morvane
