#pragma once

#include "async/Scheduler.h"
#include "browser/tabs/BrowserManager.h"
#include "support/FakeAnnouncer.h"
#include "support/FakeClock.h"
#include "support/FakeTabWindow.h"
#include "support/FakeWebPage.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>
#include <memory>

namespace morvane {

/// A browser without an engine and without a screen.
class BrowserFixture : public testing::Test {
protected:
    ~BrowserFixture() override { scheduler.shutdown(std::chrono::seconds(1)); }

    BrowserServices services()
    {
        return {.scheduler = scheduler,
                .announcer = announcer,
                .pages = pages,
                .startPage = QStringLiteral("<start>"),
                .recordHistory = [this](const QString &address,
                                        const QString &title) { visits.append({address, title}); },
                .fetchFavicon = [this](QString host, QPointer<WebPage>) { return icon(this, host); },
                .makeWindow = [this](BrowserManager &) { return std::make_unique<FakeTabWindow>(window); }};
    }
    static Task<QImage> icon(BrowserFixture *self, QString host)
    {
        self->iconsAsked.append(host);
        co_return self->icons.value(host);
    }

    FakeWebPage &page(qsizetype index = 0) { return *pages.pages.at(index); }
    BrowserTab &tab(std::size_t index = 0) { return *manager.tabs().at(index); }
    /// The page of a tab shows an address.
    void visit(qsizetype index, const QString &address, const QString &title = {})
    {
        FakeWebPage &shown = page(index);
        shown.load(QUrl(address));
        shown.finish(title);
        settle();
    }
    QStringList spoken() { return std::exchange(announcer.spoken, {}); }

    FakeClock clock;
    Scheduler scheduler{clock};
    FakeAnnouncer announcer;
    FakeWebPageFactory pages;
    FakeTabWindow::Log window;
    QList<std::pair<QString, QString>> visits;
    QStringList iconsAsked;
    QHash<QString, QImage> icons;
    BrowserManager manager{services()};
};

} // namespace morvane
