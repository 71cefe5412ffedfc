#include "app/AppModel.h"
#include "app/AppServices.h"
#include "app/MCPToolServers.h"
#include "app/NotificationService.h"
#include "app/PermissionsModel.h"
#include "async/Scheduler.h"
#include "async/Sleep.h"
#include "async/SystemClock.h"
#include "attachments/AttachmentWorkers.h"
#include "base/AtomicFile.h"
#include "base/DataFolders.h"
#include "base/InstalledFiles.h"
#include "base/Log.h"
#include "browser/pages/BrowserEngine.h"
#include "browser/tabs/PageNotifications.h"
#include "browser/window/BuiltInBrowser.h"
#include "localmodel/DiskSpace.h"
#include "localmodel/LocalModelManager.h"
#include "localmodel/MachineProfile.h"
#include "mcp/HttpTransport.h"
#include "mcp/MCPManager.h"
#include "mcp/StdioThread.h"
#include "mcp/StdioTransport.h"
#include "net/HttpClient.h"
#include "outside/OutsideWorld.h"
#include "platform/NoKeychain.h"
#include "platform/linux/AccessibilityGate.h"
#include "platform/linux/LinuxAnnouncer.h"
#include "platform/linux/LinuxColorScheme.h"
#include "platform/linux/LinuxDesktopSettings.h"
#include "platform/linux/LinuxMachineFacts.h"
#include "platform/linux/LinuxSingleInstance.h"
#include "platform/linux/LinuxUrlOpener.h"
#include "platform/linux/LinuxWindowRaiser.h"
#include "platform/linux/TerminationSignals.h"
#include "platform/linux/desktop/LinuxAccessibilityTree.h"
#include "platform/linux/desktop/LinuxApplications.h"
#include "platform/linux/desktop/LinuxClipboard.h"
#include "platform/linux/desktop/LinuxInputEvents.h"
#include "platform/linux/desktop/LinuxPasteSource.h"
#include "platform/linux/desktop/LinuxScreenCapture.h"
#include "platform/linux/desktop/LinuxTextRecognizer.h"
#include "platform/linux/notifications/LinuxDeliveryAlarm.h"
#include "platform/linux/notifications/LinuxNotificationCenter.h"
#include "platform/linux/notifications/LinuxSoundPlayer.h"
#include "providers/HttpAIService.h"
#include "providers/HttpModelCatalog.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"
#include "tools/reminders/ReminderStore.h"
#include "tools/screen/RealSequenceClock.h"
#include "tools/screen/ScreenTools.h"
#include "ui/controls/AccessibleEvents.h"
#include "ui/controls/CursorRest.h"
#include "ui/controls/FieldPasting.h"
#include "ui/theme/AppMark.h"
#include "ui/theme/Theme.h"
#include "ui/window/MainWindow.h"
#include "ui/window/WindowCommands.h"
#include "update/HostedUpdates.h"
#include "update/RunningBundle.h"
#include "update/UpdateRemains.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QThreadPool>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <tuple>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

/// How long tasks may take to end with the program; what is slower is dropped.
constexpr std::chrono::milliseconds shutdownLimit{1000};

/// Threads for work off the main thread. Most of that work waits for disks, and a tool that takes minutes
/// goes on after its request was cancelled: a pool of one thread for each processor would soon have none left
/// to build the next request on. Threads end when they are idle.
constexpr int mostWorkers = 32;

/// Between the tool servers and the quiet look for updates.
constexpr std::chrono::seconds beforeUpdateCheck{3};

/// What the desktop left in the environment for the window of this start. The application object takes the
/// variables out later, so that programs which Morvane starts do not use them a second time.
ActivationToken activationToken()
{
    return {qgetenv("DESKTOP_STARTUP_ID"), qgetenv("XDG_ACTIVATION_TOKEN")};
}

std::unique_ptr<MCPTransport> makeTransport(const MCPServerConfig &server,
                                            const std::shared_ptr<PendingRequests> &requests,
                                            Scheduler &scheduler, HttpClient &http, StdioThread &processes)
{
    if (server.isRemote())
        return std::make_unique<HttpTransport>(server.url, scheduler, http, requests);
    return std::make_unique<StdioTransport>(server.command, server.args, processes, requests);
}

