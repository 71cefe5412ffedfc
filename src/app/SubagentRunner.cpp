#include "app/SubagentRunner.h"

#include "app/FriendlyError.h"
#include "app/Log.h"
#include "app/TokenBatch.h"
#include "async/Cancelled.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"
#include "tools/ToolArguments.h"
#include "tools/ToolServerPort.h"
#include "tools/ToolTable.h"

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString textOfFailure(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const Cancelled &) {
        return u"The subagent was cancelled before it could finish."_s;
    } catch (...) {
        return u"The subagent encountered an error: "_s + friendlyError(failure);
    }
}

} // namespace

SubagentRunner::SubagentRunner(const SettingsStore &settings, const ToolServerPort &toolServers,
                               Workspace &workspace, TurnRunner &turns, ToolCallRunner &tools)
    : m_settings(settings), m_toolServers(toolServers), m_workspace(workspace), m_turns(turns), m_tools(tools)
{
}

void SubagentRunner::setLabel(const QString &label)
{
    m_label = label;
    Q_EMIT labelChanged();
}

Task<QString> SubagentRunner::runSubagent(AIToolCall call, AIConfiguration config)
{
    const QString description = stringArgument(call.arguments.get(), "description");
    const SubagentRole role = subagentRole(stringArgument(call.arguments.get(), "subagent"));
    if (description.isEmpty())
        co_return u"Error: the task tool needs a description of what the subagent should do."_s;
    const QString name = displayName(role);
    setLabel(name + u" is working…"_s);
    m_workspace.status.announceProgress(u"A "_s + name.toLower() + u" subagent is working on this."_s);
    config.systemPrompt = systemPrompt(role);
    config.maxTokens.reset();
    config.tools = BuiltinTools::all(m_settings.useTools() ? UseTools::yes : UseTools::no) +
                   m_toolServers.exposedAITools();
    QString result;
    std::exception_ptr failure;
    try {
        result = co_await runSubagentLoop({{APIMessage::User{description, {}}}}, config);
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        qCInfo(appLog) << "a subagent failed:" << kindOfFailure(failure);
        setLabel({});
        co_return textOfFailure(failure);
    }
    m_workspace.status.announceProgress(u"The "_s + name.toLower() + u" subagent finished."_s);
    setLabel({});
    co_return result;
}

Task<QString> SubagentRunner::runSubagentLoop(QList<APIMessage> context, AIConfiguration config)
{
    for (int turnNumber = 0; turnNumber < turnLimit; ++turnNumber) {
        const auto fullText = std::make_shared<QString>();
        const auto batch = std::make_shared<TokenBatch>(m_workspace.transcript);
        const AITurnResult turn =
            co_await m_turns.runTurn(context, config, [fullText, batch](const QString &token) {
                fullText->append(token);
                batch->add(token);
            });
        if (turn.toolCalls.isEmpty()) {
            batch->flush();
            co_return trimmed(turn.text.isEmpty() ? *fullText : turn.text);
        }
        if (!turn.text.isEmpty())
            context.append({APIMessage::Assistant{turn.text}});
        for (const AIToolCall &call : turn.toolCalls) {
            const QString id = uuidText(newUuid());
            context.append({APIMessage::FunctionCall{id, call.name, call.arguments, call.thoughtSignature}});
            const QString result = co_await runToolCall(call);
            context.append({APIMessage::FunctionResponse{id, call.name, result}});
        }
    }
    m_workspace.activity.log(u"The subagent used all its steps without a final answer."_s,
                             ActivityStep::Kind::error);
    co_return u"The subagent used all its steps and did not return a final answer. Its last tool "
              "outputs were recorded above."_s;
}

Task<QString> SubagentRunner::runToolCall(AIToolCall call)
{
    const ToolRoad road = toolRoad(call.name);
    if (road == ToolRoad::subagent) {
        co_return u"Subagents cannot launch other subagents. Continue and finish the work "
                  "yourself using your other tools."_s;
    }
    if (road == ToolRoad::question)
        co_return co_await m_tools.askUser(call, ToolCallRunner::Caller::subagent);
    const ToolCallRunner::Result result = co_await m_tools.run(call, ToolCallRunner::Caller::subagent);
    co_return result.text;
}

} // namespace morvane
