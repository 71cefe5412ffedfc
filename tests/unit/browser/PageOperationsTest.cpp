#include "browser/tabs/PageOperations.h"

#include "BrowserFixture.h"
#include "async/Cancelled.h"
#include "browser/pages/PageScripts.h"

using namespace std::chrono_literals;

namespace morvane {
namespace {

const QString noElement =
    "Error: there is no element [%1]. Run browser_read first and use a number from its list.";
const QString unreadable =
    "Error: could not read the page. It may still be loading — run browser_read again.";

class PageOperationsTest : public BrowserFixture {
protected:
    PageOperationsTest()
    {
        pages.prepare = [this](FakeWebPage &made) {
            made.finishesByItself = true;
            made.answers = [this](const QString &script) { return answer(script); };
        };
    }

    QVariant answer(const QString &script) const
    {
        if (script == "document.readyState")
            return readyState;
        if (script == elementScript())
            return reading;
        if (script.contains("el.click()"))
            return click;
        return script.contains("setter.call") ? typing : QVariant();
    }

    /// Lets an operation run to its end, and time pass meanwhile, in steps of a tenth of a second.
    QString result(Task<QString> operation)
    {
        auto handle = scheduler.spawn(std::move(operation));
        const auto began = clock.now();
        for (settle(); !handle.done() && clock.now() - began < 1h; settle())
            clock.advance(100ms);
        took = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - began);
        return handle.done() ? handle.result() : QString("does not end");
    }
    QString open(const QString &what = "http://host.test/") { return result(operations.browserOpen(what)); }
    QString readPage() { return result(operations.browserRead()); }

    QVariant readyState = "complete";
    QVariant reading = R"({"title": "T", "url": "u", "text": "x", "elements": [
        {"ref": "@e0", "role": "a", "name": "A"}, {"ref": "@e1", "role": "input", "name": ""}]})";
    QVariant click = R"({"ok": true, "name": "A"})";
    QVariant typing = R"({"ok": true})";
    std::chrono::milliseconds took{};
    PageOperations &operations = manager.operations();
};

TEST_F(PageOperationsTest, OpeningShowsTheWindowLoadsSettlesAndReads)
{
    const QString text = open("Host.test/x");
    EXPECT_TRUE(text.startsWith("Page: T\nURL: u\n")) << text.toStdString();
    EXPECT_EQ(page().log, QStringList({"html <start>", "load https://host.test/x"}));
    EXPECT_EQ(window.asked, QStringList("front"));
    EXPECT_EQ(took, 400ms);
    EXPECT_EQ(spoken(), QStringList({"Opened new tab.", "Loading Host.test", "Loading host.test…",
                                     "Loaded host.test"}));
    EXPECT_EQ(page().scripts.mid(page().scripts.size() - 2),
              QStringList({removeMarksScript(), elementScript()}))
        << "old marks go before new ones are made";
}

TEST_F(PageOperationsTest, APageThatDoesNotEndLoadingIsToldAfterTwentySeconds)
{
    pages.prepare = {};
    EXPECT_EQ(open("http://Slow.test/"),
              "Opened Slow.test but it is still loading. Run browser_read in a moment to see it.");
    EXPECT_GE(took, 20s);
    EXPECT_LT(took, 21s);
}

TEST_F(PageOperationsTest, ALoadThatFailsIsNotWaitedForAnyLonger)
{
    pages.prepare = [this](FakeWebPage &made) {
        made.answers = [this](const QString &script) { return answer(script); };
    };
    auto handle = scheduler.spawn(operations.browserOpen("http://host.test/"));
    settle();
    clock.advance(10ms);
    page().fail({PageFailure::Kind::failed, "There is no such host."});
    settle();
    clock.advance(400ms);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_TRUE(handle.result().startsWith("Page: T\n")) << "what is there instead";
}

