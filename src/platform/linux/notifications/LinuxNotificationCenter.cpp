#include "platform/linux/notifications/LinuxNotificationCenter.h"

#include "async/OneShot.h"
#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "platform/linux/notifications/DeliveryAlarm.h"

#include <algorithm>

namespace morvane {

namespace {

/// In steps of this length the calendar is followed, which timers are not.
constexpr double longestStep = 3600;
constexpr double shortestStep = 0.001;

/// The store counted the delay a moment before the centre did, and cut it to whole milliseconds.
constexpr double inaccuracy = 0.05;

double seconds(std::chrono::milliseconds time)
{
    return std::chrono::duration<double>(time).count();
}

} // namespace

LinuxNotificationCenter::LinuxNotificationCenter(Scheduler &scheduler, DeliveryAlarm &alarm,
                                                 std::function<bool()> isInFront, WallClock wallClock)
    : m_scheduler(scheduler), m_alarm(alarm), m_isInFront(std::move(isInFront)),
      m_now(wallClock ? std::move(wallClock) : referenceDateNow)
{
}

void LinuxNotificationCenter::setDelegate(WillPresent willPresent)
{
    m_willPresent = std::move(willPresent);
}

Task<bool> LinuxNotificationCenter::requestAuthorization()
{
    co_return co_await authorizationStatus() == NotificationAuthorization::authorized;
}

Task<NotificationAuthorization> LinuxNotificationCenter::authorizationStatus()
{
    OneShot<bool> isThere;
    m_banners.findDaemon([isThere](bool answer) mutable { isThere.resume(answer); });
    co_return co_await isThere.wait() ? NotificationAuthorization::authorized
                                      : NotificationAuthorization::denied;
}

void LinuxNotificationCenter::add(const NotificationRequest &request)
{
    if (!request.delay) {
        m_scheduler.spawn(present(request));
        return;
    }
    const double date = m_now() + seconds(*request.delay);
    m_pending.insert(request.identifier, {request, date});
    if (const auto id = uuidFromText(request.identifier))
        m_alarm.set(*id, date + deliveryGrace);
    lookSoon();
}

void LinuxNotificationCenter::removePending(const QString &identifier)
{
    if (const auto id = uuidFromText(identifier))
        m_alarm.clear(*id);
    const auto pending = m_pending.find(identifier);
    if (pending == m_pending.end())
        return;
    const Pending removed = std::move(*pending);
    m_pending.erase(pending);
    if (removed.date <= m_now() + inaccuracy && !m_isInFront())
        show(removed.request);
}

Task<void> LinuxNotificationCenter::present(NotificationRequest request)
{
    const bool isShown = !m_willPresent || co_await m_willPresent(request) == Presentation::banner;
    if (isShown)
        show(request);
}

void LinuxNotificationCenter::show(const NotificationRequest &request)
{
    m_banners.show({request.identifier, request.title, request.body});
}

void LinuxNotificationCenter::lookSoon()
{
    m_nextLook.reset();
    if (m_pending.isEmpty())
        return;
    double next = longestStep;
    for (const Pending &pending : m_pending)
        next = std::min(next, pending.date + seconds(monitorTime) - m_now());
    const std::chrono::duration<double> step(std::max(next, shortestStep));
    m_nextLook = m_scheduler.clock().after(std::chrono::ceil<Clock::Duration>(step), [this] { look(); });
}

void LinuxNotificationCenter::look()
{
    QList<NotificationRequest> due;
    for (auto pending = m_pending.begin(); pending != m_pending.end();) {
        if (pending->date + seconds(monitorTime) > m_now()) {
            ++pending;
            continue;
        }
        due.append(pending->request);
        pending = m_pending.erase(pending);
    }
    for (const NotificationRequest &request : due)
        m_scheduler.spawn(present(request));
    lookSoon();
}

} // namespace morvane
