#include "browser/window/BuiltInBrowser.h"

#include "browser/window/BrowserWindowView.h"
#include "net/HttpClient.h"
#include "support/AppFixture.h"
#include "support/FakeWebPage.h"
#include "support/FakeWindowRaiser.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class BuiltInBrowserTest : public AppFixture {
protected:
    ~BuiltInBrowserTest() override
    {
        scheduler.shutdown(std::chrono::seconds(1));
        builtIn.shutDown();
    }

    void attach()
    {
        builtIn.attach({.conversation = *model, .updates = model->updates(), .showMainWindow = [] {}});
    }
    BrowserEngine startEngine()
    {
        ++starts;
        if (!missing.isEmpty())
            return std::unexpected(missing);
        auto factory = std::make_unique<FakeWebPageFactory>();
        pages = factory.get();
        factory->prepare = [](FakeWebPage &page) {
            page.finishesByItself = true;
            page.answers = [](const QString &) {
                return QVariant(uR"({"title":"T","url":"https://a.test/","text":"words","elements":[]})"_s);
            };
        };
        return factory;
    }
    static BrowserWindowView *window()
    {
        for (QWidget *top : QApplication::topLevelWidgets())
            if (auto *found = qobject_cast<BrowserWindowView *>(top))
                return found;
        return nullptr;
    }
    static QMessageBox *alert()
    {
        for (QWidget *top : QApplication::topLevelWidgets())
            if (auto *found = qobject_cast<QMessageBox *>(top))
                return found;
        return nullptr;
    }

    HttpClient http;
    FakeWindowRaiser raiser;
    QString missing;
    int starts = 0;
    FakeWebPageFactory *pages = nullptr;
    BuiltInBrowser builtIn{
        {scheduler, announcer, http, urls, raiser, attachments, home.path(u"browser"_s), {}, [this] {
             return startEngine();
         }}};
};

TEST_F(BuiltInBrowserTest, NothingIsStartedBeforeItIsWanted)
{
    attach();
    EXPECT_TRUE(builtIn.isAvailable());
    EXPECT_FALSE(builtIn.isVisible());
    EXPECT_EQ(starts, 0);
    EXPECT_FALSE(QFileInfo::exists(home.path(u"browser"_s)));
}

TEST_F(BuiltInBrowserTest, ShowingOpensTheWindowOnTheStartPage)
{
    attach();
    builtIn.show();
    ASSERT_NE(window(), nullptr);
    EXPECT_TRUE(builtIn.isVisible());
    EXPECT_EQ(raiser.raised, QStringList{u"activated Morvane Browser"_s});
    builtIn.show();
    EXPECT_EQ(starts, 1);
    EXPECT_EQ(pages->pages.size(), 1);
    EXPECT_TRUE(pages->pages.first()->log.first().contains(u"<title>Start Page</title>"_s));
    window()->close();
    EXPECT_FALSE(builtIn.isVisible());
}

TEST_F(BuiltInBrowserTest, AToolOpensThePageInTheSameWindow)
{
    attach();
    auto opened = scheduler.spawn(builtIn.browserOpen(u"a.test"_s));
    settle();
    clock.advance(std::chrono::seconds(30));
    settle();
    ASSERT_TRUE(opened.done());
    opened.result();
    EXPECT_EQ(pages->pages.first()->log.last(), u"load https://a.test"_s);
    EXPECT_TRUE(builtIn.isVisible());
    const ToolResult read = runTask(scheduler, builtIn.browserRead());
    EXPECT_TRUE(read.text.startsWith(u"Page: T\nURL: https://a.test/"_s)) << qPrintable(read.text);
    EXPECT_FALSE(read.failed);
}

TEST_F(BuiltInBrowserTest, StoppingTheAgentStopsThePageInSight)
{
    attach();
    builtIn.stop();
    EXPECT_EQ(starts, 0);
    builtIn.show();
    builtIn.stop();
    EXPECT_EQ(pages->pages.first()->log.last(), u"stop"_s);
}

TEST_F(BuiltInBrowserTest, WhatIsMissingIsToldToTheModelAndToTheUser)
{
    attach();
    missing = u"the libraries are missing."_s;
    const ToolResult read = runTask(scheduler, builtIn.browserRead());
    EXPECT_EQ(read.text, u"Error: the built-in browser cannot be used: the libraries are missing."_s);
    EXPECT_TRUE(read.failed);
    EXPECT_FALSE(builtIn.isAvailable());
    EXPECT_EQ(builtIn.problem(), missing);
    builtIn.show();
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->text(), u"The browser cannot be opened."_s);
    EXPECT_EQ(alert()->informativeText(), u"The libraries are missing."_s);
    EXPECT_EQ(starts, 1);
    delete alert();
}

TEST_F(BuiltInBrowserTest, WhatIsVisitedIsRemembered)
{
    attach();
    auto opened = scheduler.spawn(builtIn.browserOpen(u"https://a.test/x"_s));
    settle();
    clock.advance(std::chrono::seconds(30));
    settle();
    builtIn.shutDown();
    EXPECT_TRUE(home.read(u"browser/browser-history.json"_s).contains(R"("url":"https://a.test/x")"));
    EXPECT_EQ(window(), nullptr);
}

TEST_F(BuiltInBrowserTest, ThatItIsNotPartOfTheInstallationIsKnownAtOnce)
{
    BuiltInBrowser none({scheduler, announcer, http, urls, raiser, attachments, home.path(), {}, {}},
                        u"it is not installed."_s);
    none.attach({.conversation = *model, .updates = model->updates(), .showMainWindow = [] {}});
    EXPECT_FALSE(none.isAvailable());
    EXPECT_EQ(runTask(scheduler, none.browserBack()).text,
              u"Error: the built-in browser cannot be used: it is not installed."_s);
}

} // namespace
} // namespace morvane