TEST_F(PageOperationsTest, APageWhoseScriptsGoOnLoadingIsWaitedFor)
{
    manager.newTab();
    readyState = "interactive";
    auto handle = scheduler.spawn(operations.browserOpen("http://host.test/"));
    for (int i = 0; i < 50; ++i) {
        settle();
        clock.advance(100ms);
    }
    EXPECT_FALSE(handle.done());
    readyState = "complete";
    for (int i = 0; i < 10; ++i) {
        settle();
        clock.advance(100ms);
    }
    settle();
    EXPECT_TRUE(handle.done());
}

TEST_F(PageOperationsTest, APageTooBusyToAnswerCountsAsLoaded)
{
    manager.newTab();
    readyState = QVariant();
    EXPECT_TRUE(open().startsWith("Page: T"));
    readyState = 7;
    EXPECT_TRUE(open().startsWith("Page: T"));
}

TEST_F(PageOperationsTest, APageThatAnswersNothingCostsTheLimitsAndIsToldSo)
{
    manager.newTab();
    page().holdsAnswers = true;
    EXPECT_EQ(open(), unreadable);
    EXPECT_GE(took, 2s + 2s + 400ms + 8s);
    EXPECT_EQ(page().unanswered, 1);
    EXPECT_EQ(result(operations.browserScroll(1)), "Scrolled up.");
    EXPECT_EQ(took, 5s);
    EXPECT_EQ(page().unanswered, 1) << "five seconds are not long enough";
}

TEST_F(PageOperationsTest, APageThatIsThereHasThreeSecondsForItsFirstAnswer)
{
    manager.newTab();
    page().back = true;
    page().finishesByItself = true;
    page().holdsAnswers = true;
    EXPECT_EQ(result(operations.browserBack()), "Went back to the previous page.");
    EXPECT_EQ(took, 3s + 2s + 2s + 400ms);
}

TEST_F(PageOperationsTest, WithoutAWindowThereIsNothingToOpenOrRead)
{
    BrowserServices without = services();
    without.makeWindow = {};
    BrowserManager lost(without);
    PageOperations &none = lost.operations();
    EXPECT_EQ(result(none.browserOpen("host.test")), "Error: the browser window is not open.");
    EXPECT_EQ(result(none.browserRead()), "Error: the browser window is not open.");
    EXPECT_EQ(result(none.browserScroll(1)), "Error: the browser is not open.");
    EXPECT_EQ(result(none.browserBack()), "Error: the browser is not open.");
    EXPECT_EQ(result(none.browserClick(1)), noElement.arg(1));
    EXPECT_EQ(result(none.browserType(1, "x", false)), noElement.arg(1));
}

TEST_F(PageOperationsTest, ANumberThatIsNotInTheListIsTold)
{
    EXPECT_EQ(result(operations.browserClick(1)), noElement.arg(1)) << "before there is a tab";
    manager.newTab();
    EXPECT_EQ(result(operations.browserClick(1)), noElement.arg(1)) << "before any reading";
    readPage();
    for (const qint64 index : {qint64(0), qint64(-1), qint64(3), std::numeric_limits<qint64>::max(),
                               std::numeric_limits<qint64>::min()}) {
        EXPECT_EQ(result(operations.browserClick(index)), noElement.arg(index));
        EXPECT_EQ(result(operations.browserType(index, "x", true)), noElement.arg(index));
    }
    EXPECT_EQ(result(operations.browserClick(2)), "Clicked 'A'.");
    EXPECT_TRUE(page().scripts.contains(clickScript("@e1")));
}

TEST_F(PageOperationsTest, ANavigationTakesAllNumbersAway)
{
    manager.newTab();
    readPage();
    page().begin("a link", QUrl("http://host.test/next"));
    EXPECT_EQ(result(operations.browserClick(1)), noElement.arg(1));
    readPage();
    EXPECT_EQ(result(operations.browserClick(1)), "Clicked 'A'.");
}

