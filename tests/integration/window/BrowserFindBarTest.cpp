#include "BrowserWindowFixture.h"

#include "browser/window/BrowserFindBar.h"
#include "browser/window/PageArea.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

class BrowserFindBarTest : public BrowserWindowFixture {
protected:
    BrowserFindBarTest()
    {
        browser->load(u"https://a.test/"_s, u"A"_s);
        settle();
        announcer.spoken.clear();
    }

    BrowserFindBar *bar() const { return part<BrowserFindBar>(); }
    QLineEdit *field() const { return bar()->findChild<QLineEdit *>(); }
    QString count() const { return bar()->findChild<QLabel *>()->text(); }
    void open()
    {
        press(Qt::Key_F, Qt::ControlModifier);
        ASSERT_TRUE(field()->hasFocus());
    }
    void type(const QString &text)
    {
        QTest::keyClicks(field(), text);
        settle();
    }
    void pageHas(int matches)
    {
        browser->page().answers = [matches](const QString &) { return QVariant(matches); };
    }
    QStringList &scripts() { return browser->page().scripts; }
};

TEST_F(BrowserFindBarTest, OpeningAndClosingIsSpoken)
{
    EXPECT_FALSE(bar()->isVisible());
    open();
    EXPECT_TRUE(bar()->isVisible());
    EXPECT_EQ(announcer.spoken, QStringList{u"Find bar opened"_s});
    press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_FALSE(bar()->isVisible());
    EXPECT_EQ(announcer.spoken.last(), u"Find bar closed"_s);
    EXPECT_TRUE(part<PageArea>()->hasPageFocus());
}

TEST_F(BrowserFindBarTest, TheKeyboardGoesStraightBackToThePage)
{
    open();
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    press(Qt::Key_Escape);
    EXPECT_FALSE(bar()->isVisible());
    EXPECT_EQ(moves.size(), 1) << "a field of the page that has it for a moment answers, and is read out";
    EXPECT_TRUE(part<PageArea>()->hasPageFocus());
}

TEST_F(BrowserFindBarTest, ItsPartsHaveTheirNamesAndHints)
{
    open();
    EXPECT_EQ(bar()->accessibleName(), u"Find bar"_s);
    EXPECT_EQ(field()->accessibleName(), u"Find in page"_s);
    EXPECT_EQ(field()->accessibleDescription(), u"Type to search within the page"_s);
    EXPECT_EQ(button(u"Previous match"_s)->accessibleDescription(), u"Go to the previous match"_s);
    EXPECT_EQ(button(u"Next match"_s)->accessibleDescription(), u"Go to the next match"_s);
    ASSERT_NE(button(u"Close find bar"_s), nullptr);
}

