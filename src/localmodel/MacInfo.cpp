#include "localmodel/MacInfo.h"

#include "localmodel/MarketingNames.h"
#include "platform/MachineFacts.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {

MacInfo MacInfo::read(const MachineFacts &facts)
{
    const quint64 gibibytes = facts.physicalMemory() >> 30;
    MacInfo info;
    info.modelIdentifier = facts.modelIdentifier();
    info.marketingName = morvane::marketingName(info.modelIdentifier);
    info.chip = facts.chip();
    info.ramGB = static_cast<int>(std::clamp<quint64>(gibibytes, 1, std::numeric_limits<int>::max()));
    info.osVersion = facts.osVersion();
    info.isAppleSilicon = facts.isArm64() || info.chip.contains("Apple"_L1, Qt::CaseInsensitive);
    return info;
}

QString MacInfo::summary() const
{
    return u"%1 with a %2 chip, %3 GB of RAM, running %4."_s.arg(marketingName, chip, QString::number(ramGB),
                                                                 osVersion);
}

} // namespace morvane
