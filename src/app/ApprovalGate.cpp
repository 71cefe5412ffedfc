#include "app/ApprovalGate.h"

#include "base/Uuid.h"
#include "store/SettingsStore.h"
#include "tools/ToolTable.h"

#include <utility>

namespace morvane {

ApprovalGate::ApprovalGate(SettingsStore &settings, QObject *parent) : QObject(parent), m_settings(settings)
{
}

ToolVerdict ApprovalGate::decide(AIToolCall call) const
{
    ToolDescription description = describe(call);
    auto approval = ToolVerdict::Approval::notNeeded;
    if (toolRoad(call.name) != ToolRoad::server && approvalRule(call.name) != ApprovalRule::never) {
        approval = requiresApproval(call, description) ? ToolVerdict::Approval::asks
                                                       : ToolVerdict::Approval::automatic;
    }
    return {std::move(call), std::move(description.phrase), description.destructive, approval};
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
    if (verdict.approval() == ToolVerdict::Approval::asks)
        return std::nullopt;
    return ToolPermit(std::move(verdict));
}

Task<std::optional<ToolPermit>> ApprovalGate::requestPermission(ToolVerdict verdict)
{
    co_await untilFree();
    const OneShot<bool> answer =
        m_requests.put({newUuid(), verdict.call().name, verdict.phrase(), verdict.isDestructive()});
    Q_EMIT pendingToolCallChanged();
    if (!co_await answer.wait())
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

} // namespace morvane
