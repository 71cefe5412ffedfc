#include "tools/reminders/ReminderStore.h"

#include "async/OffMain.h"
#include "async/Sleep.h"
#include "base/ReferenceDate.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "platform/Announcer.h"
#include "platform/NotificationCenter.h"
#include "platform/SoundPlayer.h"
#include "tools/reminders/PendingReminders.h"

#include <QLocale>
#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

/// The calendar may jump, by a user's hand or by a sleeping computer, and timers do not follow it.
constexpr std::chrono::milliseconds longestSleep = 1s;
constexpr std::chrono::milliseconds shortestSleep = 1ms;
constexpr std::chrono::milliseconds shortestDelay = 1s;
constexpr qsizetype shortIdLength = 8;

/// A foreign hand may have written any number into the list.
constexpr double farthest = 1e14;

std::chrono::milliseconds milliseconds(double seconds)
{
    return std::chrono::ceil<std::chrono::milliseconds>(
        std::chrono::duration<double>(std::min(seconds, farthest)));
}

QString minutesText(double minutes)
{
    return QString::number(minutes, 'f', QLocale::FloatingPointShortest);
}

QString delayPhrase(double minutes)
{
    if (minutes >= 1)
        return minutesText(minutes) + u" minutes"_s;
    return QString::number(static_cast<int>(std::max(minutes * 60, 1.0))) + u" seconds"_s;
}

QString line(const Reminder &reminder)
{
    const QString time =
        QLocale::system().toString(dateTimeFromReferenceDate(reminder.fireDate).toLocalTime(), u"h:mm AP"_s);
    return uuidText(reminder.id).first(shortIdLength) + u": \""_s + reminder.message + u"\" at "_s + time;
}

QString listText(const QList<Reminder> &reminders)
{
    if (reminders.isEmpty())
        return u"There are no pending reminders."_s;
    std::multimap<double, QString> lines; // keeps the stored order of equal dates
    for (const Reminder &reminder : reminders)
        lines.emplace(reminder.fireDate, line(reminder));
    QString text = u"Pending reminders:"_s;
    for (const auto &[date, nextLine] : lines)
        text += u'\n' + nextLine;
    return text;
}

} // namespace

ReminderStore::ReminderStore(Scheduler &scheduler, const QString &defaultsPath, NotificationCenter &center,
                             SoundPlayer &sounds, Announcer &announcer, WallClock wallClock)
    : m_scheduler(scheduler), m_pending(std::make_shared<PendingReminders>(defaultsPath)), m_center(center),
      m_sounds(sounds), m_announcer(announcer), m_now(wallClock ? std::move(wallClock) : referenceDateNow)
{
    m_disk.setMaxThreadCount(1);
}

ReminderStore::~ReminderStore()
{
    m_disk.waitForDone();
}

Task<QString> ReminderStore::setReminder(QString message, double minutes)
{
    const QString text = trimmed(message);
    if (text.isEmpty())
        co_return u"Error: a reminder message is required."_s;
    if (!(minutes > 0))
        co_return u"Error: minutes must be greater than zero."_s;
    const Reminder reminder{.id = newUuid(), .message = text, .fireDate = m_now() + minutes * 60};
    if (!dateTimeFromReferenceDate(reminder.fireDate).isValid())
        co_return u"Error: minutes must be less than a million years."_s;
    const bool isStored =
        co_await runOn(&m_disk, [pending = m_pending, reminder] { return pending->add(reminder); });
    if (!isStored)
        co_return u"Error: the reminder could not be saved."_s;
    scheduleNotification(reminder);
    watch();
    co_return u"Reminder set: \""_s + text + u"\" in "_s + delayPhrase(minutes) + u'.';
}

Task<QString> ReminderStore::listReminders()
{
    co_return co_await runOn(&m_disk, [pending = m_pending] { return listText(pending->list()); });
}

Task<QString> ReminderStore::cancelReminder(QString idString)
{
    const QString id = trimmed(idString);
    if (id.isEmpty())
        co_return u"Error: a reminder id is required. Use list_reminders to see the ids."_s;
    const auto cancelled =
        co_await runOn(&m_disk, [pending = m_pending, id] { return pending->takeByPrefix(id); });
    if (!cancelled)
        co_return u"Error: no reminder with id \""_s + id + u"\". Use list_reminders to see the ids."_s;
    m_center.removePending(uuidText(cancelled->id));
    co_return u"Cancelled the reminder \""_s + cancelled->message + u"\"."_s;
}

Task<bool> ReminderStore::consumeIfPending(QUuid id)
{
    co_return co_await runOn(&m_disk, [pending = m_pending, id] { return pending->take(id).has_value(); });
}

void ReminderStore::startMonitoring()
{
    m_monitors = true;
    watch();
}

void ReminderStore::watch()
{
    ++m_calls;
    if (m_monitors && (!m_monitorTask || m_monitorTask->done()))
        m_monitorTask = m_scheduler.spawn(monitor());
}

Task<void> ReminderStore::monitor()
{
    while (true) {
        const int calls = m_calls;
        const auto [areTakenRemoved, reminders] = co_await runOn(&m_disk, [pending = m_pending] {
            const bool areRemoved = pending->removeTaken();
            return std::pair(areRemoved, pending->list());
        });
        std::chrono::milliseconds sleep = longestSleep;
        for (const Reminder &reminder : reminders) {
            const double timeLeft = reminder.fireDate - m_now();
            if (timeLeft > 0) {
                if (timeLeft < 1)
                    sleep = std::min(sleep, std::max(milliseconds(timeLeft), shortestSleep));
                continue;
            }
            // Whoever else is at it, the reminder is there for one only.
            if (co_await consumeIfPending(reminder.id)) {
                m_center.removePending(uuidText(reminder.id));
                fire(reminder);
            }
        }
        if (!reminders.isEmpty() || !areTakenRemoved)
            co_await sleepFor(sleep);
        else if (calls == m_calls)
            co_return;
    }
}

void ReminderStore::fire(const Reminder &reminder)
{
    m_sounds.play(doneSound.toString());
    m_announcer.announce(u"Reminder: "_s + reminder.message);
}

void ReminderStore::reschedulePending()
{
    m_scheduler.spawn(reschedule());
}

Task<void> ReminderStore::reschedule()
{
    const QList<Reminder> reminders =
        co_await runOn(&m_disk, [pending = m_pending] { return pending->list(); });
    for (const Reminder &reminder : reminders)
        if (reminder.fireDate > m_now())
            scheduleNotification(reminder);
}

void ReminderStore::scheduleNotification(const Reminder &reminder)
{
    m_center.add({.identifier = uuidText(reminder.id),
                  .title = reminderTitle.toString(),
                  .body = reminder.message,
                  .sound = doneSound.toString(),
                  .delay = std::max(milliseconds(reminder.fireDate - m_now()), shortestDelay)});
}

} // namespace morvane
