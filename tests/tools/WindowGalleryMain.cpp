// Shows the program's windows with sample content and nobody behind them, for a look at them by eye, and
// writes pictures of them.
#include "FixedColorScheme.h"
#include "GalleryContent.h"
#include "GalleryModel.h"

#include "base/Uuid.h"
#include "support/RunTask.h"
#include "ui/settings/SettingsView.h"
#include "ui/theme/Theme.h"
#include "ui/window/MainWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QScrollArea>
#include <QScrollBar>

using namespace morvane;

namespace {

/// The gallery's model with something to show in its windows.
class Stage : public GalleryModel {
public:
    Stage()
    {
        QList<CatalogModel> list;
        for (int number = 1; number <= 1200; ++number)
            list.append({QStringLiteral("vendor-%1/model-with-a-rather-long-name-%2b-instruct-2026-preview%3")
                             .arg(QString::number(number % 37), QString::number(number),
                                  number <= 60 ? QStringLiteral(":free") : QString()),
                         number <= 60});
        modelCatalog.lists.insert(ProviderID::openrouter, list);
        modelCatalog.lists.insert(ProviderID::custom, list.mid(60, 12));
    }
    void saveConversations(int count)
    {
        for (int number = 0; number < count; ++number) {
            ChatMessage message;
            message.id = newUuid();
            message.role = Role::user;
            message.text = QStringLiteral("Hello");
            store.save(newUuid(),
                       number % 3 == 1
                           ? QStringLiteral("A conversation whose title is longer than the sidebar is wide")
                           : QStringLiteral("Free disk space %1").arg(number),
                       {message});
        }
    }
};

void addOptions(QCommandLineParser &parser)
{
    parser.addHelpOption();
    const auto option = [&parser](const char *name, const char *description, const char *value,
                                  const char *standard = "") {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description),
                          QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    parser.addOption({QStringLiteral("dark"), QStringLiteral("Dark colours.")});
    option("window", "Which window: settings, welcome, conversation, permission, question.", "name",
           "settings");
    option("provider", "The provider's stored name.", "name", "openrouter");
    option("model", "The model.", "name");
    option("width", "Width of the window.", "pixels", "0");
    option("height", "Height of the window.", "pixels", "0");
    option("font", "Size of the font.", "points", "10");
    option("scroll", "Scroll to this share.", "percent", "0");
    option("state", "Of the local model: none, running, installing, failed.", "name", "none");
    parser.addOption({QStringLiteral("popup"), QStringLiteral("Open the list of models.")});
    parser.addOption({QStringLiteral("allowed"), QStringLiteral("Some tools are always allowed.")});
    parser.addOption({QStringLiteral("conversations"), QStringLiteral("Some conversations are stored.")});
    option("picture", "Write a picture and end.", "file");
}

void setLocalModel(Stage &stage, const QString &state)
{
    stage.localModel.binaryInstalled = true;
    stage.localModel.serverRunning = state == QStringLiteral("running");
    stage.localModel.models = {stage.settings.model()};
    if (state == QStringLiteral("installing"))
        stage.localModel.installationTime = std::chrono::hours(1);
    if (state == QStringLiteral("failed"))
        stage.localModel.failure = QStringLiteral("The download ended before it was complete.");
    if (state == QStringLiteral("running"))
        stage.model.localModel().refreshLocalModel();
    else if (state != QStringLiteral("none"))
        stage.model.localModel().installLocalModelIfNeeded();
}

void ask(Stage &stage, const QString &window)
{
    AIToolCall call;
    call.name = QStringLiteral("write_file");
    call.arguments = SharedJsonObject(boost::json::object{
        {"path", "~/Documents/reports/2026/a-report-with-a-long-name.txt"}, {"content", "text"}});
    if (window == QStringLiteral("permission"))
        stage.scheduler.spawn(stage.model.gate().requestPermission(call));
    if (window == QStringLiteral("question"))
        stage.scheduler.spawn(stage.model.questions().askUserQuestion(
            QStringLiteral("Which of the folders shall I clean up?"),
            {QStringLiteral("Downloads"), QStringLiteral("Desktop"),
             QStringLiteral("Both, and tell me beforehand what will be removed")}));
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral("1.0"));
    application.setProperty("buildNumber", 100);
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(application);
    const auto value = [&parser](const char *name) { return parser.value(QString::fromLatin1(name)); };

    QFont font = QApplication::font();
    font.setPointSizeF(value("font").toDouble());
    QApplication::setFont(font);
    FixedColorScheme scheme(parser.isSet(QStringLiteral("dark")) ? ColorScheme::Preference::dark
                                                                 : ColorScheme::Preference::light);
    Theme theme(scheme);
    Stage stage;
    const ProviderID provider = providerFromRawValue(value("provider")).value_or(ProviderID::openrouter);
    stage.settings.setProviderID(provider);
    stage.settings.setModel(value("model").isEmpty() ? defaultModel(provider) : value("model"));
    if (parser.isSet(QStringLiteral("allowed")))
        stage.settings.setAlwaysAllowedTools(
            {QStringLiteral("write_file"), QStringLiteral("edit_file"),
             QStringLiteral("mcp_a_server_with_a_long_name_create_a_rather_complicated_thing")});
    if (parser.isSet(QStringLiteral("conversations")))
        stage.saveConversations(8);
    bool restored = false;
    QObject::connect(&stage.model, &AppModel::restored, &stage.model, [&restored] { restored = true; });
    waitUntil([&restored] { return restored; });
    setLocalModel(stage, value("state"));

    std::unique_ptr<QWidget> window;
    if (value("window") == QStringLiteral("settings"))
        window = std::make_unique<SettingsView>(stage.model, nullptr);
    else
        window = std::make_unique<MainWindow>(stage.model);
    const QSize size(value("width").toInt(), value("height").toInt());
    if (size.width() > 0 && size.height() > 0)
        window->resize(size);
    window->show();
    if (value("window") != QStringLiteral("settings") && value("window") != QStringLiteral("welcome"))
        fillShowcase(stage.model.transcript(), stage.model.activity());
    ask(stage, value("window"));
    settle();
    if (auto *scroll = window->findChild<QScrollArea *>()) {
        auto *bar = scroll->verticalScrollBar();
        bar->setValue(bar->maximum() * value("scroll").toInt() / 100);
    }
    if (parser.isSet(QStringLiteral("popup"))) {
        for (auto *picker : window->findChildren<QComboBox *>()) {
            if (picker->isVisible() && picker->accessibleName().startsWith(QStringLiteral("Model for")))
                picker->showPopup();
        }
    }
    settle();
    if (value("picture").isEmpty())
        return QApplication::exec();
    QWidget *popup = QApplication::activePopupWidget();
    (popup ? popup : window.get())->grab().save(value("picture"));
    return 0;
}
