#include "app/ToolCallRunner.h"

#include "app/LogText.h"
#include "app/ToolDescription.h"
#include "app/ToolServerPort.h"
#include "base/Text.h"
#include "tools/ToolArguments.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString deniedResult =
    u"The user denied permission for this action. Do not attempt it again unless the user asks."_s;

bool changesTheComputer(const QString &name)
{
    return name == "run_shell_command"_L1 || name == "write_file"_L1 || name == "edit_file"_L1;
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
        m_workspace.activity.log(u"Automatically allowed: "_s + describe(call), ActivityStep::Kind::info);
    }
    narrateStart(call, caller);
    const QString result = isToolServerCall(call)
                               ? co_await m_services.toolServers.execute(*std::move(permit))
                               : co_await m_services.executeTool(*std::move(permit));
    m_workspace.activity.logResult(call, result, caller == Caller::subagent ? u"Subagent"_s : QString());
    co_return Result{result, true};
}

void ToolCallRunner::narrateStart(const AIToolCall &call, Caller caller)
{
    const QString phrase = describe(call);
    if (caller == Caller::subagent) {
        const QString line = u"Subagent: "_s + phrase;
        m_workspace.status.setStatusText(line);
        m_workspace.activity.log(line, ActivityStep::Kind::tool);
        return;
    }
    m_workspace.status.setStatusText(isToolServerCall(call) ? u"Running "_s + call.name + u"…"_s
                                                            : u"Running: "_s + phrase);
    m_workspace.status.announceProgress(u"Assistant is running: "_s + phrase + u'.');
    m_workspace.activity.log(u"Running: "_s + phrase, ActivityStep::Kind::tool);
}

Task<std::optional<ToolPermit>> ToolCallRunner::approve(AIToolCall call, Caller caller)
{
    const bool subagent = caller == Caller::subagent;
    const QString phrase = describe(call);
    Status &status = m_workspace.status;
    status.setStatusText(u"Waiting for your approval…"_s);
    status.announce((subagent ? u"A subagent wants to "_s : u"Morvane wants to "_s) + phrase +
                    u". Do you allow it?"_s);
    m_workspace.activity.log(
        (subagent ? u"Subagent is waiting for approval to "_s : u"Waiting for approval to "_s) + phrase,
        ActivityStep::Kind::info);
    std::optional<ToolPermit> permit = co_await m_workspace.gate.requestPermission(call);
    if (permit) {
        status.announceProgress(u"Approved. Running the action."_s);
    } else {
        status.announceProgress(subagent ? u"Action denied. The subagent will continue."_s
                                         : u"Action denied. The assistant will continue."_s);
        m_workspace.activity.log(u"Denied: "_s + phrase, ActivityStep::Kind::error);
    }
    co_return permit;
}

Task<QString> ToolCallRunner::askUser(AIToolCall call, Caller caller)
{
    const bool subagent = caller == Caller::subagent;
    const QString question = stringArgument(call.arguments.get(), "question");
    m_workspace.status.setStatusText(subagent ? u"Subagent is waiting for your answer…"_s
                                              : u"Waiting for your answer…"_s);
    m_workspace.activity.log((subagent ? u"Subagent asks you: "_s : u"Asks you: "_s) +
                                 flattened(question, logTextLimit),
                             ActivityStep::Kind::info);
    const QString answer = co_await m_workspace.questions.askUserQuestion(
        question, stringListArgument(call.arguments.get(), "options"));
    m_workspace.activity.log(u"You answered: "_s + flattened(answer, logTextLimit), ActivityStep::Kind::info);
    co_return answer;
}

} // namespace morvane
