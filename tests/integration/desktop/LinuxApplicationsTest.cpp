#include "DesktopFixture.h"

#include "support/XConnection.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <csignal>
#include <fcntl.h>
#include <gio/gio.h>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Desktop files of the test's own in the user's folder.
class LinuxApplicationsTest : public DesktopFixture {
protected:
    void install(const QString &id, const QString &name, const QString &command, const QString &more = {})
    {
        const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/applications"_s;
        QDir().mkpath(folder);
        QFile file(folder + u'/' + id + u".desktop"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(
            (u"[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n%3"_s.arg(name, command, more)).toUtf8());
    }

    /// Waits until the desktop's library, which watches its files, knows whose kind this is; until then it
    /// opens another program of this computer.
    static bool isOpenedBy(const char *kind, const QString &id)
    {
        return waitUntil([&] {
            const std::unique_ptr<GAppInfo, decltype(&g_object_unref)> application(
                g_app_info_get_default_for_type(kind, FALSE), g_object_unref);
            return application &&
                   QString::fromUtf8(g_app_info_get_id(application.get())) == id + u".desktop"_s;
        });
    }

    /// Has the bus start this command for the program of this name.
    static void serve(const QString &name, const QString &command)
    {
        const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/dbus-1/services"_s;
        QDir().mkpath(folder);
        QFile file(folder + u'/' + name + u".service"_s);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write((u"[D-BUS Service]\nName=%1\nExec=%2\n"_s.arg(name, command)).toUtf8());
        file.close();
        const QString bus = u"org.freedesktop.DBus"_s;
        const QDBusMessage reply = QDBusConnection::sessionBus().call(
            QDBusMessage::createMethodCall(bus, u"/org/freedesktop/DBus"_s, bus, u"ReloadConfig"_s));
        ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    }

    /// Ends the program that comes to the front.
    static void endFrontmost()
    {
        std::optional<RunningApplication> front;
        ASSERT_TRUE(waitUntil([&] {
            front = LinuxApplications().frontmost({});
            return front && front->pid > 1;
        }));
        ::kill(pid_t(front->pid), SIGTERM);
    }

    static void uninstall(const QString &id)
    {
        EXPECT_TRUE(
            QFile::remove(qEnvironmentVariable("XDG_DATA_HOME") + u"/applications/"_s + id + u".desktop"_s));
    }

    QString written(const QString &name) const
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    /// A command that writes what the shell says to a file.
    QString writes(const QString &words, const QString &name) const
    {
        return u"sh -c \"echo "_s + words + u" > "_s + m_folder.filePath(name) + u"\""_s;
    }
};

TEST_F(LinuxApplicationsTest, AProgramIsOpenedByItsNameInTheMenu)
{
    install(u"first"_s, u"Morvane Test Notes"_s, writes(u"opened"_s, u"a"_s));
    EXPECT_EQ(run(m_tools.openApplication(u"morvane test notes"_s)),
              u"Opened the morvane test notes application."_s);
    EXPECT_TRUE(waitUntil([&] { return written(u"a"_s) == "opened\n"_L1; }));
    QFile::remove(m_folder.filePath(u"a"_s));
    EXPECT_EQ(run(m_tools.openApplication(u"Test Notes"_s)), u"Opened the Test Notes application."_s);
    EXPECT_TRUE(waitUntil([&] { return written(u"a"_s) == "opened\n"_L1; }));
}

TEST_F(LinuxApplicationsTest, AnUnknownNameAndAnAmbiguousOneAreErrors)
{
    install(u"one"_s, u"Twin One"_s, u"true"_s);
    install(u"two"_s, u"Twin Two"_s, u"true"_s);
    for (const QString &name : {u"no such program"_s, u"Twin"_s, u""_s})
        EXPECT_EQ(run(m_tools.openApplication(name)),
                  u"Error: could not find or open the application named \""_s + name + u"\"."_s);
}

TEST_F(LinuxApplicationsTest, AProgramThatIsMissingOrEndsWithAnErrorAtOnceIsAnError)
{
    install(u"missing"_s, u"Missing Program"_s, u"/no/such/program"_s);
    install(u"broken"_s, u"Broken Program"_s, u"false"_s);
    install(u"brief"_s, u"Brief Program"_s, u"true"_s);
    // However long they take to end.
    LinuxApplications patient(std::chrono::minutes(1));
    EXPECT_FALSE(patient.open(u"Missing Program"_s, {}));
    EXPECT_FALSE(patient.open(u"Broken Program"_s, {}));
    EXPECT_TRUE(patient.open(u"Brief Program"_s, {}));
}

TEST_F(LinuxApplicationsTest, AProgramIsThereAtOnceWhenItIsInstalledAndGoneWhenItIsHidden)
{
    for (const QString &name : {u"Fresh One"_s, u"Fresh Two"_s, u"Fresh Three"_s}) {
        install(u"fresh"_s, name, u"true"_s);
        EXPECT_EQ(run(m_tools.openApplication(name)), u"Opened the %1 application."_s.arg(name));
    }
    install(u"fresh"_s, u"Fresh Four"_s, u"true"_s, u"Hidden=true\n"_s);
    EXPECT_TRUE(run(m_tools.openApplication(u"Fresh Four"_s)).startsWith(u"Error:"_s));
}

TEST_F(LinuxApplicationsTest, AFileOfTheUsersHidesTheOneOfAllUsers)
{
    EXPECT_EQ(run(m_tools.openApplication(u"FeatherPad"_s)), u"Opened the FeatherPad application."_s);
    endFrontmost();
    install(u"featherpad"_s, u"Hidden Editor"_s, u"true"_s, u"Hidden=true\n"_s);
    EXPECT_TRUE(run(m_tools.openApplication(u"FeatherPad"_s)).startsWith(u"Error:"_s));
    uninstall(u"featherpad"_s);
}

TEST_F(LinuxApplicationsTest, AProgramOfTheTerminalGetsATerminal)
{
    install(u"text"_s, u"Text Program"_s, u"sh -c \"tty > %1; sleep 60\""_s.arg(m_folder.filePath(u"d"_s)),
            u"Terminal=true\n"_s);
    EXPECT_EQ(run(m_tools.openApplication(u"Text Program"_s)), u"Opened the Text Program application."_s);
    EXPECT_TRUE(waitUntil([&] { return written(u"d"_s).startsWith(u"/dev/pts/"_s); }));
    endFrontmost();
}

TEST_F(LinuxApplicationsTest, AProgramThatTheBusStartsIsStartedByItAndAMissingOneIsAnError)
{
    serve(u"org.gtk.Demo4.App"_s, u"/usr/bin/gtk4-demo-application --gapplication-service"_s);
    const QString byTheBusOnly = u"DBusActivatable=true\n"_s;
    install(u"org.gtk.Demo4.App"_s, u"Factory"_s, u"false"_s, byTheBusOnly);
    install(u"org.example.Missing"_s, u"Missing Service"_s, u"false"_s, byTheBusOnly);
    EXPECT_EQ(run(m_tools.openApplication(u"Factory"_s)), u"Opened the Factory application."_s);
    endFrontmost();
    EXPECT_TRUE(run(m_tools.openApplication(u"Missing Service"_s)).startsWith(u"Error:"_s));
    uninstall(u"org.gtk.Demo4.App"_s);
}

TEST_F(LinuxApplicationsTest, AStopEndsTheWaitingForAProgramThatTheBusStartsAndThatHangs)
{
    const QString name = u"org.example.Hanging"_s;
    serve(name, u"/bin/sh -c \"echo $$ > %1; exec sleep 600\""_s.arg(m_folder.filePath(u"pid"_s)));
    install(name, u"Hanging Program"_s, u"false"_s, u"DBusActivatable=true\n"_s);
    TaskHandle<ToolResult> opening = m_scheduler.spawn(m_tools.openApplication(u"Hanging Program"_s));
    EXPECT_TRUE(waitUntil([&] { return written(u"pid"_s).endsWith(u'\n') || opening.done(); }));
    EXPECT_FALSE(opening.done());
    opening.cancel();
    // Half of what the bus is given to start a program.
    EXPECT_TRUE(waitUntil([&] { return opening.done(); }, std::chrono::seconds(10)));
    ASSERT_TRUE(waitUntil([&] { return opening.done(); }));
    EXPECT_EQ(opening.result().text, u"Error: stopped before it was done."_s);
    ::kill(pid_t(written(u"pid"_s).toInt()), SIGTERM);
    uninstall(name);
}

TEST_F(LinuxApplicationsTest, WhatIsOpenedInheritsNeitherGroupNorDescriptorsNorOurVariables)
{
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    const int inheritable = ::open(m_folder.path().toUtf8().constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GT(inheritable, 2);
    install(
        u"nosy"_s, u"Nosy Program"_s,
        u"sh -c \"(ps -o pgid= -p \\$\\$; ls /proc/\\$\\$/fd | tr '\\\\n' ' '; echo; echo [\\$QTWEBENGINE_DISABLE_SANDBOX]) > %1; mv %1 %2\""_s
            .arg(m_folder.filePath(u"t"_s), m_folder.filePath(u"b"_s)));
    EXPECT_EQ(run(m_tools.openApplication(u"Nosy Program"_s)), u"Opened the Nosy Program application."_s);
    ::close(inheritable);
    qunsetenv("QTWEBENGINE_DISABLE_SANDBOX");
    ASSERT_TRUE(waitUntil([&] { return !written(u"b"_s).isEmpty(); }));
    const QStringList lines = written(u"b"_s).split(u'\n');
    EXPECT_NE(lines.value(0).trimmed().toInt(), int(::getpgid(0)));
    // The shell's own standard descriptors, and the one it saved for the redirection.
    EXPECT_TRUE(lines.value(1).trimmed().startsWith(u"0 1 2"_s));
    EXPECT_LE(lines.value(1).trimmed().split(u' ').size(), 4) << lines.value(1).toStdString();
    EXPECT_EQ(lines.value(2), u"[]"_s);
}

TEST_F(LinuxApplicationsTest, AnAddressGoesToTheUsersBrowserOrTheNamedProgram)
{
    install(u"browser"_s, u"Test Browser"_s, writes(u"browser %u"_s, u"c"_s),
            u"MimeType=x-scheme-handler/https;\n"_s);
    QFile list(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/mimeapps.list"_s);
    QDir().mkpath(qEnvironmentVariable("XDG_CONFIG_HOME"));
    EXPECT_EQ(run(m_tools.openURL(u"gopher://example.com/"_s, {})),
              u"Error: could not open the URL. Make sure a default browser is set."_s);
    ASSERT_TRUE(list.open(QIODevice::WriteOnly));
    list.write("[Default Applications]\nx-scheme-handler/https=browser.desktop\n");
    list.close();
    ASSERT_TRUE(isOpenedBy("x-scheme-handler/https", u"browser"_s));
    EXPECT_EQ(run(m_tools.openURL(u"https://example.com/a%20b"_s, {})),
              u"Opened https://example.com/a%20b in the browser."_s);
    EXPECT_TRUE(waitUntil([&] { return written(u"c"_s) == "browser https://example.com/a%20b\n"_L1; }))
        << written(u"c"_s).toStdString();
    QFile::remove(m_folder.filePath(u"c"_s));
    run(m_tools.openURL(u"https://example.com/"_s, u"Test Browser"_s));
    EXPECT_TRUE(waitUntil([&] { return written(u"c"_s) == "browser https://example.com/\n"_L1; }));
}

TEST_F(LinuxApplicationsTest, AnAddressOfAFileGoesToTheUsersProgramForItsKind)
{
    install(u"reader"_s, u"Test Reader"_s, writes(u"reader %f"_s, u"e"_s), u"MimeType=text/plain;\n"_s);
    QFile list(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/mimeapps.list"_s);
    QDir().mkpath(qEnvironmentVariable("XDG_CONFIG_HOME"));
    ASSERT_TRUE(list.open(QIODevice::WriteOnly));
    list.write("[Default Applications]\ntext/plain=reader.desktop\n");
    list.close();
    QFile letter(m_folder.filePath(u"letter.txt"_s));
    ASSERT_TRUE(letter.open(QIODevice::WriteOnly));
    letter.write("words");
    letter.close();
    const QString address = u"file://"_s + letter.fileName();
    ASSERT_TRUE(isOpenedBy("text/plain", u"reader"_s));
    EXPECT_EQ(run(m_tools.openURL(address, {})), u"Opened "_s + address + u" in the browser."_s);
    EXPECT_TRUE(waitUntil([&] { return written(u"e"_s) == u"reader "_s + letter.fileName() + u'\n'; }))
        << written(u"e"_s).toStdString();
    EXPECT_EQ(run(m_tools.openURL(address + u".missing"_s, {})),
              u"Error: could not open the URL. Make sure a default browser is set."_s);
    EXPECT_TRUE(list.remove());
    uninstall(u"reader"_s);
}

TEST_F(LinuxApplicationsTest, AWindowsProgramHasTheNameThatTheMenuShows)
{
    const auto name = [](const char *instance, const char *ownClass, const QString &id = {}) {
        return InstalledApplications::nameFor(QByteArray(instance) + '\0' + ownClass + '\0', id);
    };
    install(u"org.example.Letters"_s, u"My Letters"_s, u"true"_s);
    install(u"plain"_s, u"Plain Program"_s, u"true"_s);
    install(u"odd"_s, u"Odd Program"_s, u"true"_s, u"StartupWMClass=OddWindow\n"_s);
    EXPECT_TRUE(waitUntil([&] { return name("x", "OddWindow") == u"Odd Program"_s; }));
    EXPECT_EQ(name("OddWindow", "other"), u"Odd Program"_s);
    EXPECT_EQ(name("x", "y", u"org.example.Letters"_s), u"My Letters"_s);
    EXPECT_EQ(name("x", "Plain"), u"Plain Program"_s);
    EXPECT_EQ(name("plain", "Y"), u"Plain Program"_s);
    EXPECT_EQ(name("nobody", "Nobody's"), u"Nobody's"_s);
    EXPECT_EQ(name("nobody", ""), u"nobody"_s);
    EXPECT_EQ(name("../plain", ""), u"../plain"_s);
}

TEST_F(LinuxApplicationsTest, OfWindowsThatDoNotTellTheirProcessTheNamedOneComesForward)
{
    const XConnection old(qEnvironmentVariable("DISPLAY"));
    const auto open = [&old](QByteArray name) {
        const xcb_window_t window = old.openWindow();
        const QByteArray title = name + " M\xfcller";
        xcb_change_property(old.handle(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                            uint32_t(title.size()), title.constData());
        name = name + '\0' + name + '\0';
        xcb_change_property(old.handle(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING,
                            8, uint32_t(name.size()), name.constData());
        EXPECT_TRUE(waitUntil([&] { return old.activeWindow() == window; }));
    };
    open("Lower");
    open("Upper");
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is Upper."_s);
    EXPECT_EQ(run(m_tools.activateApp(u"lower"_s)), u"Activated lower."_s);
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is Lower."_s);
    EXPECT_EQ(LinuxApplications().windows({}).first().title, u"Lower Müller"_s);
}

TEST_F(LinuxApplicationsTest, AWindowOnADesktopThatIsNotShownRunsAndIsNotSeen)
{
    const XConnection other(qEnvironmentVariable("DISPLAY"));
    const xcb_window_t window = other.openWindow();
    LinuxApplications applications;
    ASSERT_TRUE(waitUntil([&] { return !applications.windows({}).isEmpty(); }));
    // The window manager may still have to write its own.
    EXPECT_TRUE(waitUntil([&] {
        const uint32_t desktop = 1000;
        xcb_change_property(other.handle(), XCB_PROP_MODE_REPLACE, window, other.atom("_NET_WM_DESKTOP"),
                            XCB_ATOM_CARDINAL, 32, 1, &desktop);
        xcb_flush(other.handle());
        return applications.windows({}).isEmpty();
    }));
    EXPECT_EQ(applications.running({}).size(), 1);
}

TEST_F(LinuxApplicationsTest, APanelIsAWindowOfAnotherLayerAndNoProgramToBeActivated)
{
    const XConnection panels(qEnvironmentVariable("DISPLAY"));
    const xcb_window_t panel = xcb_generate_id(panels.handle());
    xcb_create_window(panels.handle(), XCB_COPY_FROM_PARENT, panel, panels.root(), 0, 0, 400, 30, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t dock = panels.atom("_NET_WM_WINDOW_TYPE_DOCK");
    xcb_change_property(panels.handle(), XCB_PROP_MODE_REPLACE, panel, panels.atom("_NET_WM_WINDOW_TYPE"),
                        XCB_ATOM_ATOM, 32, 1, &dock);
    xcb_change_property(panels.handle(), XCB_PROP_MODE_REPLACE, panel, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        5, "Panel");
    xcb_map_window(panels.handle(), panel);
    xcb_flush(panels.handle());
    LinuxApplications applications;
    ASSERT_TRUE(waitUntil([&] { return !applications.windows({}).isEmpty(); }));
    const DesktopWindow seen = applications.windows({}).first();
    EXPECT_EQ(seen.title, u"Panel"_s);
    EXPECT_EQ(seen.layer, 1);
    EXPECT_TRUE(applications.running({}).isEmpty());
}

TEST_F(LinuxApplicationsTest, AllWindowsOfAProgramComeForwardInTheirOrder)
{
    startWindow(u"widget = Gtk.Label(label='First')\n"
                "second = Gtk.Window(title='Second')\n"
                "GLib.idle_add(second.show_all)"_s);
    const auto titles = [] {
        QStringList seen;
        for (const DesktopWindow &window : LinuxApplications().windows({}))
            seen.append(window.title);
        return seen;
    };
    EXPECT_TRUE(waitUntil([&] { return titles().size() == 2; }));
    const QString name = LinuxApplications().running({}).last().name;
    start(u"xterm"_s, {u"-title"_s, u"Terminal"_s});
    const QStringList before = titles();
    ASSERT_EQ(before.size(), 3);
    ASSERT_EQ(before.first(), u"Terminal"_s);
    run(m_tools.activateApp(name));
    EXPECT_TRUE(waitUntil([&] { return titles() == before.mid(1) + before.mid(0, 1); }))
        << titles().join(u", "_s).toStdString();
}

TEST_F(LinuxApplicationsTest, ARunningProgramIsBroughtToTheFront)
{
    start(u"yad"_s, {u"--form"_s, u"--title=First"_s, u"--field=Name"_s});
    start(u"xterm"_s, {});
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is XTerm."_s);
    const QString name = LinuxApplications().running({}).last().name;
    EXPECT_EQ(run(m_tools.activateApp(name.toUpper())), u"Activated %1."_s.arg(name.toUpper()));
    // At once, since keys may come next.
    EXPECT_EQ(LinuxApplications().frontmost({}).value_or(RunningApplication()).pid,
              m_programs.front()->pid());
}

} // namespace
} // namespace morvane
