#include "BuildTree.h"
#include "MorvaneTest.h"

#include "support/ClipboardOwner.h"
#include "support/PageServer.h"
#include "support/SamplePdf.h"
#include "support/SamplePictures.h"
#include "support/TemporaryHome.h"
#include "support/TlsServer.h"
#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a bundle takes from the system: the C library with the compiler's, and what speaks to the X server,
/// with what that loads by itself.
const QRegularExpression &librariesOfTheSystem()
{
    static const QRegularExpression names(
        uR"(^(ld-linux.*|lib(c|m|dl|pthread|rt|resolv|gcc_s)|libstdc\+\+|libX11|libX11-xcb|libxcb|libXau|libXdmcp|libXcursor)\.so)"_s);
    return names;
}

/// The libraries in a list of paths that lie neither in `folder` nor among those of the system.
QString strangers(const QString &list, const QString &folder)
{
    static const QRegularExpression library(uR"((/\S[^\n(]*\.so[.\d]*)( \(|$))"_s,
                                            QRegularExpression::MultilineOption);
    QStringList found;
    for (const auto &match : library.globalMatch(list)) {
        const QString path = match.captured(1);
        if (!path.startsWith(folder + u'/') &&
            !librariesOfTheSystem().match(QFileInfo(path).fileName()).hasMatch())
            found.append(path);
    }
    found.removeDuplicates();
    return found.join(u'\n');
}

QString outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    constexpr int limit = 120'000;
    EXPECT_TRUE(process.waitForFinished(limit) && process.exitCode() == 0) << program.toStdString();
    const QString output = QString::fromUtf8(process.readAll());
    EXPECT_EQ(process.exitCode(), 0) << output.toStdString();
    return output;
}

/// The processes of a program.
QStringList processesOf(const QString &program)
{
    QStringList processes = QDir(u"/proc"_s).entryList(QDir::Dirs);
    processes.removeIf([&program](const QString &process) {
        return QFile::symLinkTarget(u"/proc/"_s + process + u"/exe"_s) != program;
    });
    return processes;
}

/// The files that a process has loaded.
QString loadedBy(const QString &process)
{
    QFile maps(u"/proc/%1/maps"_s.arg(process));
    EXPECT_TRUE(maps.open(QIODevice::ReadOnly));
    return QString::fromUtf8(maps.readAll());
}

enum class Place { prefix, bundle };

std::string nameOf(const testing::TestParamInfo<Place> &place)
{
    return place.param == Place::prefix ? "InAPrefix" : "InABundle";
}

/// The whole program in places that it was not built for: below a prefix, and in a bundle that was moved. It
/// finds each of its parts there.
class InstalledTest : public MorvaneTest, public testing::WithParamInterface<Place> {
protected:
    static void SetUpTestSuite()
    {
        s_folder = std::make_unique<QTemporaryDir>();
        for (const QString &component : {u"program"_s, u"browser"_s})
            outputOf(u"cmake"_s, {u"--install"_s, build_tree::root(), u"--prefix"_s, root(Place::prefix),
                                  u"--component"_s, component});
        const QString made = s_folder->filePath(u"Made.app"_s);
        outputOf(QStringLiteral(MORVANE_SOURCE_DIR "/packaging/assemble-bundle.py"),
                 {build_tree::root(), made});
        QDir().mkpath(QFileInfo(bundle()).path());
        ASSERT_TRUE(QDir().rename(made, bundle()));
    }
    static void TearDownTestSuite() { s_folder.reset(); }

    static QString bundle() { return s_folder->filePath(u"programs of mine/Morvane 1.app"_s); }
    static QString root(Place place)
    {
        return place == Place::prefix ? s_folder->filePath(u"usr"_s) : bundle() + u"/Contents"_s;
    }
    static QString program(Place place)
    {
        return root(place) + (place == Place::prefix ? u"/bin/morvane"_s : u"/MacOS/Morvane"_s);
    }

    MorvaneSession &prepareInstalled(std::vector<ScriptedTurn> turns)
    {
        ModelScript script;
        script.turns = std::move(turns);
        return prepareProgram(program(GetParam()), std::move(script), Hearing::announcements, u"home"_s);
    }

private:
    static std::unique_ptr<QTemporaryDir> s_folder;
};

std::unique_ptr<QTemporaryDir> InstalledTest::s_folder;

