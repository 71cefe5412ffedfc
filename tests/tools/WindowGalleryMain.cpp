// Shows the program's windows with sample content and nobody behind them, for a look at them by eye, and
// writes pictures of them.
#include "GalleryContent.h"
#include "GalleryLook.h"
#include "GalleryModel.h"
#include "GalleryOptions.h"

#include "base/Uuid.h"
#include "support/AskForPermit.h"
#include "support/RunTask.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/find/FindBar.h"
#include "ui/settings/AddMCPServerView.h"
#include "ui/settings/SettingsView.h"
#include "ui/theme/AppMark.h"
#include "ui/window/ComposerView.h"
#include "ui/window/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDialog>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QToolButton>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

/// The gallery's model with something to show in its windows.
class Stage : public GalleryModel {
public:
    explicit Stage(User user) : GalleryModel(user)
    {
        QList<CatalogModel> list;
        for (int number = 1; number <= 1200; ++number)
            list.append({u"vendor-%1/model-with-a-rather-long-name-%2b-instruct-2026-preview%3"_s.arg(
                             QString::number(number % 37), QString::number(number),
                             number <= 60 ? u":free"_s : QString()),
                         number <= 60});
        modelCatalog.lists.insert(ProviderID::openrouter, list);
        modelCatalog.lists.insert(ProviderID::custom, list.mid(60, 12));
    }
    /// At least the five that show every state.
    void addToolServers(int count)
    {
        servers.add(u"My Files"_s, 11);
        servers.add(u"Calendar"_s, 1);
        servers.add(
            u"A server with a name that is a good deal longer than most of the names that people give"_s, 0,
            u"npm error code E404 npm error 404 Not Found - GET @example%2fserver-that-is-not-there - Not "
            "found. The requested resource could not be found or you do not have permission to access it."_s);
        const auto off = servers.add(u"Database"_s, 4);
        servers.manager.toggleServer(off.id, false);
        const MCPServerConfig remote{
            newUuid(), u"Remote"_s,
            u"http"_s, {},
            {},        u"https://tools.example.com/a/path/that/goes/on/and/on?token="_s + QString(200, u'0'),
            true};
        servers.servers[remote.name].startFailure =
            u"could not reach the server: The name of the server could not be resolved."_s;
        servers.manager.appendServer(remote);
        for (int number = 5; number < count; ++number)
            servers.add(u"Server %1"_s.arg(number), number);
        runTask(scheduler, servers.manager.refreshAll());
    }
    void saveConversations(int count)
    {
        for (int number = 0; number < count; ++number) {
            ChatMessage message;
            message.id = newUuid();
            message.role = Role::user;
            message.text = u"Hello"_s;
            store.save(newUuid(),
                       number % 3 == 1 ? u"A conversation whose title is longer than the sidebar is wide"_s
                                       : u"Free disk space %1"_s.arg(number),
                       {message});
        }
    }
};

void addOptions(QCommandLineParser &parser)
{
    const auto option = [&parser](const char *name, const char *description, const char *value,
                                  const char *standard = "") {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description),
                          QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    addGalleryOptions(parser, {0, 0}); // as large as it wants to be
    option("window",
           "Which window: settings, permissions, tool-servers, add-server, welcome, onboarding, "
           "conversation, streaming, "
           "subagent, "
           "folded, zoomed, find, attachments, pictures, picture, shortcuts, about, permission, destructive, "
           "question, update, update-downloading, update-failed, update-alert, update-none, update-required, "
           "update-required-alert.",
           "name", "settings");
    option("provider", "The provider's stored name.", "name", "openrouter");
    option("model", "The model.", "name");
    option("servers", "So many tool servers are set up, or none.", "number", "0");
    option("scroll", "Scroll to this share.", "percent", "0");
    option("state", "Of the local model: none, running, installing, downloading, failed.", "name", "none");
    parser.addOption({u"popup"_s, u"Open the list of models."_s});
    parser.addOption({u"allowed"_s, u"Some tools are always allowed."_s});
    parser.addOption({u"conversations"_s, u"Some conversations are stored."_s});
    option("picture", "Write a picture and end.", "file");
}

void setLocalModel(Stage &stage, const QString &state)
{
    stage.localModel.binaryInstalled = true;
    stage.localModel.serverRunning = state == u"running"_s;
    stage.localModel.models = {stage.settings.model()};
    if (state == u"installing"_s)
        stage.localModel.installationTime = std::chrono::hours(1);
    if (state == u"downloading"_s) {
        stage.localModel.models.clear();
        stage.localModel.pullTime = std::chrono::hours(1);
    }
    if (state == u"failed"_s)
        stage.localModel.failure = u"The download ended before it was complete."_s;
    if (state == u"running"_s)
        stage.model.localModel().refreshLocalModel();
    else if (state != u"none"_s)
        stage.model.localModel().installLocalModelIfNeeded();
}

