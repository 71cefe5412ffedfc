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
    m_pending = PendingToolCall{newUuid(), verdict.call().name, verdict.phrase(), verdict.isDestructive()};
    const OneShot<bool> answer;
    m_permissionContinuation = answer;
    Q_EMIT pendingToolCallChanged();
    if (!co_await answer.wait())
        co_return std::nullopt;
    co_return ToolPermit(std::move(verdict));
}

void ApprovalGate::resolvePermission(bool allowed, bool alwaysAllow)
{
    if (allowed && alwaysAllow && m_pending && !m_pending->destructive) {
        auto names = m_settings.alwaysAllowedTools();
        names.insert(m_pending->toolName);
        m_settings.setAlwaysAllowedTools(names);
    }
    auto continuation = std::exchange(m_permissionContinuation, std::nullopt);
    if (continuation)
        continuation->resume(allowed);
    if (std::exchange(m_pending, std::nullopt))
        Q_EMIT pendingToolCallChanged();
}

} // namespace morvane
