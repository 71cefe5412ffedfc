// The small program that delivers reminders while Morvane does not run:
//
//   morvane-reminder deliver ID   shows one reminder if it is still pending; started by a timer of the user's
//                                 service manager
//   morvane-reminder wait         waits in the background for all that are pending, where there is no such
//   manager morvane-reminder rearm        sets the alarms anew; started at login
//
// Texts never stand on the command line, which other users can read: they come from the user defaults.

#include "base/DataFolders.h"
#include "base/FileDescriptor.h"
#include "base/InstalledFiles.h"
#include "base/Uuid.h"
#include "platform/linux/notifications/DeliveryAlarm.h"
#include "platform/linux/notifications/LinuxBanners.h"
#include "platform/linux/notifications/LinuxDeliveryAlarm.h"
#include "platform/linux/notifications/LinuxSoundPlayer.h"
#include "reminder/ReminderDelivery.h"
#include "tools/reminders/PendingReminders.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

using namespace morvane;
using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;

constexpr int wrongUsage = 2;
/// A daemon that takes longer to take a banner is not waited for.
constexpr auto deliveryLimit = 10s;
constexpr auto soundLimit = 2s;

QString defaultsFolder()
{
    return QFileInfo(settingsFile()).path();
}

/// Held by the one that waits; closed again if another does.
FileDescriptor waiterLock()
{
    const QString path = defaultsFolder() + u"/reminders.lock"_s;
    FileDescriptor lock(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                               S_IRUSR | S_IWUSR));
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
        lock.close();
    return lock;
}

class Program {
public:
    explicit Program(QCoreApplication &application)
        : m_application(application), m_pending(settingsFile()), m_sounds(m_files.sounds())
    {
        // Without the session there is nobody left to tell.
        QDBusConnection::sessionBus().connect(QString(), u"/org/freedesktop/DBus/Local"_s,
                                              u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s,
                                              &application, SLOT(quit()));
    }

    int deliver(QUuid id)
    {
        ReminderDelivery delivery(m_pending, m_banners, m_sounds, defaultsFolder());
        QObject::connect(&delivery, &ReminderDelivery::finished, &m_application, &QCoreApplication::quit,
                         Qt::QueuedConnection);
        QTimer::singleShot(deliveryLimit, &m_application, &QCoreApplication::quit);
        delivery.deliver(id);
        m_application.exec();
        return end();
    }

    int wait()
    {
        // A reminder may be added just when the one that waits ends, whose lock then still turns others away.
        do {
            const FileDescriptor lock = waiterLock();
            if (!lock.isOpen() || !QDBusConnection::sessionBus().isConnected())
                return 0;
            ReminderDelivery delivery(m_pending, m_banners, m_sounds, defaultsFolder());
            QObject::connect(&delivery, &ReminderDelivery::finished, &m_application, &QCoreApplication::quit,
                             Qt::QueuedConnection);
            delivery.deliverAll();
            m_application.exec();
            end();
        } while (!m_pending.list().isEmpty());
        return 0;
    }

    int rearm()
    {
        LinuxDeliveryAlarm::Surroundings surroundings = realSurroundings();
        SystemdTimers timers({surroundings.helper, u"deliver"_s}, surroundings.run);
        for (const Reminder &reminder : m_pending.list())
            if (!timers.start(reminder.id, reminder.fireDate + deliveryGrace))
                return wait();
        return end();
    }

private:
    LinuxDeliveryAlarm::Surroundings realSurroundings() const
    {
        return LinuxDeliveryAlarm::realSurroundings(m_files.helper(u"morvane-reminder"_s));
    }

    int end()
    {
        m_sounds.waitUntilHeard(soundLimit);
        const LinuxDeliveryAlarm::Surroundings surroundings = realSurroundings();
        const AutostartEntry autostart(surroundings.configFolder, surroundings.helper);
        m_pending.ifEmpty([&autostart] { autostart.remove(); });
        return 0;
    }

    QCoreApplication &m_application;
    const InstalledFiles m_files = InstalledFiles::aroundHelper();
    PendingReminders m_pending;
    LinuxBanners m_banners;
    LinuxSoundPlayer m_sounds;
};

} // namespace

int main(int argc, char **argv)
{
    // What the starting program had open, its locks among them, is not ours to keep.
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const auto id = arguments.size() == 2 ? uuidFromText(arguments.at(1)) : std::nullopt;
    Program program(application);
    if (arguments.value(0) == "deliver"_L1 && id)
        return program.deliver(*id);
    if (arguments == QStringList{u"wait"_s})
        return program.wait();
    if (arguments == QStringList{u"rearm"_s})
        return program.rearm();
    std::fputs("Usage: morvane-reminder deliver ID | wait | rearm\n", stderr);
    return wrongUsage;
}
