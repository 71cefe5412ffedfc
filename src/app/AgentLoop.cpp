#include "app/AgentLoop.h"

#include "app/ContextTrimming.h"
#include "app/LogText.h"
#include "app/TokenBatch.h"
#include "async/CheckCancelled.h"
#include "base/Json.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "store/SettingsStore.h"
#include "tools/ToolArguments.h"
#include "tools/ToolTable.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// The third identical call in a row is not run.
constexpr int repetitionLimit = 3;

const QString repetitionNote =
    u"I noticed I was repeating the same action without progress, so I stopped to avoid going in circles. "
    u"The "
    "obstacle did not respond to that approach — tell me what you would like me to try instead."_s;

QString stepLimitNote(int maxSteps)
{
    return u"I reached the limit of %1 steps while working on this and stopped to avoid running "
           "forever. Ask me to continue and I'll pick up where I left off — or raise the limit "
           "in Settings under Behaviour."_s.arg(maxSteps);
}

} // namespace

AgentLoop::AgentLoop(const SettingsStore &settings, Workspace &workspace, TurnRunner &turns,
                     ToolCallRunner &tools, SubagentRunner &subagents)
    : m_settings(settings), m_workspace(workspace), m_turns(turns), m_tools(tools), m_subagents(subagents)
{
}

Task<QList<APIMessage>> AgentLoop::runAgentLoop(AIConfiguration config, QList<APIMessage> initialContext)
{
    Run run;
    run.config = std::move(config);
    run.context = std::move(initialContext);
    if (const auto row = m_workspace.transcript.newestAssistant())
        run.answer = m_workspace.transcript.messages().at(*row).id;
    while (!stepLimitReached(run)) {
        const qsizetype startLength = m_workspace.transcript.currentAssistantTextLength();
        const AITurnResult turn = co_await streamTurn(&run);
        if (turn.toolCalls.isEmpty()) {
            if (!run.sawToken && !isLeft(run))
                m_workspace.transcript.appendToken(turn.text);
            break;
        }
        moveTurnNarrationToActivity(run, startLength);
        if (!turn.text.isEmpty())
            run.context.append({APIMessage::Assistant{turn.text}});
        const CallsEnd end = co_await runToolCalls(&run, turn.toolCalls);
        if (end == CallsEnd::repeated) {
            addNote(run, repetitionNote);
            m_workspace.activity.log(u"Stopped: the same action repeated without progress."_s,
                                     ActivityStep::Kind::error);
            co_await checkCancelled();
            co_return std::move(run.context);
        }
        ++run.step;
    }
    m_workspace.activity.logFinished(run.ranTools);
    if (stepLimitReached(run))
        addNote(run, stepLimitNote(m_settings.maxSteps()));
    co_await checkCancelled();
    co_return std::move(run.context);
}

Task<AITurnResult> AgentLoop::streamTurn(Run *run)
{
    const auto batch = std::make_shared<TokenBatch>(m_workspace.transcript);
    auto onToken = [batch, run](const QString &token) {
        run->sawToken = true;
        batch->add(token);
    };
    AITurnResult turn = co_await m_turns.runTurn(trimmedAPIContext(run->context, run->config.provider),
                                                 run->config, std::move(onToken));
    batch->flush();
    co_return turn;
}

Task<AgentLoop::CallsEnd> AgentLoop::runToolCalls(Run *run, QList<AIToolCall> calls)
{
    for (const AIToolCall &call : calls) {
        const QString id = uuidText(newUuid());
        run->context.append({APIMessage::FunctionCall{id, call.name, call.arguments, call.thoughtSignature}});
        if (repeats(*run, call))
            co_return CallsEnd::repeated;
        const QString result = co_await runToolCall(run, call);
        run->context.append({APIMessage::FunctionResponse{id, call.name, result}});
    }
    co_return CallsEnd::finished;
}

Task<QString> AgentLoop::runToolCall(Run *run, AIToolCall call)
{
    const ToolRoad road = toolRoad(call.name);
    if (road == ToolRoad::question)
        co_return co_await m_tools.askUser(call, ToolCallRunner::Caller::mainLoop);
    if (road == ToolRoad::subagent)
        co_return co_await launchSubagent(call, run->config);
    const ToolCallRunner::Result result = co_await m_tools.run(call, ToolCallRunner::Caller::mainLoop);
    if (result.ran && !run->ranTools.contains(call.name))
        run->ranTools.append(call.name);
    co_return result.text;
}

Task<QString> AgentLoop::launchSubagent(AIToolCall call, AIConfiguration config)
{
    m_workspace.status.setStatusText(u"Launching subagent…"_s);
    m_workspace.status.announceProgress(u"Launching a subagent to work on this."_s);
    const SubagentRole role = subagentRole(stringArgument(call.arguments.get(), "subagent"));
    const QString description = flattened(stringArgument(call.arguments.get(), "description"), logTextLimit);
    m_workspace.activity.log(u"Launching "_s + displayName(role).toLower() + u" subagent: "_s + description,
                             ActivityStep::Kind::tool);
    const QString result = co_await m_subagents.runSubagent(call, config);
    m_workspace.activity.log(displayName(role) + u" subagent finished."_s, ActivityStep::Kind::success);
    co_return result;
}

bool AgentLoop::repeats(Run &run, const AIToolCall &call) const
{
    QByteArray signature = call.name.toUtf8() + '|' + serializeJson(call.arguments.get());
    if (run.lastSignature == signature) {
        ++run.repeatCount;
    } else {
        run.lastSignature = std::move(signature);
        run.repeatCount = 1;
    }
    return run.repeatCount >= repetitionLimit;
}

bool AgentLoop::stepLimitReached(const Run &run) const
{
    // Read on every check, so that a change in Settings takes effect during a run.
    return !m_settings.unlimitedSteps() && run.step >= m_settings.maxSteps();
}

bool AgentLoop::isLeft(const Run &run) const
{
    const QList<ChatMessage> &messages = m_workspace.transcript.messages();
    return std::none_of(messages.begin(), messages.end(),
                        [&run](const ChatMessage &message) { return message.id == run.answer; });
}

void AgentLoop::addNote(const Run &run, const QString &note)
{
    const auto row = m_workspace.transcript.newestAssistant();
    // A cancelled run may end when another conversation is shown.
    if (!row || isLeft(run))
        return;
    if (m_workspace.transcript.messages().at(*row).text.isEmpty())
        m_workspace.transcript.setText(*row, note);
    else
        m_workspace.transcript.appendToken(u"\n\n"_s + note);
}

void AgentLoop::moveTurnNarrationToActivity(const Run &run, qsizetype fromLength)
{
    const auto row = m_workspace.transcript.newestAssistant();
    if (!row || isLeft(run) || fromLength >= m_workspace.transcript.currentAssistantTextLength())
        return;
    const QString text = m_workspace.transcript.messages().at(*row).text;
    const QString kept = firstCharacters(text, fromLength);
    const QString narration = flattened(text.mid(kept.size()), narrationLimit);
    m_workspace.transcript.setText(*row, kept);
    if (!narration.isEmpty())
        m_workspace.activity.log(u"Says: "_s + narration, ActivityStep::Kind::info);
}

} // namespace morvane
