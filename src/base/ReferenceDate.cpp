#include "base/ReferenceDate.h"

#include <chrono>
#include <cmath>

namespace morvane {

double referenceDateNow()
{
    const auto sinceEpoch =
        std::chrono::system_clock::now().time_since_epoch() - std::chrono::seconds(referenceDateUnixSeconds);
    return std::chrono::duration<double>(sinceEpoch).count();
}

double referenceDateFromDateTime(const QDateTime &dateTime)
{
    return static_cast<double>(dateTime.toMSecsSinceEpoch() - referenceDateUnixSeconds * 1000) / 1000.0;
}

QDateTime dateTimeFromReferenceDate(double seconds)
{
    constexpr double farthest = 1e6 * 365.25 * 86'400;
    if (!(std::abs(seconds) <= farthest))
        return {};
    return QDateTime::fromMSecsSinceEpoch(std::llround(seconds * 1000) + referenceDateUnixSeconds * 1000,
                                          Qt::UTC);
}

} // namespace morvane
