#include "app/ToolCallRunner.h"

#include "app/LogText.h"
#include "app/ToolDescription.h"
#include "app/ToolServerPort.h"
#include "base/Text.h"
#include "tools/ToolArguments.h"

namespace morvane {

namespace {

const QString deniedResult = QStringLiteral(
    "The user denied permission for this action. Do not attempt it again unless the user asks.");

bool changesTheComputer(const QString &name)
{
    return name == QLatin1String("run_shell_command") || name == QLatin1String("write_file") ||
           name == QLatin1String("edit_file");
}

} // namespace

ToolCallRunner::ToolCallRunner(const AppServices &services, Workspace &workspace)
    : m_services(services), m_workspace(workspace)
{
}

Task<ToolCallRunner::Result> ToolCallRunner::run(AIToolCall call, Caller caller)
{
    std::optional<ToolPermit> permit = m_workspace.gate.permitUnasked(call);
    if (!permit) {
        permit = co_await approve(call, caller);
        if (!permit)
            co_return Result{deniedResult, false};
    } else if (changesTheComputer(call.name)) {
        m_workspace.activity.log(QStringLiteral("Automatically allowed: ") + describe(call),
                                 ActivityStep::Kind::info);
    }
    narrateStart(call, caller);
    const QString result = isToolServerCall(call)
                               ? co_await m_services.toolServers.execute(*std::move(permit))
                               : co_await m_services.executeTool(*std::move(permit));
    m_workspace.activity.logResult(call, result,
                                   caller == Caller::subagent ? QStringLiteral("Subagent") : QString());
    co_return Result{result, true};
}

void ToolCallRunner::narrateStart(const AIToolCall &call, Caller caller)
{
    const QString phrase = describe(call);
    if (caller == Caller::subagent) {
        const QString line = QStringLiteral("Subagent: ") + phrase;
        m_workspace.status.setStatusText(line);
        m_workspace.activity.log(line, ActivityStep::Kind::tool);
        return;
    }
    m_workspace.status.setStatusText(isToolServerCall(call)
                                         ? QStringLiteral("Running ") + call.name + QStringLiteral("…")
                                         : QStringLiteral("Running: ") + phrase);
    m_workspace.status.announceProgress(QStringLiteral("Assistant is running: ") + phrase + QLatin1Char('.'));
    m_workspace.activity.log(QStringLiteral("Running: ") + phrase, ActivityStep::Kind::tool);
}

Task<std::optional<ToolPermit>> ToolCallRunner::approve(AIToolCall call, Caller caller)
{
    const bool subagent = caller == Caller::subagent;
    const QString phrase = describe(call);
    Status &status = m_workspace.status;
    status.setStatusText(QStringLiteral("Waiting for your approval…"));
    status.announce(
        (subagent ? QStringLiteral("A subagent wants to ") : QStringLiteral("Morvane wants to ")) + phrase +
        QStringLiteral(". Do you allow it?"));
    m_workspace.activity.log((subagent ? QStringLiteral("Subagent is waiting for approval to ")
                                       : QStringLiteral("Waiting for approval to ")) +
                                 phrase,
                             ActivityStep::Kind::info);
    std::optional<ToolPermit> permit = co_await m_workspace.gate.requestPermission(call);
    if (permit) {
        status.announceProgress(QStringLiteral("Approved. Running the action."));
    } else {
        status.announceProgress(subagent ? QStringLiteral("Action denied. The subagent will continue.")
                                         : QStringLiteral("Action denied. The assistant will continue."));
        m_workspace.activity.log(QStringLiteral("Denied: ") + phrase, ActivityStep::Kind::error);
    }
    co_return permit;
}

Task<QString> ToolCallRunner::askUser(AIToolCall call, Caller caller)
{
    const bool subagent = caller == Caller::subagent;
    const QString question = stringArgument(call.arguments.get(), "question");
    m_workspace.status.setStatusText(subagent ? QStringLiteral("Subagent is waiting for your answer…")
                                              : QStringLiteral("Waiting for your answer…"));
    m_workspace.activity.log(
        (subagent ? QStringLiteral("Subagent asks you: ") : QStringLiteral("Asks you: ")) +
            flattened(question, logTextLimit),
        ActivityStep::Kind::info);
    const QString answer = co_await m_workspace.questions.askUserQuestion(
        question, stringListArgument(call.arguments.get(), "options"));
    m_workspace.activity.log(QStringLiteral("You answered: ") + flattened(answer, logTextLimit),
                             ActivityStep::Kind::info);
    co_return answer;
}

} // namespace morvane
