#include "support/PrivateDesktop.h"

#include "support/XConnection.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Works without an event loop, since the desktop comes before the application object of a test.
bool becomesTrue(const std::function<bool()> &condition,
                 std::chrono::milliseconds limit = std::chrono::seconds(30))
{
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

[[noreturn]] void fail(const QString &what, const TestProgram &process)
{
    throw std::runtime_error((what + " does not serve:\n"_L1 + process.log()).toStdString());
}

/// What a program needs of the caller's environment to be found, loaded and checked.
const QStringList &inheritedVariables()
{
    static const QStringList names{u"PATH"_s,         u"LD_LIBRARY_PATH"_s, u"ASAN_OPTIONS"_s,
                                   u"LSAN_OPTIONS"_s, u"UBSAN_OPTIONS"_s,   u"TSAN_OPTIONS"_s};
    return names;
}

} // namespace

PrivateDesktop::PrivateDesktop(QSize screen) : m_folder(QDir::tempPath() + u"/morvane-desktop-XXXXXX"_s)
{
    const auto own = QProcessEnvironment::systemEnvironment();
    for (const QString &name : inheritedVariables())
        if (own.contains(name))
            m_environment.insert(name, own.value(name));
    if (!own.contains(u"LSAN_OPTIONS"_s))
        m_environment.insert(u"LSAN_OPTIONS"_s,
                             u"print_suppressions=0:suppressions=%1/tests/support/leaks-of-others.txt"_s.arg(
                                 QStringLiteral(MORVANE_SOURCE_DIR)));
    const std::pair<const char *, const char *> folders[] = {{"HOME", "home"},
                                                             {"XDG_RUNTIME_DIR", "run"},
                                                             {"XDG_CONFIG_HOME", "home/.config"},
                                                             {"XDG_DATA_HOME", "home/.local/share"},
                                                             {"XDG_STATE_HOME", "home/.local/state"},
                                                             {"XDG_CACHE_HOME", "home/.cache"},
                                                             {"TMPDIR", "tmp"},
                                                             {"LOGS", "logs"}};
    for (const auto &[variable, folder] : folders)
        m_environment.insert(QString::fromLatin1(variable), newFolder(QString::fromLatin1(folder)));
    m_environment.remove(u"LOGS"_s);
    m_environment.insert(u"LANG"_s, u"C.UTF-8"_s);
    m_environment.insert(u"TZ"_s, u"UTC"_s);
    // Nothing that a test starts reaches beyond this computer: no proxy listens there.
    for (const auto *name : {"http_proxy", "https_proxy", "all_proxy"})
        m_environment.insert(QString::fromLatin1(name), u"http://127.0.0.1:1"_s);
    m_environment.insert(u"XDG_SESSION_TYPE"_s, u"x11"_s);
    m_environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    m_environment.insert(u"GSETTINGS_BACKEND"_s, u"memory"_s);
    // Without a graphics card programs of GTK 4 would keep all processors busy with one.
    m_environment.insert(u"GSK_RENDERER"_s, u"cairo"_s);
    startServer(screen);
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
    for (const QString &name : m_environment.keys())
        qputenv(name.toUtf8().constData(), m_environment.value(name).toUtf8());
    qunsetenv("WAYLAND_DISPLAY");
    qunsetenv("AT_SPI_BUS_ADDRESS");
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
}

QString PrivateDesktop::sessionBusAddress() const
{
    return m_environment.value(u"DBUS_SESSION_BUS_ADDRESS"_s);
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
    screenshot().save(folder + u"/screen.png"_s);
}

QString PrivateDesktop::logPath(const QString &name) const
{
    return m_folder.filePath(u"logs/"_s + name);
}

void PrivateDesktop::startServer(QSize screen)
{
    // The server chooses a free display number itself and tells it through its standard error, the only
    // descriptor that reaches the log.
    m_server =
        std::make_unique<TestProgram>(u"Xvfb"_s,
                                      QStringList{u"-displayfd"_s, u"2"_s, u"-screen"_s, u"0"_s,
                                                  u"%1x%2x24"_s.arg(screen.width()).arg(screen.height()),
                                                  u"-nolisten"_s, u"tcp"_s, u"-noreset"_s},
                                      m_environment, logPath(u"xserver.log"_s));
    QString number;
    const bool serves = becomesTrue([&] {
        for (const QString &line : m_server->log().split(u'\n')) {
            bool isNumber = false;
            line.toInt(&isNumber);
            if (isNumber)
                number = line;
        }
        return !number.isEmpty() || !m_server->isRunning();
    });
    if (!serves || number.isEmpty())
        fail(u"The X server"_s, *m_server);
    m_environment.insert(u"DISPLAY"_s, u':' + number);
}

void PrivateDesktop::startBus()
{
    const QString address = u"unix:path="_s + m_environment.value(u"XDG_RUNTIME_DIR"_s) + u"/bus"_s;
    m_bus = std::make_unique<TestProgram>(u"dbus-daemon"_s,
                                          QStringList{u"--session"_s, u"--nofork"_s, u"--nopidfile"_s,
                                                      u"--address="_s + address, u"--print-address"_s},
                                          m_environment, logPath(u"bus.log"_s));
    const bool serves =
        becomesTrue([&] { return m_bus->log().contains("unix:path"_L1) || !m_bus->isRunning(); });
    if (!serves || !m_bus->isRunning())
        fail(u"The session bus"_s, *m_bus);
    m_environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, address);
}

void PrivateDesktop::startWindowManager()
{
    m_windowManager =
        std::make_unique<TestProgram>(u"openbox"_s, QStringList{}, m_environment, logPath(u"openbox.log"_s));
    // It announces itself before it takes windows, and loses those that come in between.
    const bool serves = becomesTrue([&] {
        const XConnection probe(display());
        const xcb_window_t window = probe.openWindow();
        const auto isManaged = [&] {
            return probe.property(probe.root(), "_NET_CLIENT_LIST").contains(window);
        };
        return becomesTrue(isManaged, std::chrono::milliseconds(200)) || !m_windowManager->isRunning();
    });
    if (!serves || !m_windowManager->isRunning())
        fail(u"The window manager"_s, *m_windowManager);
}

} // namespace morvane
