#pragma once

#include "app/Workspace.h"
#include "async/Task.h"

#include <QString>
#include <functional>
#include <optional>

namespace morvane {

class ToolServerPort;

/// Carries out one tool call: approval, narration, execution. Shared by the main loop and subagents, which
/// differ only in their words. Main thread.
class ToolCallRunner {
public:
    /// Who makes the call.
    enum class Caller { mainLoop, subagent };

    struct Result {
        QString text;     ///< What the model is told.
        bool ran = false; ///< False when the user denied the call.
    };

    ToolCallRunner(ToolServerPort &toolServers, std::function<Task<ToolResult>(ToolPermit)> executeTool,
                   Workspace &workspace);

    /// A tool of a server or a built-in tool. Never throws for a failing or denied tool, but Cancelled when
    /// the program ends before the user has answered.
    Task<Result> run(AIToolCall call, Caller caller);

    /// The `ask_user` tool: shows the question and gives the answer as the user typed it. Throws as `run`.
    Task<QString> askUser(AIToolCall call, Caller caller);

private:
    Task<std::optional<ToolPermit>> approve(ToolVerdict verdict, Caller caller);
    void narrateStart(const ToolVerdict &verdict, Caller caller);

    ToolServerPort &m_toolServers;
    std::function<Task<ToolResult>(ToolPermit)> m_executeTool;
    Workspace &m_workspace;
};

} // namespace morvane