TEST_F(BrowserFindBarTest, FromThePageTheKeyGoesBackToTheWords)
{
    open();
    type(u"x"_s);
    part<PageArea>()->focusPage();
    announcer.spoken.clear();
    open();
    EXPECT_EQ(field()->selectedText(), u"x"_s);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(BrowserFindBarTest, WordsAreCountedInThePage)
{
    open();
    pageHas(3);
    scripts().clear();
    type(u"K"_s);
    EXPECT_EQ(count(), u"3 matches"_s);
    EXPECT_EQ(scripts(), QStringList{u"(function () {\n"
                                     "  var q = 'k';\n"
                                     "  var text = (document.body.innerText || '').toLowerCase();\n"
                                     "  var count = 0, i = text.indexOf(q);\n"
                                     "  while (i !== -1) { count++; i = text.indexOf(q, i + q.length); }\n"
                                     "  return count;\n"
                                     "})()"_s});
}

TEST_F(BrowserFindBarTest, NextAndPreviousAreShownAndSpoken)
{
    open();
    pageHas(3);
    type(u"it's \\ me"_s);
    scripts().clear();
    announcer.spoken.clear();
    press(Qt::Key_Return);
    press(Qt::Key_Return, Qt::ShiftModifier);
    click(u"Next match"_s);
    click(u"Previous match"_s);
    const QString forwards = u"window.find('it\\'s \\\\ me', false, false, true)"_s;
    const QString backwards = u"window.find('it\\'s \\\\ me', false, true, true)"_s;
    scripts().removeIf([](const QString &script) { return !script.startsWith(u"window.find"_s); });
    EXPECT_EQ(scripts(), (QStringList{forwards, backwards, forwards, backwards}));
    EXPECT_EQ(announcer.spoken, QStringList(4, u"3 matches for it's \\ me"_s));
}

TEST_F(BrowserFindBarTest, NoMatchIsSpoken)
{
    open();
    pageHas(0);
    type(u"x"_s);
    announcer.spoken.clear();
    press(Qt::Key_Return);
    EXPECT_EQ(announcer.spoken, QStringList{u"No matches for x"_s});
}

TEST_F(BrowserFindBarTest, APageThatHasGoneOnChangingIsCountedAgainWithEachStep)
{
    open();
    pageHas(0);
    type(u"x"_s);
    announcer.spoken.clear();
    pageHas(2);
    press(Qt::Key_Return);
    EXPECT_EQ(announcer.spoken, QStringList{u"2 matches for x"_s});
    EXPECT_EQ(count(), u"2 matches"_s);
}

TEST_F(BrowserFindBarTest, WordsThatAreChangedWhileTheyAreLookedForAreNotSpokenOf)
{
    open();
    pageHas(2);
    type(u"x"_s);
    announcer.spoken.clear();
    browser->page().holdsAnswers = true;
    press(Qt::Key_Return);
    type(u"y"_s);
    browser->page().answerHeld();
    settle();
    browser->page().answerHeld();
    settle();
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(BrowserFindBarTest, AStepInATabThatWasLeftSaysNothingOfTheOther)
{
    open();
    pageHas(3);
    type(u"x"_s);
    browser->page().holdsAnswers = true;
    FakeWebPage &left = browser->page();
    press(Qt::Key_Return);
    manager.newTab();
    settle();
    announcer.spoken.clear();
    const QString shown = count();
    left.answerHeld();
    settle();
    left.answerHeld();
    settle();
    EXPECT_EQ(count(), shown);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(BrowserFindBarTest, NoTextShowsNoneAndMovesNothing)
{
    open();
    EXPECT_EQ(count(), u"0 matches"_s);
    scripts().clear();
    announcer.spoken.clear();
    press(Qt::Key_Return);
    EXPECT_TRUE(scripts().isEmpty());
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(BrowserFindBarTest, APageThatDoesNotAnswerInFiveSecondsHasNoMatches)
{
    open();
    pageHas(3);
    type(u"x"_s);
    EXPECT_EQ(count(), u"3 matches"_s);
    browser->page().holdsAnswers = true;
    type(u"y"_s);
    clock.advance(4999ms);
    settle();
    EXPECT_EQ(count(), u"3 matches"_s);
    clock.advance(1ms);
    settle();
    EXPECT_EQ(count(), u"0 matches"_s);
}

TEST_F(BrowserFindBarTest, WordsOfAnyLengthAreCut)
{
    open();
    scripts().clear();
    field()->setText(QString(1'000'000, u'x'));
    settle();
    ASSERT_EQ(scripts().size(), 1);
    EXPECT_LT(scripts().first().size(), 1'000);
}

TEST_F(BrowserFindBarTest, AnOldCountDoesNotTakeThePlaceOfANewOne)
{
    open();
    browser->page().answers = [](const QString &script) {
        return QVariant(script.contains(u"'xy'"_s) ? 2 : 9);
    };
    browser->page().holdsAnswers = true;
    type(u"x"_s);
    type(u"y"_s);
    browser->page().answerHeld();
    settle();
    EXPECT_EQ(count(), u"2 matches"_s);
}

TEST_F(BrowserFindBarTest, AnotherTabIsCountedAnew)
{
    open();
    pageHas(3);
    type(u"x"_s);
    browser->pages.prepare = [](FakeWebPage &page) {
        page.answers = [](const QString &) { return QVariant(1); };
    };
    manager.newTab();
    settle();
    EXPECT_EQ(count(), u"1 match"_s);
}

TEST_F(BrowserFindBarTest, AnotherDocumentIsCountedAnew)
{
    open();
    pageHas(3);
    type(u"x"_s);
    pageHas(1);
    browser->load(u"https://b.test/"_s, u"B"_s);
    settle();
    EXPECT_EQ(count(), u"1 match"_s);
    manager.newTab();
    manager.switchTab(manager.tabs().front()->id());
    pageHas(2);
    browser->page().reload();
    browser->page().finish();
    settle();
    EXPECT_EQ(count(), u"2 matches"_s);
}

TEST_F(BrowserFindBarTest, AnotherDocumentOfATabThatWasLeftIsNotCounted)
{
    FakeWebPage &left = browser->page();
    manager.newTab();
    open();
    pageHas(1);
    type(u"x"_s);
    scripts().clear();
    left.load(QUrl(u"https://b.test/"_s));
    left.finish(u"B"_s);
    settle();
    EXPECT_TRUE(scripts().isEmpty());
}

TEST_F(BrowserFindBarTest, EscapeClosesItAndStopsNothing)
{
    neverAnswer();
    model->send(u"hello"_s, {});
    settle();
    open();
    press(Qt::Key_Escape);
    EXPECT_FALSE(bar()->isVisible());
    EXPECT_TRUE(model->isBusy());
    open();
    click(u"Close find bar"_s);
    EXPECT_FALSE(bar()->isVisible());
}

} // namespace
} // namespace morvane
