#include "platform/linux/notifications/SystemdTimers.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "platform/Log.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// What calendars of the manager can tell.
constexpr double latest = 5e9;
/// A time that is over would never come.
constexpr double soon = 2;

QString timerUnit(QUuid id)
{
    return u"morvane-reminder-"_s + uuidText(id) + u".timer"_s;
}

QString calendarTime(double date)
{
    return dateTimeFromReferenceDate(std::ceil(date)).toString(u"yyyy-MM-dd HH:mm:ss 'UTC'"_s);
}

/// The folders that a user may have moved, which the manager's own environment does not tell, and the bus.
QStringList environmentOptions()
{
    QStringList options;
    for (const char *name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            options.append(u"--setenv="_s + QString::fromLatin1(name) + u'=' + value);
    }
    return options;
}

} // namespace

SystemdTimers::SystemdTimers(QStringList command, RunCommand run)
    : m_command(std::move(command)), m_run(std::move(run))
{
}

void SystemdTimers::ask()
{
    if (std::exchange(m_wasAsked, true))
        return;
    const ShellToolResult result =
        m_run(u"systemctl"_s, {u"--user"_s, u"list-units"_s, u"--all"_s, u"--plain"_s, u"--no-legend"_s,
                               u"--type=timer"_s, u"morvane-reminder-*"_s});
    m_isAvailable = result.status == 0;
    if (!m_isAvailable) {
        qCInfo(platformLog) << "no service manager of the user; status" << result.status;
        return;
    }
    for (const QString &line : result.output.split(u'\n', Qt::SkipEmptyParts))
        m_units.append(line.section(u' ', 0, 0));
}

bool SystemdTimers::start(QUuid id, double date)
{
    const QString unit = timerUnit(id);
    ask();
    if (!m_isAvailable)
        return false;
    if (m_units.contains(unit))
        return true;
    if (date > latest) // So far away a later start of the program sets it.
        return true;
    const double reachable = std::max(date, referenceDateNow() + soon);
    QStringList arguments{u"--user"_s,
                          u"--quiet"_s,
                          u"--collect"_s,
                          u"--unit="_s + unit.section(u'.', 0, 0),
                          u"--description=Morvane reminder"_s,
                          u"--on-calendar="_s + calendarTime(reachable),
                          u"--timer-property=AccuracySec=1s"_s};
    arguments += environmentOptions();
    arguments.append(u"--"_s);
    arguments += m_command;
    arguments.append(uuidText(id));
    if (const int status = m_run(u"systemd-run"_s, arguments).status; status != 0) {
        qCWarning(platformLog) << "a reminder's timer was not set; status" << status;
        return false;
    }
    m_units.append(unit);
    return true;
}

void SystemdTimers::stop(QUuid id)
{
    const QString unit = timerUnit(id);
    ask();
    if (m_units.removeAll(unit) > 0)
        m_run(u"systemctl"_s, {u"--user"_s, u"--quiet"_s, u"stop"_s, unit});
}

} // namespace morvane
