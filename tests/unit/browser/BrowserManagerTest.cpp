#include "browser/tabs/BrowserManager.h"

#include "BrowserFixture.h"

#include <QSignalSpy>

namespace morvane {
namespace {

class BrowserManagerTest : public BrowserFixture {};

TEST_F(BrowserManagerTest, ANewTabShowsTheStartPage)
{
    manager.newTab();
    ASSERT_EQ(manager.tabs().size(), 1U);
    EXPECT_EQ(manager.activeTab(), &tab());
    EXPECT_EQ(tab().title(), "Start Page");
    EXPECT_EQ(tab().urlString(), "");
    EXPECT_EQ(tab().zoom(), 1.0);
    EXPECT_EQ(page().log, QStringList("html <start>"));
    EXPECT_EQ(spoken(), QStringList("Opened new tab."));
    EXPECT_EQ(manager.tabFor(&page()), &tab());
    EXPECT_EQ(manager.tabFor(nullptr), nullptr);
}

TEST_F(BrowserManagerTest, TheWindowIsMadeOnceAndComesWithATab)
{
    manager.makeWindowIfNeeded();
    manager.makeWindowIfNeeded();
    EXPECT_EQ(window.windows, 1);
    EXPECT_EQ(manager.tabs().size(), 1U);
}

TEST_F(BrowserManagerTest, AClosedWindowLeavesTheTabsWithTheirPagesForTheNextOne)
{
    manager.makeWindowIfNeeded();
    visit(0, "https://a.test/");
    manager.windowClosed();
    EXPECT_EQ(manager.window(), nullptr);
    EXPECT_EQ(window.windows, 1) << "it is still at work when it says so";
    settle();
    EXPECT_EQ(window.windows, 0);
    EXPECT_EQ(tab().urlString(), "https://a.test/");
    manager.makeWindowIfNeeded();
    EXPECT_EQ(window.windows, 1);
    EXPECT_EQ(manager.tabs().size(), 1U);
    EXPECT_EQ(tab().urlString(), "https://a.test/");
}

TEST_F(BrowserManagerTest, SwitchingShowsTheTabWithItsOwnZoom)
{
    manager.newTab();
    manager.setZoom(1.5);
    visit(0, "https://a.test/", "First");
    manager.newTab();
    EXPECT_EQ(manager.currentURLString(), "");
    page(0).zoom = 1.0; // as an engine that forgets it for another site
    spoken();
    manager.switchTab(tab(0).id());
    EXPECT_EQ(page(0).zoom, 1.5);
    EXPECT_EQ(page(1).zoom, 1.0);
    EXPECT_EQ(manager.currentURLString(), "https://a.test/");
    EXPECT_EQ(spoken(), QStringList("Switched to tab First"));
    manager.switchTab(QUuid());
    EXPECT_EQ(manager.activeTab(), &tab(0));
    EXPECT_EQ(spoken(), QStringList());
}

TEST_F(BrowserManagerTest, WindowsThatAreRefusedAreToldOfWhereTheUserIs)
{
    manager.newTab();
    visit(0, "https://a.test/");
    spoken();
    Q_EMIT page(0).windowsRefused();
    EXPECT_EQ(spoken(), QStringList("More windows of a.test are refused."));
    manager.newTab();
    spoken();
    Q_EMIT page(0).windowsRefused();
    EXPECT_EQ(spoken(), QStringList());
}

TEST_F(BrowserManagerTest, ZoomStaysWithinItsBounds)
{
    manager.setZoom(2.0);
    EXPECT_EQ(spoken(), QStringList()) << "without a tab";
    manager.newTab();
    spoken();
    manager.setZoom(5.0);
    EXPECT_EQ(tab().zoom(), 3.0);
    EXPECT_EQ(page().zoom, 3.0);
    manager.setZoom(0.1);
    EXPECT_EQ(tab().zoom(), 0.25);
    manager.setZoom(1.259);
    EXPECT_EQ(spoken(), QStringList({"Zoom 300 percent", "Zoom 25 percent", "Zoom 125 percent"}));
}

TEST_F(BrowserManagerTest, ClosingTheOnlyTabLeavesOneOnTheStartPage)
{
    manager.newTab();
    visit(0, "https://a.test/", "A");
    spoken();
    manager.closeTab(tab().id());
    ASSERT_EQ(manager.tabs().size(), 1U);
    EXPECT_EQ(tab().title(), "Start Page");
    EXPECT_EQ(manager.activeTab(), &tab());
    EXPECT_EQ(manager.currentURLString(), "");
    EXPECT_EQ(spoken(), QStringList("Closed tab A. Opened new tab."));
    EXPECT_EQ(manager.closedTabURLs(), QStringList("https://a.test/"));
    EXPECT_TRUE(pages.pages[0].isNull());
}

TEST_F(BrowserManagerTest, ClosingTheActiveTabShowsTheOneInFrontOfIt)
{
    for (int i = 0; i < 4; ++i)
        manager.newTab();
    const QUuid first = tab(0).id();
    const QUuid second = tab(1).id();
    manager.switchTab(tab(2).id());
    manager.closeTab(tab(2).id());
    EXPECT_EQ(manager.activeTabID(), second) << "though there is one behind it";
    manager.switchTab(tab(2).id());
    manager.closeTab(tab(2).id());
    EXPECT_EQ(manager.activeTabID(), second);
    manager.switchTab(first);
    spoken();
    manager.closeTab(first);
    EXPECT_EQ(manager.activeTabID(), second) << "the new first one";
    EXPECT_EQ(spoken(), QStringList("Closed tab Start Page."));
}

TEST_F(BrowserManagerTest, ClosingAnotherTabChangesNothingElse)
{
    manager.newTab();
    manager.newTab();
    const QUuid active = manager.activeTabID();
    const QSignalSpy switched(&manager, &BrowserManager::activeTabChanged);
    manager.closeTab(tab(0).id());
    EXPECT_EQ(manager.activeTabID(), active);
    EXPECT_TRUE(switched.isEmpty());
    manager.closeTab(QUuid());
    EXPECT_EQ(manager.tabs().size(), 1U);
}

TEST_F(BrowserManagerTest, TheTwentyFirstClosedTabPushesOutTheOldest)
{
    manager.newTab();
    for (int i = 0; i <= 20; ++i) {
        manager.newTab();
        visit(i + 1, QString("https://a.test/%1").arg(i));
        manager.closeTab(manager.activeTabID());
    }
    EXPECT_EQ(manager.closedTabURLs().size(), 20);
    EXPECT_EQ(manager.closedTabURLs().first(), "https://a.test/1");
    EXPECT_EQ(manager.closedTabURLs().last(), "https://a.test/20");
}

TEST_F(BrowserManagerTest, AClosedStartPageIsNotKept)
{
    manager.newTab();
    manager.closeTab(tab().id());
    visit(1, "about:blank");
    manager.closeTab(tab().id());
    EXPECT_EQ(manager.closedTabURLs(), QStringList());
    spoken();
    manager.reopenClosedTab();
    EXPECT_EQ(spoken(), QStringList("No closed tab to reopen."));
}

TEST_F(BrowserManagerTest, AReopenedAddressLoadsInTheActiveTab)
{
    manager.newTab();
    visit(0, "https://a.test/x");
    manager.closeTab(tab().id());
    spoken();
    manager.reopenClosedTab();
    settle();
    EXPECT_EQ(manager.tabs().size(), 1U);
    EXPECT_EQ(page(1).log.last(), "load https://a.test/x");
    EXPECT_EQ(spoken(), QStringList({"Reopened closed tab.", "Loading a.test", "Loading a.test…"}));
    EXPECT_EQ(manager.closedTabURLs(), QStringList());
}

TEST_F(BrowserManagerTest, ATabMovesToAnotherPlace)
{
    for (int i = 0; i < 4; ++i)
        manager.newTab();
    const auto order = [this] {
        QList<qsizetype> places;
        for (const auto &each : manager.tabs())
            places.append(pages.pages.indexOf(static_cast<FakeWebPage *>(&each->webView())));
        return places;
    };
    manager.moveTab(0, 2);
    EXPECT_EQ(order(), QList<qsizetype>({1, 2, 0, 3}));
    manager.moveTab(3, 0);
    EXPECT_EQ(order(), QList<qsizetype>({3, 1, 2, 0}));
    const QSignalSpy moved(&manager, &BrowserManager::tabMoved);
    manager.moveTab(0, 4);
    manager.moveTab(-1, 0);
    manager.moveTab(1, 1);
    EXPECT_TRUE(moved.isEmpty());
    EXPECT_EQ(manager.activeTab(), &tab(0));
}

TEST_F(BrowserManagerTest, SharingOffersTheAddressOfTheActivePage)
{
    manager.makeWindowIfNeeded();
    spoken();
    manager.shareCurrentPage();
    EXPECT_EQ(spoken(), QStringList("There is no page to share yet."));
    visit(0, "https://a.test/x");
    spoken();
    manager.shareCurrentPage();
    EXPECT_EQ(window.asked, QStringList("share https://a.test/x"));
    EXPECT_EQ(spoken(), QStringList("Share sheet opened for a.test."));
    visit(0, "about:blank");
    spoken();
    manager.shareCurrentPage();
    EXPECT_EQ(spoken(), QStringList("Share sheet opened for this page."));
}

TEST_F(BrowserManagerTest, AnAddressIsToldAsItIsSent)
{
    manager.newTab();
    visit(0, "https://a.test/\u00E9 x?q=%26%41");
    EXPECT_EQ(tab().urlString(), "https://a.test/%C3%A9%20x?q=%26A");
    EXPECT_EQ(visits.last().first, tab().urlString());
}

} // namespace
} // namespace morvane