/// What the window does not need to be usable, one after the other.
Task<void> onceTheWindowIsThere(ScreenTools *screen, MCPManager *servers, AppModel *model)
{
    co_await screen->warmKeyboardLayout();
    model->localModel().refreshThenInstall(LocalModelFlow::Occasion::programStart);
    co_await servers->refreshAll();
    co_await sleepFor(beforeUpdateCheck);
    co_await model->updates().checkForUpdates(UpdateModel::Occasion::programStart);
}

int runProgram(QApplication &application, LinuxSingleInstance &instance, const OutsideWorld &outside)
{
    const TerminationSignals terminationSignals;
    const InstalledFiles files = InstalledFiles::aroundProgram();
    SystemClock clock;
    Scheduler scheduler(clock);
    HttpClient http;
    NoKeychain keychain;
    SettingsStore settings(settingsFile(), keychain);
    ConversationStore conversations(dataFolder() + u"/Conversations"_s);
    HttpAIService service(http, outside.endpoints);
    LinuxAnnouncer announcer;
    LinuxDeliveryAlarm alarm(LinuxDeliveryAlarm::realSurroundings(files.helper(u"morvane-reminder"_s)));
    LinuxNotificationCenter center(
        scheduler, alarm, [] { return QGuiApplication::applicationState() == Qt::ApplicationActive; });
    LinuxSoundPlayer sounds(files.sounds());
    ReminderStore reminders(scheduler, settingsFile(), center, sounds, announcer);
    NotificationService notifications(scheduler, center, sounds, announcer, reminders);
    const Desktop desktop{std::make_shared<LinuxScreenCapture>(),
                          std::make_shared<LinuxTextRecognizer>(files.helper(u"morvane-text-recognizer"_s)),
                          std::make_shared<LinuxAccessibilityTree>(files.helper(u"morvane-action-carrier"_s)),
                          std::make_shared<LinuxApplications>(),
                          std::make_shared<LinuxInputEvents>(),
                          std::make_shared<LinuxClipboard>(),
                          std::make_shared<RealSequenceClock>()};
    ScreenTools screen(desktop);
    AttachmentWorkers attachments{
        AttachmentProcessor(ReaderProcess(files.helper(u"morvane-attachment-reader"_s)))};
    LinuxUrlOpener urls;
    LinuxWindowRaiser raiser;
    LinuxColorScheme colorScheme;
    const QString engineModule = files.module(u"libmorvane-browser.so"_s);
    PageNotifications pageNotifications(center);
    const auto startEngine = [&] {
        const bool prefersDark = colorScheme.preference() == ColorScheme::Preference::dark;
        return loadBrowserEngine(engineModule, {.folder = dataFolder() + u"/Browser"_s,
                                                .prefersDark = prefersDark,
                                                .isHeard = announcer.isHeard(),
                                                .showNotification = [&](const auto &notification) {
                                                    pageNotifications.show(notification);
                                                }});
    };
    BuiltInBrowser browser(
        {scheduler, announcer, http, urls, raiser, attachments, dataFolder(), files.help(), startEngine},
        QFile::exists(engineModule) ? QString()
                                    : u"the built-in browser is not part of this installation."_s);
    BuiltinTools tools(http, reminders, screen, browser);
    StdioThread serverProcesses(QFile::encodeName(files.helper(u"morvane-server-guard"_s)));
    MCPManager serverManager(
        scheduler, dataFolder(),
        [&](const MCPServerConfig &server, const std::shared_ptr<PendingRequests> &requests) {
            return makeTransport(server, requests, scheduler, http, serverProcesses);
        });
    MCPToolServers toolServers(serverManager);
    HostedUpdates updates(http, outside.updates, outside.version,
                          RunningBundle::ofProgram(QApplication::applicationFilePath()), QDir::tempPath(),
                          &QCoreApplication::quit);
    LocalModelManager localModel(http, {outside.endpoints.ollama, outside.runtimeSite, dataFolder(),
                                        outside.runtimePrograms, freeDiskSpace});
    HttpModelCatalog modelCatalog(http, outside.endpoints);
    const LinuxMachineFacts machineFacts;
    const MachineProfile machine(machineFacts);

    const auto machineSummary = [&machine] { return machine.current().summary(); };
    AppModel model({
        scheduler,
        settings,
        conversations,
        service,
        announcer,
        notifications,
        toolServers,
        browser,
        updates,
        urls,
        localModel,
        attachments,
        [&tools](ToolPermit permit) { return tools.execute(std::move(permit)); },
        machineSummary,
    });
    LinuxDesktopSettings desktopSettings;
    PermissionsModel permissions(scheduler, announcer, desktop.screen, desktop.input, center,
                                 desktopSettings);
    const SettingsServices settingsServices{
        scheduler,   settings,       modelCatalog,
        urls,        machineSummary, [&machine] { return machine.current().ramGB; },
        permissions,
    };
    installAccessibleEventFilter();
    const CursorRest cursorRest;
    LinuxPasteSource pasteSource;
    FieldPasting pasting(scheduler, pasteSource, announcer);
    WindowCommands windowCommands(pasting);
    const AccessibilityGate accessibilityGate(windowCommands);
    const Theme theme(colorScheme);
    QApplication::setWindowIcon(appIcon());
    MainWindow window(model, {announcer, browser, serverManager, settingsServices, attachments, &pasting});
    window.show();

    const auto activate = [&window, &raiser](const ActivationToken &token) {
        raiser.activate(*window.windowHandle(), token);
    };
    instance.listen(activate);
    browser.attach({model, model.updates(), &pasting, [&activate] { activate({}); }});
    QObject::connect(&center.banners(), &LinuxBanners::chosen, &window, activate);
    // The window comes first; what it does not need to be usable waits for its first turn.
    QTimer::singleShot(0, &model, [&] {
        notifications.configure();
        reminders.reschedulePending();
        reminders.startMonitoring();
        scheduler.spawn(onceTheWindowIsThere(&screen, &serverManager, &model));
        scheduler.spawn(updates.removeRemains());
    });

    const int status = application.exec();
    model.prepareToQuit();
    scheduler.shutdown(shutdownLimit);
    browser.shutDown();
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    // Begins anew in its place: where libraries are looked for was settled when the process began.
    if (const QString program = returnToPlace(QFile::symLinkTarget(u"/proc/self/exe"_s)); !program.isEmpty())
        ::execv(QFile::encodeName(program).constData(), argv);

    // A screen reader that is started later never sees a program that was silent at its start.
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");

    // Narrows a folder that an older version or a careless hand left open; a failure shows where it is used.
    if (const auto folderIsThere = ensurePrivateFolder(dataFolder()); !folderIsThere)
        qCWarning(baseLog) << "no folder for the data:" << folderIsThere.error();
    LinuxSingleInstance instance(dataFolder());
    switch (instance.claim(activationToken())) {
    case SingleInstance::Claim::first:
        break;
    case SingleInstance::Claim::handedOver:
        return 0;
    case SingleInstance::Claim::unanswered:
        std::fputs("Morvane is already running but does not answer.\n", stderr);
        return 1;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"Morvane"_s);
    const OutsideWorld outside = outsideWorld(dataFolder());
    QApplication::setApplicationVersion(outside.version.version);
    application.setProperty("buildNumber", outside.version.build);
    if (outside.updates.isUnusual())
        application.setProperty("unusualUpdateOrigin", outside.updates.origin);
    QApplication::setDesktopFileName(u"morvane"_s);
    QThreadPool::globalInstance()->setMaxThreadCount(mostWorkers);
    const int status = runProgram(application, instance, outside);
    // By now all is saved. The application's end would wait for whatever still works off the main thread,
    // such as a search of a whole disk, and hold the lock of the single instance meanwhile.
    if (!QThreadPool::globalInstance()->waitForDone(int(shutdownLimit.count())))
        std::_Exit(status);
    return status;
}
