#include "BrowserWindowFixture.h"

#include "browser/window/BrowserToolbar.h"
#include "browser/window/PageArea.h"
#include "browser/window/URLField.h"

#include <QAccessible>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QMimeData>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::Contains;

class BrowserToolbarTest : public BrowserWindowFixture {
protected:
    URLField *field() const { return part<URLField>(); }
    /// The window as it is when the user has come to the page by a link.
    void goOn()
    {
        browser->load(u"https://a.test/"_s, u"A"_s);
        browser->page().back = true;
        browser->load(u"https://b.test/"_s, u"B"_s);
        settle();
        announcer.spoken.clear();
    }
};

TEST_F(BrowserToolbarTest, EveryControlHasItsNameAndHint)
{
    const QList<std::pair<QString, QString>> told{
        {u"Go back"_s, u"Go to the previous page"_s},
        {u"Go forward"_s, u"Go to the next page"_s},
        {u"Share this page"_s, u"Open the share menu for this page"_s},
        {u"Show history"_s, u"Open browsing history"_s},
    };
    for (const auto &[name, hint] : told) {
        ASSERT_NE(button(name), nullptr) << qPrintable(name);
        EXPECT_EQ(button(name)->accessibleDescription(), hint);
    }
    EXPECT_EQ(field()->accessibleName(), u"Address bar"_s);
    EXPECT_EQ(field()->accessibleDescription(), u"Enter a web address or search term"_s);
    EXPECT_EQ(field()->placeholderText(), u"Search Google or enter address"_s);
}

TEST_F(BrowserToolbarTest, BackIsDisabledOnATabsFirstPage)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    EXPECT_FALSE(button(u"Go back"_s)->isEnabled());
    EXPECT_FALSE(button(u"Go forward"_s)->isEnabled());
    EXPECT_FALSE(item(u"History"_s, u"Back"_s)->isEnabled());
    press(Qt::Key_BracketLeft, Qt::ControlModifier);
    EXPECT_FALSE(browser->page().log.contains(u"back"_s));
}

