#pragma once

#include "async/Scheduler.h"
#include "browser/pages/PageNotification.h"
#include "browser/pages/WebPageFactory.h"
#include "browser/tabs/BrowserManager.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeTabWindow.h"
#include "support/HurriedClock.h"
#include "support/PageServer.h"
#include "support/RunTask.h"

#include <QDialog>
#include <functional>
#include <gmock/gmock.h>
#include <memory>

namespace morvane {

/// The browser with the real engine, which is started once for all tests; its pages are shown in a bare
/// window.
class EngineFixture : public testing::Test {
protected:
    static void SetUpTestSuite();
    EngineFixture();
    ~EngineFixture() override;

    static WebPageFactory &engine();
    /// Through which the engine goes to all sites but those that are here.
    static PageServer &proxy();
    /// The folder of its profile.
    static QString folder();
    /// Lets time go by for the sheets of pages, to which it stands still otherwise.
    static void pass(std::chrono::milliseconds time);
    /// What pages have let be shown, the newest last.
    static QList<PageNotification> &notifications();

    BrowserTab &tab() { return *manager->activeTab(); }
    WebPage &page() { return tab().webView(); }
    QString open(const QString &path)
    {
        return run(manager->operations().browserOpen(server.url(path).toString()));
    }
    QString read() { return run(manager->operations().browserRead()); }
    QString click(qint64 number) { return run(manager->operations().browserClick(number)); }
    QString type(qint64 number, const QString &text, bool submit = false)
    {
        return run(manager->operations().browserType(number, text, submit));
    }
    QString run(Task<QString> operation)
    {
        return runTask(scheduler, std::move(operation), std::chrono::seconds(60));
    }
    /// Opens a page of this body.
    QString show(const QByteArray &body)
    {
        server.page("/page", "<!doctype html><title>Page</title>" + body);
        return open("/page");
    }
    /// Waits for a page of this site to be there whole.
    bool arrives(const QString &path)
    {
        return waitUntil([&] { return page().address() == server.url(path) && !page().isLoading(); });
    }
    /// What a script in the page's own world left in its title, or any value of ours.
    QVariant value(const QString &script);
    /// Runs a script as the page itself would.
    void runInPage(const QString &script);
    /// What the field with this id holds.
    QString valueOf(const QString &id);
    /// Waits until the page hears what a user does: the engine drops all of it before the page has painted
    /// some text or a picture. A page without any never hears.
    void awaitInput();
    /// Presses keys in the page, as the user does.
    void press(const QString &keys);

    /// What asks the user something; null while nothing does.
    static QDialog *sheet();
    /// Does something once a sheet stands and `condition` holds, from within the sheet's own loop, and waits
    /// for the sheet to go.
    static void underSheet(const std::function<bool()> &condition,
                           const std::function<void(QDialog &)> &answer);
    /// Lets the page speak, and has the user answer once the sheet is there.
    void speak(const QString &script, const std::function<void(QDialog &)> &answer);
    /// The number under which the last reading lists an element with this name, or 0.
    static int numberOf(const QString &reading, const QString &name);

    PageServer server;
    HurriedClock clock;
    Scheduler scheduler{clock};
    FakeAnnouncer announcer;
    FakeTabWindow::Log window;
    QList<std::pair<QString, QString>> visits;
    std::unique_ptr<BrowserManager> manager;
};

} // namespace morvane
