#include "app/ApprovalGate.h"

#include "app/ToolDescription.h"
#include "app/ToolServerPort.h"
#include "base/Uuid.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

ApprovalGate::ApprovalGate(SettingsStore &settings, QObject *parent) : QObject(parent), m_settings(settings)
{
}

bool ApprovalGate::requiresApproval(const AIToolCall &call) const
{
    if (call.name == "run_shell_command"_L1)
        return BuiltinTools::isDestructive(call);
    if (isToolServerCall(call) || call.name == "write_file"_L1 || call.name == "edit_file"_L1)
        return !m_settings.alwaysAllowedTools().contains(call.name);
    return false;
}

std::optional<ToolPermit> ApprovalGate::permitUnasked(AIToolCall call) const
{
    if (!isToolServerCall(call) && requiresApproval(call))
        return std::nullopt;
    return ToolPermit(std::move(call));
}

Task<std::optional<ToolPermit>> ApprovalGate::requestPermission(AIToolCall call)
{
    m_pending = PendingToolCall{newUuid(), call.name, describe(call), BuiltinTools::isDestructive(call)};
    const OneShot<bool> answer;
    m_permissionContinuation = answer;
    Q_EMIT pendingToolCallChanged();
    if (!co_await answer.wait())
        co_return std::nullopt;
    co_return ToolPermit(std::move(call));
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
