#include "EngineFixture.h"

#include "base/InstalledFiles.h"
#include "browser/pages/BrowserEngine.h"
#include "browser/pages/EvaluateWithTimeout.h"
#include "support/TemporaryHome.h"

#include <QRegularExpression>
#include <QWidget>

namespace morvane {
namespace {

/// The engine lasts until the application ends.
class Engine final : public QObject {
public:
    explicit Engine(QObject *application) : QObject(application)
    {
        auto started = loadBrowserEngine(
            InstalledFiles::aroundProgram().module("libmorvane-browser.so"),
            {.folder = home.path("Browser"),
             .showNotification = [this](const QString &site, const QString &title, const QString &message) {
                 notifications.append({site, title, message});
             }});
        if (started)
            factory = std::move(*started);
        else
            ADD_FAILURE() << started.error().toStdString();
    }

    TemporaryHome home;
    QList<QStringList> notifications;
    std::unique_ptr<WebPageFactory> factory;
};

Engine &theEngine()
{
    static auto *const engine = new Engine(QCoreApplication::instance());
    return *engine;
}

} // namespace

void EngineFixture::SetUpTestSuite()
{
    ASSERT_TRUE(theEngine().factory);
}

WebPageFactory &EngineFixture::engine()
{
    return *theEngine().factory;
}

QString EngineFixture::folder()
{
    return theEngine().home.path("Browser");
}

QList<QStringList> &EngineFixture::notifications()
{
    return theEngine().notifications;
}

EngineFixture::EngineFixture()
{
    manager = std::make_unique<BrowserManager>(BrowserServices{
        .scheduler = scheduler,
        .announcer = announcer,
        .pages = engine(),
        .startPage = "<title>Start Page</title><input autofocus>",
        .recordHistory = [this](const QString &address,
                                const QString &title) { visits.append({address, title}); },
        .fetchFavicon = {},
        .makeWindow = [this](BrowserManager &) { return std::make_unique<FakeTabWindow>(window); }});
    manager->makeWindowIfNeeded();
    QWidget *const view = page().view();
    view->resize(900, 700);
    view->show();
    EXPECT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    announcer.spoken.clear();
}

EngineFixture::~EngineFixture()
{
    scheduler.shutdown(std::chrono::seconds(1));
    manager.reset();
    // The program's event loop does that, which does not run here.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QVariant EngineFixture::value(const QString &script)
{
    return runTask(scheduler, evaluateWithTimeout(script, &page(), std::chrono::seconds(20)));
}

void EngineFixture::runInPage(const QString &script)
{
    const QString quoted = QString(script).replace('\\', "\\\\").replace('`', "\\`");
    value(QString("var s = document.createElement('script'); s.textContent = `%1`; "
                  "document.documentElement.appendChild(s); s.remove(); 1")
              .arg(quoted));
}

int EngineFixture::numberOf(const QString &reading, const QString &name)
{
    const QRegularExpression line(R"(^\[(\d+)\] \S+ ')" + QRegularExpression::escape(name) + "'$",
                                  QRegularExpression::MultilineOption);
    return line.match(reading).captured(1).toInt();
}

} // namespace morvane
