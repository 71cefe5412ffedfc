#include "BrowserFixture.h"

namespace morvane {
namespace {

/// What the manager makes of what pages say.
class NavigationTest : public BrowserFixture {
protected:
    NavigationTest()
    {
        manager.makeWindowIfNeeded();
        spoken();
    }

    class Permission final : public PagePermission {
    public:
        Kind kind() const override { return Kind::location; }
        QString site() const override { return "a.test"; }
        void grant() override { answer = "granted"; }
        void refuse() override { answer = "refused"; }

        QString answer;
    };
};

TEST_F(NavigationTest, ALoadIsHeardFromItsBeginToItsEnd)
{
    page().load(QUrl("https://a.test/x"));
    EXPECT_EQ(spoken(), QStringList("Loading a.test…"));
    EXPECT_EQ(tab().urlString(), "");
    page().commit();
    EXPECT_EQ(spoken(), QStringList("Loaded a.test"));
    EXPECT_EQ(tab().title(), "a.test") << "until the page has told its title";
    EXPECT_EQ(manager.currentURLString(), "https://a.test/x");
    page().currentTitle = "A page";
    page().back = true;
    page().finish();
    EXPECT_EQ(spoken(), QStringList()) << "the address is the same";
    EXPECT_EQ(tab().title(), "A page");
    EXPECT_TRUE(manager.canGoBack());
    EXPECT_FALSE(manager.canGoForward());
}

TEST_F(NavigationTest, AnAddressWithoutAHostIsAPage)
{
    page().begin("a link", QUrl("about:blank"));
    page().finish();
    EXPECT_EQ(spoken(), QStringList({"Loading page…", "Loaded New Tab"}));
}

TEST_F(NavigationTest, WhatHappensInAnotherTabIsSilentAndChangesNoToolbar)
{
    manager.newTab();
    spoken();
    visit(0, "https://a.test/", "A");
    page(0).begin("a link", QUrl("https://b.test/"));
    page(0).fail({PageFailure::Kind::failed, "There is no such host."});
    EXPECT_EQ(spoken(), QStringList());
    EXPECT_EQ(manager.currentURLString(), "");
    EXPECT_EQ(tab(0).title(), "A");
}

TEST_F(NavigationTest, ALoadThatFailsIsAnnouncedAndLeavesThePage)
{
    visit(0, "https://a.test/", "A");
    spoken();
    page().load(QUrl("https://b.test/"));
    page().fail({PageFailure::Kind::failed, "There is no such host."});
    EXPECT_EQ(spoken(), QStringList({"Loading b.test…", "Failed to load: There is no such host."}));
    EXPECT_EQ(tab().urlString(), "https://a.test/");
    EXPECT_EQ(tab().title(), "A");
}

TEST_F(NavigationTest, WhatTheEngineHasLeftAfterALoadThatFailsIsShown)
{
    visit(0, "https://a.test/", "A");
    page().load(QUrl("https://b.test/"));
    page().currentTitle = "Crashed";
    page().back = true;
    page().fail({PageFailure::Kind::cancelled, "aborted"});
    EXPECT_EQ(tab().title(), "Crashed");
    EXPECT_TRUE(manager.canGoBack());
}

TEST_F(NavigationTest, ACancelledLoadIsSilent)
{
    page().load(QUrl("https://b.test/"));
    spoken();
    page().fail({PageFailure::Kind::cancelled, "aborted"});
    EXPECT_EQ(spoken(), QStringList());
}

TEST_F(NavigationTest, ACrashIsAnnouncedLikeALoadThatFails)
{
    page().fail({PageFailure::Kind::crashed, "The page crashed."});
    EXPECT_EQ(spoken(), QStringList("Failed to load: The page crashed."));
}

TEST_F(NavigationTest, EveryFinishedLoadIsRecordedWithItsTitleIfItHasOne)
{
    visit(0, "https://a.test/x", "A");
    visit(0, "https://b.test/");
    page().load(QUrl("https://c.test/"));
    page().fail({});
    const QList<std::pair<QString, QString>> expected{{"https://a.test/x", "A"}, {"https://b.test/", ""}};
    EXPECT_EQ(visits, expected);
    page().begin("the start page", QUrl());
    page().finish("Start Page");
    EXPECT_EQ(visits, expected) << "the start page leaves no trace";
}

TEST_F(NavigationTest, TheIconOfASiteIsFetchedOnceAndGoesWithTheSite)
{
    QImage icon(2, 2, QImage::Format_RGB32);
    icon.fill(Qt::red);
    icons["a.test"] = icon;
    visit(0, "https://a.test/1");
    EXPECT_EQ(tab().favicon(), icon);
    visit(0, "https://a.test/2");
    EXPECT_EQ(iconsAsked, QStringList("a.test"));
    visit(0, "https://b.test/");
    EXPECT_TRUE(tab().favicon().isNull()) << "that of another site would be a lie";
    visit(0, "https://b.test/");
    EXPECT_EQ(iconsAsked, QStringList({"a.test", "b.test", "b.test"}));
}

TEST_F(NavigationTest, TheIconOfAHostInAnotherScriptIsKeptUnderTheNameThatIsSent)
{
    icons["xn--bcher-kva.de"] = QImage(16, 16, QImage::Format_RGB32);
    visit(0, "https://b\u00FCcher.de/");
    EXPECT_EQ(iconsAsked, QStringList("xn--bcher-kva.de"));
    EXPECT_FALSE(tab().favicon().isNull());
}

TEST_F(NavigationTest, AHostInAnotherScriptIsCalledByTheNameThatIsSent)
{
    page().load(QUrl("https://b\u00FCcher.de/"));
    page().commit();
    EXPECT_EQ(spoken(), QStringList({"Loading xn--bcher-kva.de\u2026", "Loaded xn--bcher-kva.de"}));
    EXPECT_EQ(tab().title(), "xn--bcher-kva.de");
}

TEST_F(NavigationTest, AnIconThatComesTooLateReachesNobody)
{
    QImage icon(2, 2, QImage::Format_RGB32);
    icons["a.test"] = icon;
    page().load(QUrl("https://a.test/"));
    page().finish();
    page().load(QUrl("https://b.test/"));
    page().finish();
    settle();
    EXPECT_TRUE(tab().favicon().isNull());
    page().load(QUrl("https://a.test/"));
    page().finish();
    manager.closeTab(tab().id());
    settle();
    EXPECT_TRUE(tab().favicon().isNull());
}

TEST_F(NavigationTest, AWindowThatAPageOpensReplacesIt)
{
    visit(0, "https://a.test/");
    Q_EMIT page().newWindowRequested(QUrl("https://b.test/popup"));
    EXPECT_EQ(page().log.last(), "load https://b.test/popup");
    EXPECT_EQ(manager.tabs().size(), 1U);
    Q_EMIT page().newWindowRequested(QUrl());
    EXPECT_EQ(page().log.last(), "load https://b.test/popup");
}

TEST_F(NavigationTest, OnlyThePageInSightMayAskForPermission)
{
    const auto asked = std::make_shared<Permission>();
    Q_EMIT page().permissionRequested(asked);
    EXPECT_EQ(window.permissions.size(), 1);
    EXPECT_EQ(asked->answer, "");
    const auto hidden = std::make_shared<Permission>();
    window.visible = false;
    Q_EMIT page().permissionRequested(hidden);
    EXPECT_EQ(hidden->answer, "refused");
    window.visible = true;
    manager.newTab();
    const auto behind = std::make_shared<Permission>();
    Q_EMIT page(0).permissionRequested(behind);
    EXPECT_EQ(behind->answer, "refused");
    manager.windowClosed();
    const auto closed = std::make_shared<Permission>();
    Q_EMIT page(1).permissionRequested(closed);
    EXPECT_EQ(closed->answer, "refused");
    EXPECT_EQ(window.permissions.size(), 1);
}

TEST_F(NavigationTest, OnePageAfterTheOtherWithoutEndIsHeardSomeTimes)
{
    for (int i = 0; i < 1000; ++i)
        visit(0, QString("https://a.test/%1").arg(i));
    page().fail({PageFailure::Kind::failed, "There is no such host."});
    EXPECT_EQ(spoken().size(), 20);
    EXPECT_EQ(visits.size(), 1000);
    manager.newTab();
    EXPECT_EQ(spoken(), QStringList("Opened new tab.")) << "what the user does is heard";
    clock.advance(std::chrono::seconds(10));
    visit(1, "https://b.test/");
    EXPECT_EQ(spoken(), QStringList({"Loading b.test…", "Loaded b.test"}));
}

} // namespace
} // namespace morvane
