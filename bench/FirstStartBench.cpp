// How long the main thread is held while a newcomer is greeted and the local model set up: the main window
// with the greeting, the settings beside it, and a listener to every accessibility event, on a private
// desktop. The runtime comes from loopback, is unpacked, started and pulls its model, all by the real
// manager; the runtime itself is the scripted one, whose pull prints its frames as fast as they are read.
// Prints one JSON object. Needs tar and zstd. Optional argument: the size of what is in the archive, in
// megabytes.

#include "MeasuredApplication.h"
#include "MeasuredProgram.h"
#include "RuntimeArchive.h"

#include "app/AppModel.h"
#include "localmodel/LocalModelManager.h"
#include "localmodel/RuntimeProgram.h"
#include "support/AccessibilityBus.h"
#include "support/PrivateDesktop.h"
#include "support/RuntimeState.h"
#include "support/UnusedPort.h"
#include "support/WaitUntil.h"
#include "tools/FixedColorScheme.h"
#include "ui/controls/AccessibleEvents.h"
#include "ui/settings/SettingsView.h"
#include "ui/theme/Theme.h"
#include "ui/window/MainWindow.h"

#include <QTest>
#include <cstdio>
#include <future>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr int pulledFrames = 20'000;

/// What the pull prints, in the frames of the real program.
QByteArray frames()
{
    QByteArray bytes;
    for (int frame = 0; frame < pulledFrames; ++frame) {
        const QByteArray percent = QByteArray::number(frame * 100 / pulledFrames);
        bytes += "\x1b[?2026h\x1b[?25l\x1b[A\x1b[1Gpulling manifest\x1b[K\npulling 6a0746a1ec1a: " + percent +
                 "% ▕██ ▏ " + QByteArray::number(frame * 4700 / pulledFrames) +
                 " MB/4.7 GB\x1b[K\x1b[?25h\x1b[?2026l";
    }
    return bytes + '\n';
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A newcomer's program with nothing made up that takes part in the setup.
struct Newcomer : MeasuredProgram {
    explicit Newcomer(const QString &site)
    {
        settings.setProviderID(ProviderID::ollama);
        settings.setModel(u"qwen2.5"_s);
        service.willTurn(FakeAIService::Turn{}); // the request that loads the model
        runtime.tell(u"pull-output"_s, frames());
        qputenv("SCRIPTED_RUNTIME", runtime.folder().toUtf8());
        manager = std::make_unique<LocalModelManager>(
            http, LocalModelManager::Surroundings{u"http://127.0.0.1:%1"_s.arg(unusedPort()),
                                                  site,
                                                  home.path(u"data"_s),
                                                  {home.path(u"data/ollama"_s)},
                                                  [] { return -1; }});
        services = std::make_unique<AppServices>(AppServices{
            .scheduler = scheduler,
            .settings = settings,
            .conversations = store,
            .service = service,
            .announcer = announcer,
            .notifications = notifications,
            .toolServers = toolServers,
            .browserWindow = browserWindow,
            .updates = updates,
            .urls = urls,
            .localModel = *manager,
            .attachments = attachments,
            .executeTool = [](ToolPermit) -> Task<ToolResult> { co_return QString(); },
            .machineSummary = [] { return u"This machine."_s; },
        });
        settingsServices = std::make_unique<SettingsServices>(settingsServicesAround(*services, 16));
        model = std::make_unique<AppModel>(*services);
    }
    ~Newcomer() { scheduler.shutdown(std::chrono::seconds(5)); }

    RuntimeState runtime{home.path(u"runtime"_s)};
    std::unique_ptr<LocalModelManager> manager;
    std::unique_ptr<AppServices> services;
    std::unique_ptr<SettingsServices> settingsServices;
    std::unique_ptr<AppModel> model;
};

int run(int count, char **arguments)
{
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    const PrivateDesktop desktop;
    desktop.adopt();
    MeasuredApplication application(count, arguments);
    const qint64 megabytes = count > 1 ? std::atoll(arguments[1]) : 1024;
    const QTemporaryDir folder;
    const QString archive = makeRuntimeArchive(
        folder.path(), contentOf(QCoreApplication::applicationDirPath() + u"/scripted-runtime"_s), megabytes);
    std::promise<void> isWatched; // the download begins when all stands there
    RawHttpServer server([&archive, begin = isWatched.get_future().share()](RawHttpConnection &connection) {
        begin.wait();
        serveFile(connection, archive);
    });
    Newcomer newcomer(u"http://127.0.0.1:%1"_s.arg(server.port()));
    const FixedColorScheme scheme(ColorScheme::Preference::none);
    const Theme theme(scheme);
    installAccessibleEventFilter();
    MainWindow window(*newcomer.model, {newcomer.announcer, newcomer.browserWindow, newcomer.servers.manager,
                                        *newcomer.settingsServices, newcomer.attachments});
    application.watched = &window;
    window.show();
    SettingsView settings(*newcomer.settingsServices, newcomer.model->localModel(), newcomer.servers.manager,
                          newcomer.announcer, nullptr);
    settings.show();
    AccessibilityBus reader(desktop.sessionBusAddress());
    int events = 0;
    QObject::connect(&reader, &AccessibilityBus::eventReceived, [&events] { ++events; });
    reader.registerEvent(u"object:"_s);
    LocalModelFlow &flow = newcomer.model->localModel();
    if (!QTest::qWaitForWindowExposed(&window) || !QTest::qWaitForWindowExposed(&settings) ||
        !waitUntil([&flow] { return flow.info().progress.startsWith(u"Downloading"_s); }) ||
        !waitUntil([&application] { return application.paints > 0; }))
        return EXIT_FAILURE;
    QTest::qWait(1000); // what else shows the windows has been done

    application.longest = 0;
    application.longestProcessor = 0;
    application.paints = 0;
    events = 0;
    int updates = 0;
    QObject::connect(&flow, &LocalModelFlow::changed, [&updates] { ++updates; });
    QElapsedTimer time;
    time.start();
    isWatched.set_value();
    while (!flow.info().running && flow.info().error.isEmpty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double seconds = static_cast<double>(time.elapsed()) / 1000;
    std::printf("{\"archiveMegabytes\": %lld, \"seconds\": %.1f, \"ready\": %s, \"updates\": %d, "
                "\"accessibilityEvents\": %d, \"paints\": %d, \"longestHoldProcessorMilliseconds\": %.2f, "
                "\"in\": \"%s\", \"longestHoldMilliseconds\": %.2f}\n",
                static_cast<long long>(QFileInfo(archive).size() / megabyte), seconds,
                flow.info().running ? "true" : "false", updates, events, application.paints,
                static_cast<double>(application.longestProcessor) / 1e6, application.longestEvent.constData(),
                static_cast<double>(application.longest) / 1e6);
    return flow.info().running ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace
} // namespace morvane

int main(int count, char **arguments)
{
    return morvane::run(count, arguments);
}
