#include "tools/reminders/PendingReminders.h"

#include "base/AtomicFile.h"
#include "base/Uuid.h"
#include "tools/reminders/Log.h"

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto key = u"pendingReminders"_s;
/// What has failed is tried again in passing.
constexpr auto passingLimit = std::chrono::milliseconds(100);

} // namespace

PendingReminders::PendingReminders(const QString &path, std::chrono::milliseconds patience)
    : m_file(path), m_patience(patience)
{
}

PendingReminders::~PendingReminders()
{
    removeTaken();
}

QList<Reminder> PendingReminders::decoded(const QVariantMap &values) const
{
    QList<Reminder> reminders = remindersFromJson(values.value(key).toByteArray());
    reminders.removeIf([this](const Reminder &reminder) { return m_taken.contains(reminder.id); });
    return reminders;
}

QList<Reminder> PendingReminders::list()
{
    const std::lock_guard lock(m_lock);
    const auto identity = FileIdentity::ofPath(m_file.path());
    if (!identity || identity != m_identity) {
        const DefaultsFile::Content content = m_file.read();
        m_read = decoded(content.values);
        m_identity = content.identity;
    }
    return m_read;
}

bool PendingReminders::removeTaken()
{
    const std::lock_guard lock(m_lock);
    const auto leaveThemOut = [](QList<Reminder> &) {}; // as every change does
    return m_taken.isEmpty() || changeLocked(leaveThemOut, std::min(passingLimit, m_patience));
}

bool PendingReminders::change(const std::function<void(QList<Reminder> &)> &changeList)
{
    const std::lock_guard lock(m_lock);
    return changeLocked(changeList, m_patience);
}

bool PendingReminders::changeLocked(const std::function<void(QList<Reminder> &)> &changeList,
                                    std::chrono::milliseconds limit)
{
    QSet<QUuid> removed;
    const bool isWritten = m_file.update(
        [&](QVariantMap &values) {
            QList<Reminder> reminders = decoded(values);
            for (const Reminder &reminder : reminders)
                removed.insert(reminder.id);
            changeList(reminders);
            for (const Reminder &reminder : reminders)
                removed.remove(reminder.id);
            values.insert(key, remindersToJson(reminders));
        },
        limit);
    m_identity.reset();
    if (isWritten)
        m_taken.clear();
    else
        m_taken.unite(removed);
    return isWritten;
}

bool PendingReminders::add(const Reminder &reminder)
{
    const bool isWritten = change([&](QList<Reminder> &reminders) { reminders.append(reminder); });
    if (isWritten)
        if (const auto synced = syncFile(m_file.path()); !synced)
            qCWarning(remindersLog) << "a reminder may not outlive a power cut:" << synced.error();
    return isWritten;
}

template <class Matches> std::optional<Reminder> PendingReminders::takeFirst(Matches matches)
{
    // Most calls find nothing to take, and then leave the file as it is.
    const QList<Reminder> seen = list();
    if (std::none_of(seen.cbegin(), seen.cend(), matches))
        return std::nullopt;
    std::optional<Reminder> taken;
    change([&](QList<Reminder> &reminders) {
        const auto found = std::find_if(reminders.cbegin(), reminders.cend(), matches);
        if (found == reminders.cend())
            return;
        taken = *found;
        reminders.erase(found);
    });
    return taken;
}

std::optional<Reminder> PendingReminders::take(QUuid id)
{
    return takeFirst([id](const Reminder &reminder) { return reminder.id == id; });
}

std::optional<Reminder> PendingReminders::takeByPrefix(const QString &prefix)
{
    return takeFirst([&](const Reminder &reminder) { return uuidText(reminder.id).startsWith(prefix); });
}

void PendingReminders::ifEmpty(const std::function<void()> &cleanUp)
{
    removeTaken();
    const DefaultsFile::Lock held = m_file.lock(m_patience);
    if (held.isHeld() && list().isEmpty())
        cleanUp();
}

} // namespace morvane
