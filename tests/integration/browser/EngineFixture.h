#pragma once

#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "browser/pages/WebPageFactory.h"
#include "browser/tabs/BrowserManager.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeTabWindow.h"
#include "support/PageServer.h"
#include "support/RunTask.h"

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
    /// The folder of its profile.
    static QString folder();
    /// What pages have let be shown, the newest last: site, title and message.
    static QList<QStringList> &notifications();

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
    /// What a script in the page's own world left in its title, or any value of ours.
    QVariant value(const QString &script);
    /// Runs a script as the page itself would.
    void runInPage(const QString &script);
    /// The number under which the last reading lists an element with this name, or 0.
    static int numberOf(const QString &reading, const QString &name);

    PageServer server;
    SystemClock clock;
    Scheduler scheduler{clock};
    FakeAnnouncer announcer;
    FakeTabWindow::Log window;
    QList<std::pair<QString, QString>> visits;
    std::unique_ptr<BrowserManager> manager;
};

} // namespace morvane
