#include "platform/linux/notifications/LinuxDeliveryAlarm.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// A manager that answers at all does so within tens of milliseconds.
constexpr std::chrono::seconds commandLimit{5};

} // namespace

LinuxDeliveryAlarm::LinuxDeliveryAlarm(Surroundings surroundings)
    : m_surroundings(std::move(surroundings)),
      m_autostart(m_surroundings.configFolder, m_surroundings.helper),
      m_timers({m_surroundings.helper, u"deliver"_s}, m_surroundings.run)
{
    m_thread.setMaxThreadCount(1);
}

LinuxDeliveryAlarm::~LinuxDeliveryAlarm()
{
    m_thread.waitForDone();
}

void LinuxDeliveryAlarm::enqueue(std::function<void()> work)
{
    ++m_queued;
    m_thread.start([this, work = std::move(work)] {
        work();
        // One program waits for all, so that a start with many reminders starts it once.
        if (--m_queued == 0 && std::exchange(m_owesWaiter, false))
            m_surroundings.startDetached(m_surroundings.helper, {u"wait"_s});
    });
}

void LinuxDeliveryAlarm::set(QUuid id, double date)
{
    enqueue([this, id, date] { setNow(id, date); });
}

void LinuxDeliveryAlarm::clear(QUuid id)
{
    enqueue([this, id] { clearNow(id); });
}

void LinuxDeliveryAlarm::setNow(QUuid id, double date)
{
    m_set.insert(id);
    m_autostart.ensure();
    m_owesWaiter |= !m_timers.start(id, date);
}

void LinuxDeliveryAlarm::clearNow(QUuid id)
{
    // Without a manager there is nothing to stop: the program that waits sees the list change.
    m_timers.stop(id);
    m_set.remove(id);
    if (m_set.isEmpty())
        m_autostart.remove();
}

LinuxDeliveryAlarm::Surroundings LinuxDeliveryAlarm::realSurroundings(const QString &helper)
{
    return {.helper = helper,
            .configFolder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
            .run =
                [](const QString &program, const QStringList &arguments) {
                    const QString path = QStandardPaths::findExecutable(program);
                    return path.isEmpty() ? ShellToolResult{} : runShellTool(path, arguments, commandLimit);
                },
            .startDetached =
                [](const QString &program, const QStringList &arguments) {
                    QProcess process;
                    process.setProgram(program);
                    process.setArguments(arguments);
                    process.setWorkingDirectory(QDir::rootPath());
                    process.setStandardInputFile(QProcess::nullDevice());
                    process.setStandardOutputFile(QProcess::nullDevice());
                    process.setStandardErrorFile(QProcess::nullDevice());
                    process.startDetached();
                }};
}

} // namespace morvane