TEST_F(BrowserToolbarTest, BackForwardAndReloadAreDoneAndSpoken)
{
    goOn();
    click(u"Go back"_s);
    EXPECT_EQ(browser->page().log.last(), u"back"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Going back."_s));
    browser->page().forward = true;
    browser->page().finish();
    click(u"Go forward"_s);
    EXPECT_EQ(browser->page().log.last(), u"forward"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Going forward."_s));
    click(u"Reload this page"_s);
    EXPECT_EQ(browser->page().log.last(), u"reload"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Reloading page."_s));
}

TEST_F(BrowserToolbarTest, APressThatLeadsNowhereSaysNothing)
{
    browser->page().forward = true;
    goOn();
    announcer.spoken.clear();
    for (const QString &name : {u"Go back"_s, u"Go forward"_s}) {
        click(name);
        // The page that comes has no other before it or after it; the buttons follow when it is there.
        browser->page().back = browser->page().forward = false;
        click(name);
        EXPECT_EQ(browser->page().log.count(name.section(u' ', 1)), 1);
        browser->page().forward = true;
    }
    EXPECT_EQ(announcer.spoken.count(u"Going back."_s), 1);
    EXPECT_EQ(announcer.spoken.count(u"Going forward."_s), 1);
}

TEST_F(BrowserToolbarTest, AButtonThatIsSwitchedOffKeepsTheKeyboard)
{
    goOn();
    button(u"Go back"_s)->setFocus();
    browser->page().back = false;
    browser->load(u"https://c.test/"_s, u"C"_s);
    EXPECT_TRUE(button(u"Go back"_s)->hasFocus());
    press(Qt::Key_Space);
    EXPECT_FALSE(browser->page().log.contains(u"back"_s));
    press(Qt::Key_Tab);
    EXPECT_FALSE(button(u"Go back"_s)->isEnabled());
    EXPECT_TRUE(button(u"Reload this page"_s)->hasFocus());
    button(u"Bookmark this page"_s)->setFocus();
    manager.newTab();
    EXPECT_TRUE(button(u"Bookmark this page"_s)->hasFocus());
}

TEST_F(BrowserToolbarTest, TheAddressFollowsThePageAndTheTab)
{
    EXPECT_EQ(field()->text(), QString());
    browser->load(u"https://a.test/x"_s, u"A"_s);
    EXPECT_EQ(field()->text(), u"https://a.test/x"_s);
    manager.newTab();
    EXPECT_EQ(field()->text(), QString());
    manager.switchTab(manager.tabs().front()->id());
    EXPECT_EQ(field()->text(), u"https://a.test/x"_s);
}

TEST_F(BrowserToolbarTest, TheAddressSelectsAllOnFocus)
{
    browser->load(u"https://a.test/x"_s, u"A"_s);
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(field()->hasFocus());
    EXPECT_EQ(field()->selectedText(), u"https://a.test/x"_s);
    field()->deselect();
    part<PageArea>()->focusPage();
    QTest::mouseClick(field(), Qt::LeftButton);
    EXPECT_EQ(field()->selectedText(), u"https://a.test/x"_s);
    QTest::mouseClick(field(), Qt::LeftButton); // the second one sets the caret
    EXPECT_EQ(field()->selectedText(), QString());
}

TEST_F(BrowserToolbarTest, APressThatSelectsAPartSelectsNoMore)
{
    browser->load(u"https://a.test/x"_s, u"A"_s);
    part<PageArea>()->focusPage();
    const QPoint start(10, field()->height() / 2);
    const QPoint end(60, start.y());
    QTest::mousePress(field(), Qt::LeftButton, {}, start);
    QTest::mouseMove(field(), end);
    QTest::mouseRelease(field(), Qt::LeftButton, {}, end);
    EXPECT_FALSE(field()->selectedText().isEmpty());
    EXPECT_LT(field()->selectedText().size(), field()->text().size());
}

TEST_F(BrowserToolbarTest, WhoGoesBackToAnAddressThatIsBeingOpenedFindsThePagesOnceItIsThere)
{
    press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(field(), u"host.test/x"_s);
    press(Qt::Key_Return);
    press(Qt::Key_L, Qt::ControlModifier);
    browser->page().begin(u"redirection"_s, QUrl(u"https://other.test/"_s));
    browser->page().finish(u"Other"_s);
    EXPECT_EQ(field()->text(), u"https://other.test/"_s);
}

TEST_F(BrowserToolbarTest, WhatTheUserWritesStaysWhileAPageLoads)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(field(), u"b.te"_s);
    browser->load(u"https://c.test/"_s, u"C"_s);
    EXPECT_EQ(field()->text(), u"b.te"_s);
    press(Qt::Key_Escape);
    EXPECT_EQ(field()->text(), u"https://c.test/"_s);
    EXPECT_EQ(field()->selectedText(), u"https://c.test/"_s);
    EXPECT_TRUE(field()->hasFocus());
}

TEST_F(BrowserToolbarTest, WhatAReaderWritesStaysWhileAPageLoads)
{
    field()->setFocus();
    QAccessible::queryAccessibleInterface(field())->setText(QAccessible::Value, u"dictated.test"_s);
    browser->load(u"https://a.test/"_s, u"A"_s);
    EXPECT_EQ(field()->text(), u"dictated.test"_s);
    press(Qt::Key_Escape);
    EXPECT_EQ(field()->text(), u"https://a.test/"_s);
}

TEST_F(BrowserToolbarTest, ReturnOpensWhatIsWrittenAndGoesToThePage)
{
    press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(field(), u"host.test/x"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(browser->page().log.last(), u"load https://host.test/x"_s);
    EXPECT_TRUE(part<PageArea>()->hasPageFocus());
    browser->page().finish(u"Host"_s);
    EXPECT_EQ(field()->text(), u"https://host.test/x"_s);
}

TEST_F(BrowserToolbarTest, AnAddressThatIsTooLongForTheFieldIsOpenedWhole)
{
    const QString address = u"https://a.test/"_s + QString(100'000, u'x');
    browser->load(address, u"A"_s);
    press(Qt::Key_L, Qt::ControlModifier);
    press(Qt::Key_Return);
    EXPECT_EQ(browser->page().log.last(), u"load "_s + address);
}

TEST_F(BrowserToolbarTest, AnAddressThatIsLeftUnopenedGivesWayToThePages)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(field(), u"b.te"_s);
    press(Qt::Key_Tab);
    EXPECT_EQ(field()->text(), u"https://a.test/"_s);
    EXPECT_TRUE(button(u"Bookmark this page"_s)->hasFocus());
}

TEST_F(BrowserToolbarTest, AMenuOrAnotherWindowLeavesWhatIsWrittenAndSelected)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(field(), u"b.te"_s);
    for (const auto reason : {Qt::PopupFocusReason, Qt::ActiveWindowFocusReason}) {
        QFocusEvent left(QEvent::FocusOut, reason);
        QApplication::sendEvent(field(), &left);
        QFocusEvent back(QEvent::FocusIn, reason);
        QApplication::sendEvent(field(), &back);
        EXPECT_EQ(field()->text(), u"b.te"_s);
        EXPECT_EQ(field()->selectedText(), QString());
    }
}

TEST_F(BrowserToolbarTest, AnAddressIsReadFromItsSiteOn)
{
    QApplication::setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(field()->layoutDirection(), Qt::LeftToRight);
    browser->load(u"https://a.test/"_s + QString(5'000, u'x'), u"A"_s);
    EXPECT_EQ(field()->cursorPosition(), 0);
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(BrowserToolbarTest, EscapeOnAnUnchangedAddressGoesToThePage)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_L, Qt::ControlModifier);
    press(Qt::Key_Escape);
    EXPECT_TRUE(part<PageArea>()->hasPageFocus());
}

TEST_F(BrowserToolbarTest, EscapeInTheAddressDoesNotStopTheAgent)
{
    neverAnswer();
    model->send(u"hello"_s, {});
    settle();
    press(Qt::Key_L, Qt::ControlModifier);
    press(Qt::Key_Escape);
    EXPECT_TRUE(model->isBusy());
}

TEST_F(BrowserToolbarTest, SharingOffersWhatCanBeDoneWithTheAddress)
{
    click(u"Share this page"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"There is no page to share yet."_s});
    EXPECT_EQ(openMenu(), nullptr);
    browser->load(u"https://a.test/x"_s, u"A"_s);
    announcer.spoken.clear();
    click(u"Share this page"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"Share sheet opened for a.test."_s});
    ASSERT_NE(openMenu(), nullptr);
    QStringList offers;
    for (const QAction *action : openMenu()->actions())
        offers.append(action->text());
    EXPECT_EQ(offers, (QStringList{u"Copy Link"_s, u"Open in Default Browser"_s, u"Send by Email"_s}));
    for (QAction *action : openMenu()->actions())
        action->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"https://a.test/x"_s);
    EXPECT_EQ(urls.opened, QList<QUrl>{QUrl(u"https://a.test/x"_s)});
    EXPECT_EQ(urls.mails, QStringList{u"https://a.test/x"_s});
    openMenu()->close();
}