TEST_F(PageOperationsTest, NoNumberStandsForWhatTheUserHasOpened)
{
    manager.newTab();
    readPage();
    const auto expectNoNumbers = [&](const QString &path) {
        EXPECT_EQ(page().current, QUrl("https://host.test/" + path));
        clock.advance(30s);
        settle();
        EXPECT_EQ(result(operations.browserClick(1)), noElement.arg(1));
        EXPECT_EQ(page().scripts.count(elementScript()), 0);
    };
    page().scripts.clear();
    operations.open("host.test/next");
    expectNoNumbers("next");
    manager.closeTab(tab().id());
    pages.pages.removeFirst();
    manager.reopenClosedTab();
    expectNoNumbers("next");
}

TEST_F(PageOperationsTest, NumbersOfThePageBeforeGoWhenTheNextTakesItsPlace)
{
    manager.newTab();
    page().finishesByItself = false;
    page().begin("a link", QUrl("http://host.test/next"));
    readPage(); // the old page still stands
    EXPECT_EQ(tab().lastElementRefs().size(), 2);
    page().commit();
    EXPECT_TRUE(tab().lastElementRefs().isEmpty());
}

TEST_F(PageOperationsTest, AChangeWithinThePageLeavesTheNumbers)
{
    manager.newTab();
    readPage();
    page().current = QUrl("http://host.test/#x");
    Q_EMIT page().changed();
    EXPECT_EQ(tab().lastElementRefs().size(), 2);
    EXPECT_EQ(manager.currentURLString(), "http://host.test/#x");
}

TEST_F(PageOperationsTest, AReadingThatFailsLeavesTheListAsItWas)
{
    manager.newTab();
    readPage();
    for (const QVariant &useless : {QVariant(), QVariant(5), QVariant("no JSON"), QVariant("[]")}) {
        reading = useless;
        EXPECT_EQ(readPage(), unreadable);
    }
    EXPECT_EQ(tab().lastElementRefs(), QStringList({"@e0", "@e1"}));
}

TEST_F(PageOperationsTest, EveryTabHasItsOwnNumbers)
{
    manager.newTab();
    readPage();
    manager.newTab();
    EXPECT_EQ(result(operations.browserClick(1)), noElement.arg(1));
    manager.switchTab(tab(0).id());
    EXPECT_EQ(result(operations.browserClick(1)), "Clicked 'A'.");
}

TEST_F(PageOperationsTest, AClickIsToldByItsNameAndItsFailureByItsReason)
{
    manager.newTab();
    readPage();
    click = R"({"ok": true, "name": ""})";
    EXPECT_EQ(result(operations.browserClick(1)), "Clicked element [1].");
    EXPECT_EQ(took, 400ms);
    click = R"({"ok": true})";
    EXPECT_EQ(result(operations.browserClick(2)), "Clicked element [2].");
    click =
        R"({"ok": false, "reason": "element is gone — the page may have changed. Run browser_read again."})";
    EXPECT_EQ(result(operations.browserClick(1)),
              "Error: element is gone — the page may have changed. Run browser_read again.");
    for (const char *useless :
         {"{}", "", "7", R"({"ok": 1})", R"({"ok": "true"})", R"({"ok": false, "reason": 7})"}) {
        click = useless;
        EXPECT_EQ(result(operations.browserClick(1)), "Error: the click did not work.") << useless;
    }
    click = QVariant();
    EXPECT_EQ(result(operations.browserClick(1)), "Error: the click did not work.");
}

TEST_F(PageOperationsTest, TypingDoesNotWaitAndSaysWhetherItSubmitted)
{
    manager.newTab();
    readPage();
    EXPECT_EQ(result(operations.browserType(2, "it's", false)), "Typed the text into field [2].");
    EXPECT_EQ(took, 0ms);
    EXPECT_EQ(page().scripts.last(), typeScript("@e1", "it's", false));
    EXPECT_EQ(result(operations.browserType(2, "x", true)), "Typed the text into field [2] and submitted.");
    EXPECT_EQ(page().scripts.last(), typeScript("@e1", "x", true));
    typing = R"({"ok": false, "reason": "element is gone — run browser_read again."})";
    EXPECT_EQ(result(operations.browserType(2, "x", true)),
              "Error: element is gone — run browser_read again.");
    typing = QVariant();
    EXPECT_EQ(result(operations.browserType(2, "x", true)), "Error: could not type into that element.");
}