/// An update is known, and the user has done about it what the name of the state says.
void showUpdate(Stage &stage, const QString &state)
{
    using Occasion = UpdateModel::Occasion;
    stage.updates.manifest = sampleUpdate(u"1.3"_s, 7);
    stage.updates.manifest.notes = {
        u"Opens conversations of ten thousand messages at once."_s,
        u"Reads tables row by row, with the names of their columns."_s,
        u"Mends a fault by which a reminder came an hour late on the last Sunday in October."_s};
    stage.updates.manifest.required = state.startsWith(u"update-required"_s);
    stage.updates.downloadTime = std::chrono::hours(1);
    stage.updates.steps = {0.42};
    if (state == u"update-none"_s)
        stage.updates.manifest = sampleUpdate(u"1.2"_s, 5);
    const bool isAsked = state == u"update-alert"_s || state == u"update-none"_s;
    runTask(stage.scheduler,
            stage.model.updates().checkForUpdates(isAsked ? Occasion::user : Occasion::programStart));
    if (state == u"update-required"_s)
        stage.model.updates().closeAlert();
    if (state == u"update-failed"_s) {
        stage.updates.downloadTime = {};
        stage.updates.downloadFailure =
            u"Morvane does not have permission to replace itself in /opt/programs of this computer."_s;
    }
    if (state == u"update-downloading"_s || state == u"update-failed"_s)
        stage.model.updates().installUpdateNow();
}

/// The fake service paints the colours that these name.
ChatMessage messageWithPictures()
{
    ChatMessage message;
    message.id = newUuid();
    message.role = Role::user;
    message.text = u"What do these have in common?"_s;
    for (const char *color : {"steelblue", "tomato", "no picture", "seagreen", "goldenrod"}) {
        ChatAttachment picture;
        picture.id = newUuid();
        picture.kind = AttachmentKind::image;
        picture.filename = QString::fromLatin1(color) + u".png"_s;
        picture.data = QByteArray(color);
        message.attachments.append(picture);
    }
    return message;
}

/// An answer that is half there.
void stream(Stage &stage)
{
    FakeAIService::Turn turn = FakeAIService::answer(
        u"The disk has **512 GB**, of which about 180 GB are free. The largest folders are `~/Movies` with "
        "96 GB and `~/Library/Caches` with 31 GB. I am looking at what is in them, and at how much of it was "
        "not used for a year. "_s);
    turn.silence = std::chrono::hours(1);
    stage.service.willTurn(turn);
    stage.settings.setProviderID(ProviderID::custom);
    stage.model.send(u"Check my Mac's storage"_s, {});
    waitUntil([&stage] { return stage.model.messages().constLast().text.contains(u"Movies"_s); });
}

/// Files that wait to be sent, one that is being read and one that could not be.
void attach(Stage &stage, const QWidget &window)
{
    stage.settings.setProviderID(ProviderID::custom); // the model sees no pictures
    auto *composer = window.findChild<ComposerView *>();
    const auto attachFiles = [composer](std::initializer_list<const char *> names) {
        QList<QUrl> files;
        for (const char *name : names)
            files.append(QUrl::fromLocalFile(u'/' + QString::fromLatin1(name)));
        composer->handleFiles(files);
        settle();
    };
    stage.attachments.holds = true;
    attachFiles({"scan.pdf"});
    stage.attachments.holds = false;
    stage.attachments.failing = {u"interview.mov"_s};
    attachFiles({"holiday.jpg", "report.pdf", "interview.mov",
                 "A rather long name of a document that nobody could ever want to read.pdf"});
}

/// A subagent that is at work.
void delegate(Stage &stage)
{
    FakeAIService::Turn silent;
    silent.silence = std::chrono::hours(1);
    stage.service.willTurn(FakeAIService::calls(
        {toolCall(u"task"_s, R"({"subagent":"researcher","description":"Compare both reports"})")}));
    stage.service.willTurn(silent);
    stage.settings.setProviderID(ProviderID::custom);
    stage.model.send(u"Compare the two reports that lie on my desktop"_s, {});
    waitUntil([&stage] { return !stage.model.subagents().label().isEmpty(); });
}

void trigger(const QWidget &window, const QString &command)
{
    for (QAction *action : window.findChildren<QAction *>())
        if (action->text() == command)
            action->trigger();
}

/// What is done in the main window before the picture of it.
void act(Stage &stage, QWidget &window, const QString &state)
{
    auto *view = window.findChild<ChatScrollView *>();
    if (state == u"streaming"_s)
        stream(stage);
    else if (state == u"subagent"_s)
        delegate(stage);
    else if (state == u"pictures"_s || state == u"picture"_s)
        stage.model.transcript().append(messageWithPictures());
    else if (state != u"welcome"_s && state != u"onboarding"_s)
        fillShowcase(stage.model.transcript(), stage.model.activity());
    if (state == u"folded"_s)
        view->setActivityFolded(true);
    if (state == u"zoomed"_s)
        for (int step = 0; step < 3; ++step)
            trigger(window, u"Larger Text"_s);
    if (state == u"attachments"_s)
        attach(stage, window);
    if (state == u"find"_s) {
        trigger(window, u"Find in Conversation…"_s);
        window.findChild<FindBar *>()->findChild<QLineEdit *>()->setText(u"caches"_s);
        // The search ends on another thread.
        waitUntil([&] { return !view->selectedText().isEmpty(); });
    }
    if (state == u"picture"_s) {
        view->setCurrentRow(0);
        waitUntil([&] { return !view->pictures().visibleButtons().isEmpty(); });
        view->pictures().visibleButtons().first()->click();
    }
    if (state.startsWith(u"update"_s))
        showUpdate(stage, state);
    if (state == u"shortcuts"_s)
        trigger(window, u"Keyboard Shortcuts"_s);
    if (state == u"about"_s)
        trigger(window, u"About Morvane"_s);
}

