#include "app/ApprovalGate.h"

#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "base/Uuid.h"
#include "store/SettingsStore.h"
#include "tools/ToolArguments.h"
#include "tools/ToolTable.h"

#include <utility>

namespace morvane {

namespace {

/// Calls with more text than this are looked at off the main thread; it would take milliseconds. In bytes.
constexpr std::size_t longCall = 64 * 1024;

bool isLong(const ToolArguments &arguments)
{
    std::size_t size = 0;
    for (const auto &argument : arguments) {
        const auto *const text = argument.value().if_string();
        size += argument.key().size() + (text ? text->size() : 1);
        if (size > longCall)
            return true;
    }
    return false;
}

} // namespace

ApprovalGate::ApprovalGate(SettingsStore &settings, QObject *parent) : QObject(parent), m_settings(settings)
{
}

Task<ToolVerdict> ApprovalGate::decide(AIToolCall call) const
{
    ToolDescription description;
    bool isCancelledMeanwhile = false;
    if (isLong(call.arguments.get())) {
        const TaskContext context = co_await currentContext();
        const bool wasCancelled = context.cancellation->isCancelled();
        description = co_await runOffMain([call] { return describe(call); });
        isCancelledMeanwhile = !wasCancelled && context.cancellation->isCancelled();
    } else {
        description = describe(call);
    }
    if (m_requests.isClosed())
        throw Cancelled();
    auto approval = approvalOf(call, description);
    if (approval == ToolVerdict::Approval::asks && isCancelledMeanwhile)
        approval = ToolVerdict::Approval::refused;
    co_return ToolVerdict(std::move(call), std::move(description.phrase), description.destructive, approval);
}

ToolVerdict::Approval ApprovalGate::approvalOf(const AIToolCall &call,
                                               const ToolDescription &description) const
{
    using Approval = ToolVerdict::Approval;
    if (toolRoad(call.name) == ToolRoad::server || approvalRule(call.name) == ApprovalRule::never)
        return Approval::notNeeded;
    return requiresApproval(call, description) ? Approval::asks : Approval::automatic;
}

bool ApprovalGate::requiresApproval(const AIToolCall &call) const
{
    return requiresApproval(call, describe(call));
}

bool ApprovalGate::requiresApproval(const AIToolCall &call, const ToolDescription &description) const
{
    switch (approvalRule(call.name)) {
    case ApprovalRule::never:
        return false;
    case ApprovalRule::whenDestructive:
        return description.destructive;
    case ApprovalRule::unlessAlwaysAllowed:
        return !m_settings.alwaysAllowedTools().contains(call.name);
    }
    Q_UNREACHABLE();
}

std::optional<ToolPermit> ApprovalGate::permitUnasked(ToolVerdict verdict) const
{
    using Approval = ToolVerdict::Approval;
    const bool runs = verdict.approval() == Approval::notNeeded || verdict.approval() == Approval::automatic;
    return runs ? std::optional(ToolPermit(std::move(verdict))) : std::nullopt;
}

Task<std::optional<ToolPermit>> ApprovalGate::requestPermission(ToolVerdict verdict)
{
    co_await untilFree();
    const auto answer =
        m_requests.put({newUuid(), verdict.call().name, verdict.phrase(), verdict.isDestructive()});
    Q_EMIT pendingToolCallChanged();
    if (!co_await m_requests.answerTo(answer))
        co_return std::nullopt;
    co_return ToolPermit(std::move(verdict));
}

void ApprovalGate::resolvePermission(bool allowed, bool alwaysAllow)
{
    const std::optional<PendingToolCall> &pending = pendingToolCall();
    if (allowed && alwaysAllow && pending && !pending->destructive) {
        auto names = m_settings.alwaysAllowedTools();
        names.insert(pending->toolName);
        m_settings.setAlwaysAllowedTools(names);
    }
    if (m_requests.answer(allowed))
        Q_EMIT pendingToolCallChanged();
}

void ApprovalGate::leaveUnanswered()
{
    if (m_requests.close())
        Q_EMIT pendingToolCallChanged();
}

} // namespace morvane
