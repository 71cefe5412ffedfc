#include "app/ToolCallRunner.h"

#include "tools/ToolArguments.h"
#include "tools/ToolServerPort.h"
#include "tools/ToolTable.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString deniedResult =
    u"The user denied permission for this action. Do not attempt it again unless the user asks."_s;

/// The log of the conversation that a call belongs to, from the call's last line in it on. What comes of the
/// call when the user has left that conversation is no news of the one that is open then.
class LogOfCall {
public:
    explicit LogOfCall(const ActivityLog &log) : m_log(log), m_step(log.steps().last().id) {}

    bool isOpen() const
    {
        const auto &steps = m_log.steps();
        return std::any_of(steps.rbegin(), steps.rend(),
                           [this](const auto &step) { return step.id == m_step; });
    }

private:
    const ActivityLog &m_log;
    const QUuid m_step;
};

} // namespace

ToolCallRunner::ToolCallRunner(ToolServerPort &toolServers,
                               std::function<Task<ToolResult>(ToolPermit)> executeTool, Workspace &workspace)
    : m_toolServers(toolServers), m_executeTool(std::move(executeTool)), m_workspace(workspace)
{
}

Task<ToolCallRunner::Result> ToolCallRunner::run(AIToolCall call, Caller caller)
{
    const ToolVerdict verdict = co_await m_workspace.gate.decide(std::move(call));
    std::optional<ToolPermit> permit = m_workspace.gate.permitUnasked(verdict);
    if (!permit) {
        permit = co_await approve(verdict, caller);
        if (!permit)
            co_return Result{deniedResult, false};
    } else if (verdict.approval() == ToolVerdict::Approval::automatic) {
        m_workspace.activity.log(u"Automatically allowed: "_s, verdict.phrase(), ActivityStep::Kind::info);
    }
    const bool isServers = toolRoad(verdict.call().name) == ToolRoad::server;
    narrateStart(verdict, caller);
    const LogOfCall log(m_workspace.activity);
    const ToolResult result = isServers ? co_await m_toolServers.execute(*std::move(permit))
                                        : co_await m_executeTool(*std::move(permit));
    if (log.isOpen())
        m_workspace.activity.logResult(verdict.call(), result,
                                       caller == Caller::subagent ? u"Subagent"_s : QString());
    co_return Result{result.text, true};
}

void ToolCallRunner::narrateStart(const ToolVerdict &verdict, Caller caller)
{
    if (caller == Caller::subagent) {
        const QString line = u"Subagent: "_s + verdict.phrase();
        m_workspace.status.setStatusText(line);
        m_workspace.activity.log(u"Subagent: "_s, verdict.phrase(), ActivityStep::Kind::tool);
        return;
    }
    const QString line = u"Running: "_s + verdict.phrase();
    const QString &name = verdict.call().name;
    m_workspace.status.setStatusText(toolRoad(name) == ToolRoad::server ? u"Running "_s + name + u"…"_s
                                                                        : line);
    m_workspace.status.announceProgress(u"Assistant is running: "_s + verdict.phrase() + u'.');
    m_workspace.activity.log(u"Running: "_s, verdict.phrase(), ActivityStep::Kind::tool);
}

Task<std::optional<ToolPermit>> ToolCallRunner::approve(ToolVerdict verdict, Caller caller)
{
    const bool subagent = caller == Caller::subagent;
    Status &status = m_workspace.status;
    if (verdict.approval() == ToolVerdict::Approval::refused) {
        m_workspace.activity.log(u"Denied: "_s, verdict.phrase(), ActivityStep::Kind::error);
        co_return std::nullopt;
    }
    co_await m_workspace.gate.untilFree();
    status.setStatusText(u"Waiting for your approval…"_s);
    status.announce((subagent ? u"A subagent wants to "_s : u"Morvane wants to "_s) + verdict.phrase() +
                    u". Do you allow it?"_s);
    m_workspace.activity.log(subagent ? u"Subagent is waiting for approval to "_s
                                      : u"Waiting for approval to "_s,
                             verdict.phrase(), ActivityStep::Kind::info);
    const LogOfCall log(m_workspace.activity);
    std::optional<ToolPermit> permit = co_await m_workspace.gate.requestPermission(verdict);
    if (permit) {
        status.announceProgress(u"Approved. Running the action."_s);
    } else {
        status.announceProgress(subagent ? u"Action denied. The subagent will continue."_s
                                         : u"Action denied. The assistant will continue."_s);
        if (log.isOpen())
            m_workspace.activity.log(u"Denied: "_s, verdict.phrase(), ActivityStep::Kind::error);
    }
    co_return permit;
}

Task<QString> ToolCallRunner::askUser(AIToolCall call, Caller caller)
{
    const bool subagent = caller == Caller::subagent;
    const QString question = stringArgument(call.arguments.get(), "question");
    co_await m_workspace.questions.untilFree();
    m_workspace.status.setStatusText(subagent ? u"Subagent is waiting for your answer…"_s
                                              : u"Waiting for your answer…"_s);
    m_workspace.activity.log(subagent ? u"Subagent asks you: "_s : u"Asks you: "_s, question,
                             ActivityStep::Kind::info);
    const LogOfCall log(m_workspace.activity);
    const QString answer = co_await m_workspace.questions.askUserQuestion(
        question, stringListArgument(call.arguments.get(), "options"));
    if (log.isOpen())
        m_workspace.activity.log(u"You answered: "_s, answer, ActivityStep::Kind::info);
    co_return answer;
}

} // namespace morvane
