#pragma once

#include "app/SubagentRunner.h"
#include "app/ToolCallRunner.h"
#include "app/TurnRunner.h"
#include "app/Workspace.h"
#include "async/Task.h"
#include "model/AIConfiguration.h"
#include "model/APIMessage.h"

#include <QList>
#include <QStringList>
#include <QUuid>
#include <optional>

namespace morvane {

class SettingsStore;

/// The heart of the program: asks the model for a turn, runs the tools that it calls, feeds the results back,
/// and repeats until the model stops calling tools or a rule ends the run. Main thread.
class AgentLoop {
public:
    /// All of them outlive every run.
    AgentLoop(const SettingsStore &settings, Workspace &workspace, TurnRunner &turns, ToolCallRunner &tools,
              SubagentRunner &subagents);

    /// One run. Gives the working context as it stands at the end; throws what ended the run otherwise
    /// (AIServiceError, TransportError, Cancelled), and the context of the run is then lost on purpose.
    Task<QList<APIMessage>> runAgentLoop(AIConfiguration config, QList<APIMessage> initialContext);

private:
    /// What one run keeps from turn to turn.
    struct Run {
        AIConfiguration config;
        QList<APIMessage> context;
        std::optional<QUuid> answer; ///< The message that was to be filled when the run began.
        int step = 0;                ///< Finished turns that called tools.
        QStringList ranTools;
        std::optional<QByteArray> lastSignature;
        int repeatCount = 0;
        bool sawToken = false;
    };
    enum class CallsEnd { finished, repeated };

    // These run within runAgentLoop, whose frame holds the run.
    Task<AITurnResult> streamTurn(Run *run);
    Task<CallsEnd> runToolCalls(Run *run, QList<AIToolCall> calls);
    Task<QString> runToolCall(Run *run, AIToolCall call);
    Task<QString> launchSubagent(AIToolCall call, AIConfiguration config);
    bool repeats(Run &run, const AIToolCall &call) const;
    bool stepLimitReached(const Run &run) const;
    bool isLeft(const Run &run) const;
    void addNote(const Run &run, const QString &note);
    void moveTurnNarrationToActivity(const Run &run, qsizetype fromLength);

    const SettingsStore &m_settings;
    Workspace &m_workspace;
    TurnRunner &m_turns;
    ToolCallRunner &m_tools;
    SubagentRunner &m_subagents;
};

} // namespace morvane
