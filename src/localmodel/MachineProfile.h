#pragma once

#include "localmodel/MacInfo.h"

#include <mutex>

namespace morvane {

class MachineFacts;

/// The profile of this machine, found out on first use and kept for the whole run. Any thread.
class MachineProfile {
public:
    /// `facts` must outlive the profile.
    explicit MachineProfile(const MachineFacts &facts) : m_facts(facts) {}

    const MacInfo &current() const;

private:
    const MachineFacts &m_facts;
    mutable std::once_flag m_once;
    mutable MacInfo m_info; ///< Written once, before the first reader returns.
};

} // namespace morvane