TEST_F(BrowserToolbarTest, ALinkThatIsDroppedTakesTheAddressesPlaceAndStays)
{
    browser->load(u"https://a.test/x"_s, u"A"_s);
    URLField *address = field();
    QMimeData link;
    link.setText(u"https://b.test/"_s);
    const QPoint middle = address->rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &link, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(address, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(middle, Qt::CopyAction, &link, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(address, &drop);
    EXPECT_EQ(address->text(), u"https://b.test/"_s);
    Q_EMIT manager.toolbarStateChanged();
    EXPECT_EQ(address->text(), u"https://b.test/"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(browser->page().log.last(), u"load https://b.test/"_s);
}

TEST_F(BrowserToolbarTest, ThatAnAddressCannotBeHandedOnIsSpoken)
{
    browser->load(u"https://a.test/x"_s, u"A"_s);
    urls.works = false;
    click(u"Share this page"_s);
    ASSERT_NE(openMenu(), nullptr);
    announcer.spoken.clear();
    for (QAction *action : openMenu()->actions().sliced(1))
        action->trigger();
    EXPECT_EQ(announcer.spoken, (QStringList{u"The default browser could not be opened."_s,
                                             u"No mail program could be opened."_s}));
    openMenu()->close();
}

} // namespace
} // namespace morvane