INSTANTIATE_TEST_SUITE_P(Places, InstalledTest, testing::Values(Place::prefix, Place::bundle), nameOf);

TEST_P(InstalledTest, TheHelpLiesBesideTheProgram)
{
    EXPECT_TRUE(QFile::exists(root(GetParam()) + u"/share/morvane/help/index.html"_s));
}

TEST_P(InstalledTest, AttachedScansAndPicturesAreRead)
{
    MorvaneSession &morvane = prepareInstalled({ScriptedTurn::saying({"I have read both."})});
    morvane.setSetting(u"model"_s, u"scripted-vision"_s);
    morvane.start();
    const TemporaryHome files;
    const ClipboardOwner clipboard(
        morvane.display(),
        {{"text/uri-list",
          uriList(
              {files.write(u"photo.webp"_s, encoded(samplePhoto({1'600, 100}), "webp", 80)),
               files.write(u"scan.pdf"_s, samplePdf({{SamplePage::Kind::scanned, u"Dear reader"_s}}))})}});
    const auto field = u"Message Morvane"_s;
    morvane.program().find(field).takeFocus();
    ASSERT_TRUE(morvane.program().focuses(field));
    morvane.keyboard().press(u"Ctrl+V"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Attached photo.webp."_s));
    ASSERT_TRUE(morvane.ear().hears(u"Attached scan.pdf."_s));
    morvane.send(u"What do these say?"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I have read both."_s));
    const auto content = morvane.model().requests().at(0).json.at("messages").as_array().back().at("content");
    EXPECT_THAT(std::string(content.at(0).at("text").as_string()),
                testing::HasSubstr("[Scanned page 1]\nDear reader\n"));
    EXPECT_THAT(std::string(content.at(1).at("image_url").at("url").as_string()),
                testing::StartsWith("data:image/jpeg;base64,"));
}

TEST_P(InstalledTest, TheScreenIsRead)
{
    MorvaneSession &morvane =
        prepareInstalled({callingTool("capture_screen", "{}"), ScriptedTurn::saying({"I see."})});
    morvane.start();
    morvane.send(u"Seven zebras"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I see."_s));
    // What follows are the elements, which are told by the accessibility bus.
    const QString recognized = lastResult(morvane).section(u"\n\nClickable elements"_s, 0, 0);
    EXPECT_THAT(recognized.toStdString(), testing::HasSubstr("Seven zebras"));
}

TEST_P(InstalledTest, ToolServersAreStarted)
{
    MorvaneSession &morvane = prepareInstalled({});
    const QString folder = morvane.home() + u"/.local/share/Morvane"_s;
    QDir().mkpath(folder);
    QFile file(folder + u"/mcp-servers.json"_s);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[{\"id\":\"5C2D4B9E-0B51-4C4C-8B5B-2F6B7D0B4E11\",\"name\":\"Mine\",\"transport\":\"stdio\","
               "\"command\":\"touch ~/started\",\"args\":[],\"url\":\"\",\"enabled\":true}]");
    file.close();
    morvane.start();
    EXPECT_TRUE(waitUntil([&] { return QFileInfo::exists(morvane.home() + u"/started"_s); }));
}

TEST_P(InstalledTest, AProgramOfItsOwnTreeWaitsForReminders)
{
    MorvaneSession &morvane =
        prepareInstalled({callingTool("set_reminder", R"({"message":"water the plants","minutes":600})"),
                          ScriptedTurn::saying({"I will remind you."})});
    morvane.start();
    morvane.send(u"Remind me"_s);
    const QString helper = root(GetParam()) + u"/libexec/morvane/morvane-reminder"_s;
    EXPECT_TRUE(waitUntil([&] { return !processesOf(helper).isEmpty(); }));
    QFile entry(morvane.home() + u"/.config/autostart/morvane-reminder.desktop"_s);
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    EXPECT_THAT(entry.readAll().toStdString(),
                testing::HasSubstr("\nExec=\"" + helper.toStdString() + "\" rearm\n"));
}

TEST_P(InstalledTest, ItsWindowIsTheOneThatTheMenuEntryTells)
{
    MorvaneSession &morvane = prepareInstalled({});
    morvane.start();
    QFile entry(QStringLiteral(MORVANE_SOURCE_DIR "/packaging/desktop/morvane.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    static const QRegularExpression windowClass(u"^StartupWMClass=(.+)$"_s,
                                                QRegularExpression::MultilineOption);
    const QString told = windowClass.match(QString::fromUtf8(entry.readAll())).captured(1);
    // The window's instance and its class, each with a zero behind it.
    const auto names = morvane.screen().bytes(morvane.screen().activeWindow(), "WM_CLASS").split('\0');
    EXPECT_EQ(QString::fromUtf8(names.value(1)), told);
    EXPECT_FALSE(told.isEmpty());
}

TEST_P(InstalledTest, ItsLibrariesAreThoseOfItsOwnTree)
{
    MorvaneSession &morvane = prepareInstalled({});
    morvane.setVariable(u"LD_LIBRARY_PATH"_s, build_tree::root() + u"/lib/morvane"_s);
    morvane.start();
    const QString loaded = loadedBy(QString::number(morvane.program().process().pid()));
    const QString here = root(GetParam());
    EXPECT_TRUE(loaded.contains(here + u"/lib/morvane/libmorvane.so"_s));
    EXPECT_FALSE(loaded.contains(build_tree::root() + u"/"_s));
    if (GetParam() == Place::prefix)
        return;
    EXPECT_EQ(strangers(loaded, here), QString());
    const QDir helpers(here + u"/libexec/morvane"_s);
    const QStringList names = helpers.entryList({u"morvane-*"_s, u"QtWebEngineProcess"_s}, QDir::Files);
    EXPECT_TRUE(names.contains(u"QtWebEngineProcess"_s));
    for (const QString &name : names)
        EXPECT_EQ(strangers(outputOf(u"ldd"_s, {helpers.filePath(name)}), here), QString());
    const QString module = here + u"/lib/morvane/libmorvane-browser.so"_s;
    EXPECT_EQ(strangers(outputOf(u"ldd"_s, {module}), here), QString());
}

TEST_P(InstalledTest, PagesAreShownByTheEngineOfItsOwnTree)
{
    PageServer site;
    site.page(u"/birds"_s, "<title>Birds</title><h1>Kingfishers</h1><form><input type=submit></form>");
    const TestCertificate certificate(u"IP:127.0.0.1"_s);
    const TlsServer unproven(TlsServer::Protocol::http1, certificate);
    ASSERT_TRUE(unproven.isRunning());
    const auto opening = [](const QUrl &url) {
        return callingTool("browser_open", R"({"url":")" + url.toString().toStdString() + R"("})");
    };
    MorvaneSession &morvane = prepareInstalled({opening(unproven.url(u""_s)), opening(site.url(u"/birds"_s)),
                                                ScriptedTurn::saying({"I see them."})});
    if (::geteuid() == 0) // whom the engine does not protect
        morvane.setVariable(u"QTWEBENGINE_DISABLE_SANDBOX"_s, u"1"_s);
    morvane.setVariable(u"LD_LIBRARY_PATH"_s, build_tree::root() + u"/lib/morvane"_s);
    morvane.start();
    morvane.send(u"Look at the birds"_s);
    ASSERT_TRUE(morvane.ear().hears(u"I see them."_s));
    EXPECT_THAT(lastResult(morvane).toStdString(), testing::HasSubstr("Kingfishers"));
    EXPECT_TRUE(morvane.program().shows(u"Browser content: Birds"_s));
    EXPECT_TRUE(morvane.program().shows(u"Submit"_s)) << "the engine's words for the user's language";
    const QString here = root(GetParam());
    const QString loaded = loadedBy(QString::number(morvane.program().process().pid()));
    EXPECT_TRUE(loaded.contains(here + u"/lib/morvane/libmorvane-browser.so"_s));
    if (GetParam() == Place::prefix)
        return;
    // With the authorities whose word a site's certificate has to have. What makes sounds is the system's.
    for (const QString &name : {u"libQt6WebEngineCore.so.6"_s, u"libsoftokn3.so"_s, u"libnssckbi.so"_s})
        EXPECT_TRUE(loaded.contains(here + u"/lib/morvane/"_s + name)) << name.toStdString();
    const QStringList processes = processesOf(here + u"/libexec/morvane/QtWebEngineProcess"_s);
    EXPECT_FALSE(processes.isEmpty());
    for (const QString &process : processes)
        EXPECT_EQ(strangers(loadedBy(process), here), QString());
}

} // namespace
} // namespace morvane
