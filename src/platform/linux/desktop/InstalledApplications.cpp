#include "platform/linux/desktop/InstalledApplications.h"

#include "base/FileDescriptor.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>
#include <array>
#include <chrono>
#include <functional>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <memory>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// How long a program that the bus starts may take to be there.
constexpr std::chrono::milliseconds timeToServe{20000};

struct Unref {
    void operator()(void *object) const { g_object_unref(object); }
};
template <class T> using Owned = std::unique_ptr<T, Unref>;
using Application = Owned<GAppInfo>;

/// What a program of the user's must not get from this one.
constexpr const char *ownVariables[] = {"QTWEBENGINE_DISABLE_SANDBOX", "QTWEBENGINE_CHROMIUM_FLAGS",
                                        "QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "DESKTOP_STARTUP_ID",
                                        "XDG_ACTIVATION_TOKEN"};

QString menuName(GAppInfo *application)
{
    return QString::fromUtf8(g_app_info_get_display_name(application));
}

QString plainName(GAppInfo *application)
{
    return QString::fromUtf8(g_app_info_get_name(application));
}

/// What GIO's list has, which learns a moment late of files that come and go.
std::vector<Application> listedApplications()
{
    std::vector<Application> applications;
    GList *const list = g_app_info_get_all();
    for (GList *entry = list; entry; entry = entry->next)
        applications.emplace_back(static_cast<GAppInfo *>(entry->data));
    g_list_free(list);
    return applications;
}

/// What lies in the folders at this moment: a program may have been installed just before it is to be opened.
std::vector<Application> installedApplications()
{
    std::vector<Application> applications;
    QSet<QString> seen;
    for (const QString &folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
        QDirIterator files(folder, {u"*.desktop"_s}, QDir::Files,
                           QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
        while (files.hasNext()) {
            const QString path = files.next();
            // The first file of an id counts, also one that only hides the others.
            const QString id = path.mid(folder.size() + 1).replace(u'/', u'-');
            if (seen.contains(id))
                continue;
            seen.insert(id);
            GDesktopAppInfo *const found =
                g_desktop_app_info_new_from_filename(QFile::encodeName(path).constData());
            if (!found)
                continue;
            Application application(G_APP_INFO(found));
            if (!g_desktop_app_info_get_is_hidden(found))
                applications.push_back(std::move(application));
        }
    }
    return applications;
}

/// The one application that `matches`; none if there are several.
template <class Matches> GAppInfo *onlyOne(const std::vector<Application> &applications, Matches matches)
{
    GAppInfo *found = nullptr;
    for (const Application &application : applications) {
        if (!matches(application.get()))
            continue;
        if (found && menuName(found) != menuName(application.get()))
            return nullptr;
        if (!found)
            found = application.get();
    }
    return found;
}

Application findByName(const QString &name)
{
    const std::vector<Application> all = installedApplications();
    const auto isShown = [](GAppInfo *application) { return g_app_info_should_show(application) != FALSE; };
    const auto isNamed = [&](GAppInfo *application, Qt::CaseSensitivity sensitivity) {
        return menuName(application).compare(name, sensitivity) == 0 ||
               plainName(application).compare(name, sensitivity) == 0;
    };
    const auto first = [&](auto matches) -> GAppInfo * {
        for (const Application &application : all)
            if (matches(application.get()))
                return application.get();
        return nullptr;
    };
    GAppInfo *found = first([&](GAppInfo *a) { return isShown(a) && isNamed(a, Qt::CaseSensitive); });
    if (!found)
        found = first([&](GAppInfo *a) { return isShown(a) && isNamed(a, Qt::CaseInsensitive); });
    if (!found)
        found = first([&](GAppInfo *a) { return isNamed(a, Qt::CaseInsensitive); });
    if (!found)
        found = onlyOne(
            all, [&](GAppInfo *a) { return isShown(a) && menuName(a).contains(name, Qt::CaseInsensitive); });
    return Application(found ? static_cast<GAppInfo *>(g_object_ref(found)) : nullptr);
}

void leaveTheGroup(gpointer)
{
    ::setsid();
}

void remember(GDesktopAppInfo *, GPid pid, gpointer child)
{
    *static_cast<pid_t *>(child) = pid;
}

/// Has GIO give up its waiting as soon as `stop` is asked for.
class GiveUpOnStop {
public:
    explicit GiveUpOnStop(const std::stop_token &stop)
        : m_callback(stop, [this] { g_cancellable_cancel(m_cancellable.get()); })
    {
    }
    ~GiveUpOnStop()
    {
        if (m_descriptor >= 0)
            g_cancellable_release_fd(m_cancellable.get());
    }
    GiveUpOnStop(const GiveUpOnStop &) = delete;
    GiveUpOnStop &operator=(const GiveUpOnStop &) = delete;

    GCancellable *cancellable() const { return m_cancellable.get(); }
    /// Can be read once `stop` has been asked for.
    int descriptor() const { return m_descriptor; }

private:
    const Owned<GCancellable> m_cancellable{g_cancellable_new()};
    const int m_descriptor = g_cancellable_get_fd(m_cancellable.get());
    const std::stop_callback<std::function<void()>> m_callback;
};

/// Whether the bus runs the program with this name, which it starts first where that is needed.
bool isServed(GDBusConnection *bus, const char *name, GCancellable *stop)
{
    GVariant *const reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "StartServiceByName",
        g_variant_new("(su)", name, 0U), G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE,
        int(timeToServe.count()), stop, nullptr);
    if (reply)
        g_variant_unref(reply);
    return reply != nullptr;
}