/// The dialog that stands above the window, if one does.
QWidget *dialogOf(const QWidget &window)
{
    for (QDialog *dialog : window.findChildren<QDialog *>())
        if (dialog->isVisible())
            return dialog;
    return nullptr;
}

void ask(Stage &stage, const QString &window)
{
    AIToolCall call;
    call.name = u"write_file"_s;
    call.arguments = SharedJsonObject(boost::json::object{
        {"path", "~/Documents/reports/2026/a-report-with-a-long-name.txt"}, {"content", "text"}});
    if (window == u"permission"_s)
        stage.scheduler.spawn(askForPermit(&stage.model.gate(), call));
    if (window == u"destructive"_s) {
        call.name = u"run_shell_command"_s;
        call.arguments = SharedJsonObject(boost::json::object{
            {"command", "cd ~/Library/Caches && rm -rf old-builds thumbnails \"a folder with blanks\""},
            {"destructive", true}});
        stage.scheduler.spawn(askForPermit(&stage.model.gate(), call));
    }
    if (window == u"question"_s)
        stage.scheduler.spawn(stage.model.questions().askUserQuestion(
            u"Which of the folders shall I clean up?"_s,
            {u"Downloads"_s, u"Desktop"_s, u"Both, and tell me beforehand what will be removed"_s}));
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationVersion(u"1.0"_s);
    application.setProperty("buildNumber", 100);
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(application);
    const auto value = [&parser](const char *name) { return parser.value(QString::fromLatin1(name)); };

    const GalleryLook look(parser);
    QApplication::setWindowIcon(appIcon());
    Stage stage(value("window") == u"onboarding"_s ? Stage::User::newcomer : Stage::User::known);
    const ProviderID provider = providerFromRawValue(value("provider")).value_or(ProviderID::openrouter);
    stage.settings.setProviderID(provider);
    stage.settings.setModel(value("model").isEmpty() ? defaultModel(provider) : value("model"));
    if (parser.isSet(u"allowed"_s))
        stage.settings.setAlwaysAllowedTools(
            {u"write_file"_s, u"edit_file"_s,
             u"mcp_a_server_with_a_long_name_create_a_rather_complicated_thing"_s});
    if (parser.isSet(u"conversations"_s))
        stage.saveConversations(8);
    waitUntil([&stage] { return stage.model.isReady(); });
    setLocalModel(stage, value("state"));

    if (value("servers").toInt() > 0)
        stage.addToolServers(value("servers").toInt());
    std::unique_ptr<QWidget> window;
    const QStringList inSettings{u"settings"_s, u"permissions"_s, u"tool-servers"_s, u"add-server"_s};
    const bool isSettings = inSettings.contains(value("window"));
    if (isSettings)
        window = std::make_unique<SettingsView>(stage.settingsServices, stage.model.localModel(),
                                                stage.servers.manager, stage.announcer, nullptr);
    else
        window = std::make_unique<MainWindow>(stage.model, stage.windowServices);
    const QSize size = gallerySize(parser);
    if (size.width() > 0 && size.height() > 0)
        window->resize(size);
    window->show();
    if (isSettings && value("window") != u"settings"_s)
        window->findChild<QTabWidget *>()->setCurrentIndex(value("window") == u"permissions"_s ? 1 : 2);
    if (value("window") == u"add-server"_s)
        window->findChild<AddMCPServerView *>()->open();
    if (!isSettings)
        act(stage, *window, value("window"));
    ask(stage, value("window"));
    settle();
    for (const auto *scroll : window->findChildren<QScrollArea *>()) {
        auto *bar = scroll->verticalScrollBar();
        bar->setValue(bar->maximum() * value("scroll").toInt() / 100);
    }
    if (parser.isSet(u"popup"_s)) {
        for (auto *picker : window->findChildren<QComboBox *>())
            if (picker->isVisible() && picker->accessibleName().startsWith(u"Model for"_s))
                picker->showPopup();
    }
    settle();
    if (value("picture").isEmpty())
        return QApplication::exec();
    QWidget *popup = QApplication::activePopupWidget();
    QWidget *dialog = dialogOf(*window);
    (popup ? popup : dialog ? dialog : window.get())->grab().save(value("picture"));
    return 0;
}