TEST_F(PageOperationsTest, ScrollingSaysItsDirectionWhateverComesOfIt)
{
    EXPECT_EQ(result(operations.browserScroll(-1)), "Scrolled down.") << "in a window of its own making";
    EXPECT_EQ(page().scripts.last(), "window.scrollBy(0, 600); 'scrolled'");
    EXPECT_EQ(result(operations.browserScroll(1)), "Scrolled up.");
    EXPECT_EQ(window.asked, QStringList({"front", "front"}));
}

TEST_F(PageOperationsTest, GoingBackNeedsAPageToGoBackTo)
{
    EXPECT_EQ(result(operations.browserBack()), "Error: there is no previous page to go back to.");
    page().back = true;
    EXPECT_EQ(result(operations.browserBack()), "Went back to the previous page.");
    EXPECT_EQ(page().log.mid(page().log.size() - 2), QStringList({"leave", "back"}))
        << "the user is not asked about what the page would lose";
    EXPECT_EQ(took, 400ms);
}

TEST_F(PageOperationsTest, AnOperationKeepsToTheTabThatItBeganWith)
{
    manager.newTab();
    page().holdsAnswers = true;
    auto handle = scheduler.spawn(operations.browserRead());
    settle();
    manager.newTab();
    page(0).answerHeld();
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_TRUE(handle.result().startsWith("Page: T"));
    EXPECT_EQ(tab(0).lastElementRefs().size(), 2);
    EXPECT_TRUE(tab(1).lastElementRefs().isEmpty());
}

TEST_F(PageOperationsTest, ATabThatIsClosedUnderAnOperationEndsItAtOnce)
{
    const QString noWindow = "Error: the browser window is not open.";
    const QString notOpen = "Error: the browser is not open.";
    const auto closedUnder = [this](auto begin) {
        manager.newTab();
        BrowserTab &under = *manager.activeTab();
        under.setLastElementRefs({"@e0"});
        auto &shown = static_cast<FakeWebPage &>(under.webView());
        shown.holdsAnswers = true;
        shown.finishesByItself = false;
        auto handle = scheduler.spawn(begin());
        settle();
        EXPECT_FALSE(handle.done());
        manager.closeTab(under.id());
        settle();
        EXPECT_TRUE(handle.done());
        return handle.done() ? handle.result() : QString("does not end");
    };
    manager.newTab();
    EXPECT_EQ(closedUnder([&] { return operations.browserRead(); }), noWindow);
    EXPECT_EQ(closedUnder([&] { return operations.browserOpen("host.test"); }), noWindow);
    EXPECT_EQ(closedUnder([&] { return operations.browserClick(1); }), notOpen);
    EXPECT_EQ(closedUnder([&] { return operations.browserType(1, "x", false); }), notOpen);
    EXPECT_EQ(closedUnder([&] { return operations.browserScroll(-1); }), "Scrolled down.");
}

TEST_F(PageOperationsTest, AnAnswerThatComesTooLateReachesNobody)
{
    manager.newTab();
    page().holdsAnswers = true;
    EXPECT_EQ(readPage(), unreadable);
    page().answerHeld();
    settle();
    EXPECT_TRUE(tab().lastElementRefs().isEmpty());
}

TEST_F(PageOperationsTest, ACancelledOperationEndsAtItsNextWait)
{
    manager.newTab();
    page().holdsAnswers = true;
    auto handle = scheduler.spawn(operations.browserRead());
    settle();
    handle.cancel();
    settle();
    EXPECT_TRUE(handle.done());
    EXPECT_THROW(handle.result(), Cancelled);
}

} // namespace
} // namespace morvane
