#include "localmodel/MachineProfile.h"

namespace morvane {

const MacInfo &MachineProfile::current() const
{
    std::call_once(m_once, [this] { m_info = MacInfo::read(m_facts); });
    return m_info;
}

} // namespace morvane
