#include "ui/conversation/NearBottomTracker.h"

namespace morvane {

namespace {

constexpr double unlockDistance = 240;
constexpr double lockDistance = 80;
constexpr qint64 scrollInterval = 200;

} // namespace

void NearBottomTracker::updateNearBottom(double contentHeight, const ChatScrollMetrics &metrics)
{
    const double remaining = contentHeight - (metrics.offset + metrics.viewportHeight);
    m_isNearBottom = remaining <= (m_isNearBottom ? unlockDistance : lockDistance);
}

bool NearBottomTracker::mayScroll(qint64 now)
{
    if (!m_isNearBottom || pause(now) > 0)
        return false;
    m_lastScroll = now;
    return true;
}

qint64 NearBottomTracker::pause(qint64 now) const
{
    return m_lastScroll < 0 ? 0 : qMax<qint64>(0, scrollInterval - (now - m_lastScroll));
}

} // namespace morvane
