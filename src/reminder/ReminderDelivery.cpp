#include "reminder/ReminderDelivery.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "platform/SoundPlayer.h"
#include "platform/linux/notifications/DeliveryAlarm.h"
#include "platform/linux/notifications/LinuxBanners.h"
#include "tools/reminders/PendingReminders.h"
#include "tools/reminders/ReminderStore.h"

#include <algorithm>

namespace morvane {

namespace {

/// At login the daemon comes some time after us.
constexpr double daemonRetry = 30;

bool isDue(const Reminder &reminder)
{
    return reminder.fireDate + deliveryGrace <= referenceDateNow();
}

} // namespace

ReminderDelivery::ReminderDelivery(PendingReminders &pending, LinuxBanners &banners, SoundPlayer &sounds,
                                   const QString &watchedFolder)
    : m_pending(pending), m_banners(banners), m_sounds(sounds), m_watchedFolder(watchedFolder)
{
    connect(&m_timer, &WallClockTimer::rang, this, &ReminderDelivery::look);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &ReminderDelivery::look);
}

void ReminderDelivery::deliver(QUuid id)
{
    m_banners.findDaemon([this, id](bool isThere) {
        if (isThere) {
            if (const auto reminder = m_pending.take(id))
                show(*reminder);
        }
        finishWhenShown();
    });
}

void ReminderDelivery::deliverAll()
{
    m_isWaiting = true;
    m_watcher.addPath(m_watchedFolder);
    look();
}

void ReminderDelivery::look()
{
    if (!m_isWaiting)
        return;
    const QList<Reminder> reminders = m_pending.list();
    if (reminders.isEmpty()) {
        m_isWaiting = false;
        finishWhenShown();
        return;
    }
    if (std::any_of(reminders.cbegin(), reminders.cend(), isDue)) {
        m_banners.findDaemon([this](bool isThere) {
            if (isThere)
                deliverDue();
            else
                m_timer.setTo(referenceDateNow() + daemonRetry);
        });
        return;
    }
    const auto next = std::min_element(
        reminders.cbegin(), reminders.cend(),
        [](const Reminder &one, const Reminder &other) { return one.fireDate < other.fireDate; });
    m_timer.setTo(next->fireDate + deliveryGrace);
}

void ReminderDelivery::deliverDue()
{
    for (const Reminder &reminder : m_pending.list()) {
        if (!isDue(reminder))
            continue;
        if (const auto taken = m_pending.take(reminder.id))
            show(*taken);
    }
    look();
}

void ReminderDelivery::show(const Reminder &reminder)
{
    ++m_open;
    m_sounds.play(doneSound.toString());
    m_banners.show({uuidText(reminder.id), reminderTitle.toString(), reminder.message, [this] {
                        --m_open;
                        if (!m_isWaiting)
                            finishWhenShown();
                    }});
}

void ReminderDelivery::finishWhenShown()
{
    if (m_open == 0)
        Q_EMIT finished();
}

} // namespace morvane
