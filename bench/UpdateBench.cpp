// What an update costs the program that replaces itself, up to its end: the main window with banner and
// progress, and a listener to every accessibility event, on a private desktop; host, download, hash,
// unpacking and the exchange are real. Prints one JSON object. Needs tar and zstd where no image is given.
// Optional argument: an image of a bundle, such as packaging/make-bundle.sh makes.

#include "MeasuredApplication.h"
#include "MeasuredProgram.h"
#include "ProcMegabytes.h"
#include "RuntimeArchive.h"

#include "app/AppModel.h"
#include "app/UpdateModel.h"
#include "base/InstalledFiles.h"
#include "support/AccessibilityBus.h"
#include "support/PrivateDesktop.h"
#include "support/WaitUntil.h"
#include "tools/FixedColorScheme.h"
#include "ui/controls/AccessibleEvents.h"
#include "ui/theme/Theme.h"
#include "ui/window/MainWindow.h"
#include "update/HostedUpdates.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QTest>
#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// About what is in a bundle, less the web engine, which takes minutes to pack.
constexpr qint64 usualMegabytes = 158;

void writeProgram(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write("#!/bin/sh\n") < 0 ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        std::exit(EXIT_FAILURE);
}

QString makeImage(const QString &folder)
{
    const QString contents = folder + u"/tree/Morvane.app/Contents"_s;
    writeProgram(contents + u"/MacOS/Morvane"_s);
    writeLibrary(contents + u"/library.so"_s, usualMegabytes);
    const QString image = folder + u"/image.tar.zst"_s;
    if (!execute(u"tar"_s, {u"-C"_s, folder + u"/tree"_s, u"-I"_s, u"zstd -q -19 -T0"_s, u"-cf"_s, image,
                            u"Morvane.app"_s}))
        std::exit(EXIT_FAILURE);
    return image;
}

/// Where the update comes from.
class Host {
public:
    explicit Host(const QString &image)
        : m_server([this, image](RawHttpConnection &connection) { serve(connection, image); })
    {
        QFile file(image);
        QCryptographicHash hash(QCryptographicHash::Sha256);
        if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
            std::exit(EXIT_FAILURE);
        m_manifest = R"({"version": "9.0", "build": 9, "date": "2026-11-22", "notes": [], "dmg": ")" +
                     (origin() + u"/image"_s).toUtf8() + R"(", "sha256": ")" + hash.result().toHex() + "\"}";
    }

    QString origin() const { return u"http://127.0.0.1:%1"_s.arg(m_server.port()); }

private:
    void serve(RawHttpConnection &connection, const QString &image) const
    {
        const auto request = connection.readRequest();
        if (!request)
            return;
        if (request->target.endsWith("latest.json"))
            connection.send(rawHttpResponse(200, m_manifest));
        else
            sendFile(connection, image);
    }

    QByteArray m_manifest;
    RawHttpServer m_server;
};

/// The program with nothing made up that takes part in the update.
struct Updated : MeasuredProgram {
    explicit Updated(const UpdateHost &host)
        : hosted(http, host, {u"1.0"_s, 1}, {home.path(u"Morvane.app"_s), home.path()}, home.path(),
                 [this] { hasEnded = true; }),
          services(servicesAround({.scheduler = scheduler,
                                   .settings = settings,
                                   .conversations = store,
                                   .executeTool = [](ToolPermit) -> Task<ToolResult> { co_return QString(); },
                                   .machine = u"This machine."_s,
                                   .updates = &hosted})),
          settingsServices(settingsServicesAround(services, 16)), model(services)
    {
        const QString contents = home.path(u"Morvane.app/Contents"_s);
        writeProgram(contents + u"/MacOS/Morvane"_s);
        writeProgram(InstalledFiles(contents).helper(u"morvane-relauncher"_s));
    }
    ~Updated() { scheduler.shutdown(std::chrono::seconds(5)); }

    bool hasEnded = false; ///< Where the program would.
    HostedUpdates hosted;
    AppServices services;
    SettingsServices settingsServices;
    AppModel model;
};

/// The most resident memory since the last call, in millions of bytes.
double peakMemory()
{
    const double peak = procMegabytes(u"self"_s, "status", "VmHWM");
    QFile references(u"/proc/self/clear_refs"_s);
    if (!references.open(QIODevice::WriteOnly) || references.write("5") < 0)
        std::exit(EXIT_FAILURE);
    return peak;
}

int run(int count, char **arguments)
{
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    const PrivateDesktop desktop;
    desktop.adopt();
    MeasuredApplication application(count, arguments);
    const QTemporaryDir folder;
    const QString image = count > 1 ? QString::fromLocal8Bit(arguments[1]) : makeImage(folder.path());
    const Host host(image);
    Updated program({host.origin(), host.origin(), {}});
    const FixedColorScheme scheme(ColorScheme::Preference::none);
    const Theme theme(scheme);
    installAccessibleEventFilter();
    MainWindow window(program.model, {program.announcer, program.browserWindow, program.servers.manager,
                                      program.settingsServices, program.attachments});
    window.show();
    AccessibilityBus reader(desktop.sessionBusAddress());
    reader.registerEvent(u"object:"_s);
    UpdateModel &updates = program.model.updates();
    if (!QTest::qWaitForWindowExposed(&window))
        return EXIT_FAILURE;
    updates.startCheck();
    if (!waitUntil([&updates] { return updates.alert().has_value(); }))
        return EXIT_FAILURE;
    QTest::qWait(1000); // what shows the windows has been done

    using Phase = UpdateInstallPhase;
    const auto &phase = updates.updateInstallPhase().state;
    double whileUnpacking = 0;
    double whileDownloading = 0;
    double untilInstalling = 0;
    application.longest = 0;
    application.longestProcessor = 0;
    peakMemory();
    const double before = procMegabytes(u"self"_s, "status", "VmRSS");
    QElapsedTimer time;
    QObject::connect(&updates, &UpdateModel::updateInstallPhaseChanged, &window, [&] {
        if (!std::holds_alternative<Phase::Installing>(phase))
            return;
        untilInstalling = static_cast<double>(time.elapsed()) / 1000;
        whileDownloading = peakMemory() - before;
    });
    time.start();
    updates.installFromAlert();
    while (!program.hasEnded && !std::holds_alternative<Phase::Failed>(phase))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    whileUnpacking = peakMemory() - before;
    std::printf("{\"imageMegabytes\": %.1f, \"installed\": %s, \"secondsUntilEnd\": %.1f, "
                "\"secondsOfDownload\": %.1f, \"moreMemoryMegabytesWhileHashing\": %.1f, "
                "\"moreMemoryMegabytesWhileUnpacking\": %.1f, \"longestHoldProcessorMilliseconds\": %.2f, "
                "\"in\": \"%s\", \"longestHoldMilliseconds\": %.2f}\n",
                static_cast<double>(QFileInfo(image).size()) / 1e6, program.hasEnded ? "true" : "false",
                static_cast<double>(time.elapsed()) / 1000, untilInstalling, whileDownloading, whileUnpacking,
                static_cast<double>(application.longestProcessor) / 1e6, application.longestEvent.constData(),
                static_cast<double>(application.longest) / 1e6);
    return program.hasEnded ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace
} // namespace morvane

int main(int count, char **arguments)
{
    return morvane::run(count, arguments);
}