/// What the user opens such addresses with; for files it is their kind that tells.
Application usualFor(const QByteArray &scheme, const QByteArray &address)
{
    if (scheme != "file")
        return Application(g_app_info_get_default_for_uri_scheme(scheme.constData()));
    const Owned<GFile> file(g_file_new_for_uri(address.constData()));
    return Application(g_file_query_default_handler(file.get(), nullptr, nullptr));
}

Application byDesktopId(const QString &id)
{
    if (id.isEmpty() || id.contains(u'/'))
        return nullptr;
    const QByteArray file = (id.endsWith(".desktop"_L1) ? id : id + u".desktop"_s).toUtf8();
    GDesktopAppInfo *const found = g_desktop_app_info_new(file.constData());
    return Application(found ? G_APP_INFO(found) : nullptr);
}

} // namespace

QString InstalledApplications::nameFor(const QByteArray &windowClass, const QString &applicationId)
{
    // Two texts, each ended by a zero: what the program calls this window, and itself.
    const QList<QByteArray> parts = windowClass.split('\0');
    const QString instance = QString::fromUtf8(parts.value(0));
    const QString ownClass = QString::fromUtf8(parts.value(1));
    for (const QString &id : {applicationId, ownClass, ownClass.toLower(), instance})
        if (const Application application = byDesktopId(id))
            return menuName(application.get());
    for (const Application &application : listedApplications()) {
        const char *const startupClass =
            g_desktop_app_info_get_startup_wm_class(G_DESKTOP_APP_INFO(application.get()));
        const QString wanted = QString::fromUtf8(startupClass);
        if (!wanted.isEmpty() && (wanted == ownClass || wanted == instance))
            return menuName(application.get());
    }
    return ownClass.isEmpty() ? instance : ownClass;
}

bool InstalledApplications::launch(const QString &name, const QList<QByteArray> &addresses,
                                   const std::stop_token &stop)
{
    const Application application = name.isEmpty() ? nullptr : findByName(name);
    return application && start(application.get(), addresses, stop);
}

bool InstalledApplications::launchFor(const QByteArray &scheme, const QByteArray &address,
                                      const std::stop_token &stop)
{
    const Application application = usualFor(scheme, address);
    return application && start(application.get(), {address}, stop);
}

bool InstalledApplications::start(void *application, const QList<QByteArray> &addresses,
                                  const std::stop_token &stop)
{
    buryTheDead();
    const GiveUpOnStop stopped(stop);
    // Programs that the bus starts are asked for over a shared connection, which must not end this process
    // when the bus does.
    const Owned<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, stopped.cancellable(), nullptr));
    if (bus)
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    auto *const desktopFile = static_cast<GDesktopAppInfo *>(application);
    const QByteArray id = QFileInfo(QFile::decodeName(g_desktop_app_info_get_filename(desktopFile)))
                              .completeBaseName()
                              .toUtf8();
    if (bus && g_desktop_app_info_get_boolean(desktopFile, "DBusActivatable") &&
        g_dbus_is_name(id.constData()) && !isServed(bus.get(), id.constData(), stopped.cancellable()))
        return false;
    if (stop.stop_requested())
        return false;
    const Owned<GAppLaunchContext> context(g_app_launch_context_new());
    for (const char *variable : ownVariables)
        g_app_launch_context_unsetenv(context.get(), variable);
    GList *list = nullptr;
    for (const QByteArray &address : addresses)
        list = g_list_append(list, const_cast<char *>(address.constData()));
    pid_t child = 0;
    const auto flags = GSpawnFlags(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD |
                                   G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
    const bool started =
        g_desktop_app_info_launch_uris_as_manager(desktopFile, list, context.get(), flags, leaveTheGroup,
                                                  nullptr, remember, &child, nullptr) != FALSE;
    g_list_free(list);
    return started && (child == 0 || survives(child, stopped.descriptor()));
}

bool InstalledApplications::survives(pid_t child, int stopped)
{
    const FileDescriptor end(int(::syscall(SYS_pidfd_open, child, 0)));
    std::array waiting{pollfd{end.get(), POLLIN, 0}, pollfd{stopped, POLLIN, 0}};
    ::poll(waiting.data(), waiting.size(), int(m_timeToFail.count()));
    int status = 0;
    if (::waitpid(child, &status, WNOHANG) == child)
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    const std::lock_guard lock(m_mutex);
    m_children.append(child);
    return true;
}

void InstalledApplications::buryTheDead()
{
    const std::lock_guard lock(m_mutex);
    m_children.removeIf([](pid_t child) { return ::waitpid(child, nullptr, WNOHANG) != 0; });
}

} // namespace morvane
