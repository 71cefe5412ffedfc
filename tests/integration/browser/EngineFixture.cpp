#include "EngineFixture.h"

#include "base/InstalledFiles.h"
#include "browser/pages/BrowserEngine.h"
#include "browser/pages/EvaluateWithTimeout.h"
#include "support/TemporaryHome.h"

#include <QApplication>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>
#include <QWidget>

namespace morvane {
namespace {

/// The engine lasts until the application ends.
class Engine final : public QObject {
public:
    explicit Engine(QObject *application) : QObject(application)
    {
        // It asks for the way to other computers once.
        const QUrl address = proxy.url("/");
        qputenv("http_proxy", address.toEncoded());
        qputenv("no_proxy", "other.test,nowhere.test");
        home.write("Browser/Downloads/left", "of a program that was killed");
        auto started = loadBrowserEngine(
            InstalledFiles::aroundProgram().module("libmorvane-browser.so"),
            {.folder = home.path("Browser"),
             .showNotification = [this](const PageNotification &shown) { notifications.append(shown); },
             .now = [this] { return now; }});
        if (started)
            factory = std::move(*started);
        else
            ADD_FAILURE() << started.error().toStdString();
    }

    TemporaryHome home;
    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
    QList<PageNotification> notifications;
    PageServer proxy;
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

PageServer &EngineFixture::proxy()
{
    return theEngine().proxy;
}

QString EngineFixture::folder()
{
    return theEngine().home.path("Browser");
}

void EngineFixture::pass(std::chrono::milliseconds time)
{
    theEngine().now += time;
}

QList<PageNotification> &EngineFixture::notifications()
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

QString EngineFixture::valueOf(const QString &id)
{
    return value(QString("document.getElementById('%1').value").arg(id)).toString();
}

void EngineFixture::awaitInput()
{
    ASSERT_TRUE(waitUntil([this] {
        return value("performance.getEntriesByName('first-contentful-paint').length").toInt() > 0;
    }));
}

void EngineFixture::press(const QString &keys)
{
    awaitInput();
    QWidget *const view = page().view();
    view->activateWindow();
    ASSERT_TRUE(waitUntil([view] { return view->isActiveWindow() && view->focusProxy(); }));
    view->setFocus();
    QTest::keyClicks(view->focusProxy(), keys);
}

QDialog *EngineFixture::sheet()
{
    for (QWidget *const widget : QApplication::topLevelWidgets())
        if (auto *const dialog = qobject_cast<QDialog *>(widget); dialog && dialog->isVisible())
            return dialog;
    return nullptr;
}

void EngineFixture::underSheet(const std::function<bool()> &condition,
                               const std::function<void(QDialog &)> &answer)
{
    QTimer looking;
    bool answered = false;
    QObject::connect(&looking, &QTimer::timeout, [&] {
        QDialog *const dialog = sheet();
        if (!dialog || answered || !condition())
            return;
        answered = true;
        answer(*dialog);
    });
    looking.start(5);
    EXPECT_TRUE(waitUntil([&] { return answered && !sheet(); }));
}

void EngineFixture::speak(const QString &script, const std::function<void(QDialog &)> &answer)
{
    // The call only comes back when the page has its answer.
    page().evaluate("var s = document.createElement('script'); s.textContent = " +
                        QString("`%1`; document.documentElement.appendChild(s); 1").arg(script),
                    [](const QVariant &) {});
    underSheet([] { return true; }, answer);
}

int EngineFixture::numberOf(const QString &reading, const QString &name)
{
    const QRegularExpression line(R"(^\[(\d+)\] \S+ ')" + QRegularExpression::escape(name) + "'$",
                                  QRegularExpression::MultilineOption);
    return line.match(reading).captured(1).toInt();
}

} // namespace morvane
