#pragma once

#include "app/ApprovalGate.h"
#include "store/SettingsStore.h"
#include "support/FakeKeychain.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"

namespace morvane {

/// A user who says yes to everything: gives tests of tools the permits that only the gate can make.
class WillingUser {
public:
    explicit WillingUser(Scheduler &scheduler) : m_scheduler(scheduler) {}

    ToolPermit permit(const AIToolCall &call)
    {
        const ToolVerdict verdict = runTask(m_scheduler, m_gate.decide(call));
        if (std::optional<ToolPermit> unasked = m_gate.permitUnasked(verdict))
            return *std::move(unasked);
        auto handle = m_scheduler.spawn(m_gate.requestPermission(verdict));
        waitUntil([this] { return m_gate.pendingToolCall().has_value(); });
        m_gate.resolvePermission(true, false);
        waitUntil([&handle] { return handle.done(); });
        return handle.result().value();
    }

private:
    Scheduler &m_scheduler;
    TemporaryHome m_home;
    FakeKeychain m_keychain;
    SettingsStore m_settings{m_home.path() + QStringLiteral("/Morvane.conf"), m_keychain};
    ApprovalGate m_gate{m_settings};
};

} // namespace morvane
