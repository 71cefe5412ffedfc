#include "support/PrivateDesktop.h"

#include "support/XConnection.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>

namespace morvane {

namespace {

/// Works without an event loop, since the desktop comes before the application object of a test.
bool becomesTrue(const std::function<bool()> &condition,
                 std::chrono::milliseconds limit = std::chrono::seconds(30))
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

[[noreturn]] void fail(const QString &what, const ChildProcess &process)
{
    throw std::runtime_error((what + QLatin1String(" does not serve:\n") + process.log()).toStdString());
}

/// What a program needs of the caller's environment to be found, loaded and checked.
const QStringList &inheritedVariables()
{
    static const QStringList names{QStringLiteral("PATH"),          QStringLiteral("LD_LIBRARY_PATH"),
                                   QStringLiteral("ASAN_OPTIONS"),  QStringLiteral("LSAN_OPTIONS"),
                                   QStringLiteral("UBSAN_OPTIONS"), QStringLiteral("TSAN_OPTIONS")};
    return names;
}

} // namespace

PrivateDesktop::PrivateDesktop() : m_folder(QDir::tempPath() + QStringLiteral("/morvane-desktop-XXXXXX"))
{
    const auto own = QProcessEnvironment::systemEnvironment();
    for (const QString &name : inheritedVariables()) {
        if (own.contains(name)) {
            m_environment.insert(name, own.value(name));
        }
    }
    const std::pair<const char *, const char *> folders[] = {{"HOME", "home"},
                                                             {"XDG_RUNTIME_DIR", "run"},
                                                             {"XDG_CONFIG_HOME", "home/.config"},
                                                             {"XDG_DATA_HOME", "home/.local/share"},
                                                             {"XDG_STATE_HOME", "home/.local/state"},
                                                             {"XDG_CACHE_HOME", "home/.cache"},
                                                             {"TMPDIR", "tmp"},
                                                             {"LOGS", "logs"}};
    for (const auto &[variable, folder] : folders) {
        m_environment.insert(QString::fromLatin1(variable), newFolder(QString::fromLatin1(folder)));
    }
    m_environment.remove(QStringLiteral("LOGS"));
    m_environment.insert(QStringLiteral("LANG"), QStringLiteral("C.UTF-8"));
    m_environment.insert(QStringLiteral("TZ"), QStringLiteral("UTC"));
    // Nothing that a test starts reaches beyond this computer: no proxy listens there.
    for (const auto *name : {"http_proxy", "https_proxy", "all_proxy"})
        m_environment.insert(QString::fromLatin1(name), QStringLiteral("http://127.0.0.1:1"));
    m_environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("x11"));
    m_environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    m_environment.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
    startServer();
    startBus();
    startWindowManager();
}

PrivateDesktop::~PrivateDesktop()
{
    // What the bus activated ends by itself with the bus, and the window manager with the X server.
    m_windowManager.reset();
    m_bus.reset();
    m_server.reset();
}

void PrivateDesktop::adopt() const
{
    for (const QString &name : m_environment.keys()) {
        qputenv(name.toUtf8().constData(), m_environment.value(name).toUtf8());
    }
    qunsetenv("WAYLAND_DISPLAY");
    qunsetenv("AT_SPI_BUS_ADDRESS");
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
}

QString PrivateDesktop::sessionBusAddress() const
{
    return m_environment.value(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
}

QString PrivateDesktop::newFolder(const QString &name) const
{
    const QString path = m_folder.filePath(name);
    QDir().mkpath(path);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

QImage PrivateDesktop::screenshot() const
{
    return XConnection(display()).screenshot();
}

void PrivateDesktop::keepEvidence(const QString &folder) const
{
    QDir().mkpath(folder);
    const QDir logs(logPath(QString()));
    for (const QString &log : logs.entryList(QDir::Files)) {
        QFile::remove(folder + u'/' + log);
        QFile::copy(logs.filePath(log), folder + u'/' + log);
    }
    screenshot().save(folder + QStringLiteral("/screen.png"));
}

QString PrivateDesktop::logPath(const QString &name) const
{
    return m_folder.filePath(QStringLiteral("logs/") + name);
}

void PrivateDesktop::startServer()
{
    // The server chooses a free display number itself and tells it through its standard error, the only
    // descriptor that reaches the log.
    m_server = std::make_unique<ChildProcess>(
        QStringLiteral("Xvfb"),
        QStringList{QStringLiteral("-displayfd"), QStringLiteral("2"), QStringLiteral("-screen"),
                    QStringLiteral("0"), QStringLiteral("1280x960x24"), QStringLiteral("-nolisten"),
                    QStringLiteral("tcp"), QStringLiteral("-noreset")},
        m_environment, logPath(QStringLiteral("xserver.log")));
    QString number;
    const bool serves = becomesTrue([&] {
        for (const QString &line : m_server->log().split(u'\n')) {
            bool isNumber = false;
            line.toInt(&isNumber);
            if (isNumber) {
                number = line;
            }
        }
        return !number.isEmpty() || !m_server->isRunning();
    });
    if (!serves || number.isEmpty()) {
        fail(QStringLiteral("The X server"), *m_server);
    }
    m_environment.insert(QStringLiteral("DISPLAY"), u':' + number);
}

void PrivateDesktop::startBus()
{
    const QString address = QStringLiteral("unix:path=") +
                            m_environment.value(QStringLiteral("XDG_RUNTIME_DIR")) + QStringLiteral("/bus");
    m_bus = std::make_unique<ChildProcess>(
        QStringLiteral("dbus-daemon"),
        QStringList{QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                    QStringLiteral("--address=") + address, QStringLiteral("--print-address")},
        m_environment, logPath(QStringLiteral("bus.log")));
    const bool serves =
        becomesTrue([&] { return m_bus->log().contains(QLatin1String("unix:path")) || !m_bus->isRunning(); });
    if (!serves || !m_bus->isRunning()) {
        fail(QStringLiteral("The session bus"), *m_bus);
    }
    m_environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address);
}

void PrivateDesktop::startWindowManager()
{
    m_windowManager = std::make_unique<ChildProcess>(QStringLiteral("openbox"), QStringList{}, m_environment,
                                                     logPath(QStringLiteral("openbox.log")));
    // It announces itself before it takes windows, and loses those that come in between.
    const bool serves = becomesTrue([&] {
        const XConnection probe(display());
        const xcb_window_t window = probe.openWindow();
        const auto isManaged = [&] {
            return probe.property(probe.root(), "_NET_CLIENT_LIST").contains(window);
        };
        return becomesTrue(isManaged, std::chrono::milliseconds(200)) || !m_windowManager->isRunning();
    });
    if (!serves || !m_windowManager->isRunning()) {
        fail(QStringLiteral("The window manager"), *m_windowManager);
    }
}

} // namespace morvane
