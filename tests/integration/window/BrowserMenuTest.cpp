#include "BrowserWindowFixture.h"

#include "base/InstalledFiles.h"
#include "browser/window/PageArea.h"
#include "browser/window/URLField.h"

#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class BrowserMenuTest : public BrowserWindowFixture {
protected:
    /// Text and key of each item of a menu; "-" for a line.
    QStringList items(const QString &title) const
    {
        QStringList found;
        for (const QAction *action : menu(title)->actions())
            found.append(action->isSeparator() ? u"-"_s
                                               : action->text() + u'|' + action->shortcut().toString());
        return found;
    }
    void choose(const QString &title, const QString &text)
    {
        QAction *action = item(title, text);
        ASSERT_NE(action, nullptr) << qPrintable(text);
        action->trigger();
        settle();
    }
    /// A key with Control that is held until it has come three times.
    void hold(Qt::Key key)
    {
        for (const bool isRepeated : {false, true, true}) {
            qt_sendShortcutOverrideEvent(window, 0, key, Qt::ControlModifier, {}, isRepeated);
            settle();
        }
    }
    QStringList historyItems() const
    {
        Q_EMIT menu(u"History"_s)->aboutToShow();
        QStringList found;
        for (const QAction *action : menu(u"History"_s)->actions().sliced(9))
            found.append(action->isSeparator() ? u"-"_s : action->text());
        return found;
    }
    QMessageBox *alert() const { return window->findChild<QMessageBox *>(); }
    void answer(const QString &text)
    {
        for (QAbstractButton *choice : alert()->buttons())
            if (QString(choice->text()).remove(u'&') == text)
                choice->click();
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

TEST_F(BrowserMenuTest, AKeyThatIsHeldClosesOneTabAndLoadsOnce)
{
    manager.newTab();
    manager.newTab();
    settle();
    hold(Qt::Key_W);
    EXPECT_EQ(manager.tabs().size(), 2U);
    hold(Qt::Key_T);
    EXPECT_EQ(manager.tabs().size(), 3U);
    browser->load(u"https://a.test/"_s, u"A"_s);
    settle();
    hold(Qt::Key_R);
    EXPECT_EQ(browser->page().log.count(u"reload"_s), 1);
    hold(Qt::Key_Equal);
    EXPECT_DOUBLE_EQ(manager.activeTab()->zoom(), 1.75);
}

TEST_F(BrowserMenuTest, TheMenuBarHoldsTheBrowsersMenus)
{
    QStringList titles;
    for (const QAction *action : window->menuBar()->actions())
        titles.append(QString(action->text()).remove(u'&'));
    EXPECT_EQ(titles, (QStringList{u"Morvane"_s, u"File"_s, u"Edit"_s, u"View"_s, u"History"_s,
                                   u"Bookmarks"_s, u"Window"_s, u"Help"_s}));
    EXPECT_EQ(items(u"Morvane"_s), (QStringList{u"About Morvane Browser|"_s, u"-"_s, u"Hide Morvane|Ctrl+H"_s,
                                                u"-"_s, u"Quit Morvane|Ctrl+Q"_s}));
    EXPECT_EQ(items(u"File"_s), (QStringList{u"New Tab|Ctrl+T"_s, u"Close Tab|Ctrl+W"_s,
                                             u"Close Window|Ctrl+Shift+W"_s, u"-"_s, u"Share…|"_s}));
    EXPECT_EQ(items(u"View"_s),
              (QStringList{u"Reload Page|Ctrl+R"_s, u"-"_s, u"Actual Size|Ctrl+0"_s, u"Zoom In|Ctrl+="_s,
                           u"Zoom Out|Ctrl+-"_s, u"-"_s, u"Enter Full Screen\tCtrl+F|"_s}));
    EXPECT_EQ(items(u"History"_s),
              (QStringList{u"Back|Ctrl+["_s, u"Forward|Ctrl+]"_s, u"-"_s, u"Reopen Closed Tab|Ctrl+Shift+T"_s,
                           u"-"_s, u"Show All History|Ctrl+Y"_s, u"-"_s, u"Clear History…|"_s,
                           u"Clear Browsing Data…|"_s}));
    EXPECT_EQ(items(u"Bookmarks"_s), QStringList{u"Add Bookmark|Ctrl+D"_s});
    EXPECT_EQ(items(u"Window"_s), QStringList{u"Minimize|Ctrl+M"_s});
    EXPECT_EQ(items(u"Help"_s), QStringList{u"Morvane Help|Ctrl+?"_s});
}

TEST_F(BrowserMenuTest, TheEditMenuEndsInFind)
{
    QStringList texts;
    for (const QAction *action : menu(u"Edit"_s)->actions())
        if (!action->isSeparator())
            texts.append(action->text());
    EXPECT_EQ(texts, (QStringList{u"Undo"_s, u"Redo"_s, u"Cut"_s, u"Copy"_s, u"Paste"_s, u"Select All"_s,
                                  u"Find"_s}));
    const QList<QAction *> find = menu(u"Edit"_s)->actions().last()->menu()->actions();
    ASSERT_EQ(find.size(), 1);
    EXPECT_EQ(find.first()->text(), u"Find…"_s);
    EXPECT_EQ(find.first()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_F));
}

TEST_F(BrowserMenuTest, EditingReachesThePageThatHasTheKeyboard)
{
    part<PageArea>()->focusPage();
    Q_EMIT menu(u"Edit"_s)->aboutToShow();
    for (const QString &text : {u"Undo"_s, u"Redo"_s, u"Cut"_s, u"Copy"_s, u"Paste"_s, u"Select All"_s}) {
        EXPECT_TRUE(item(u"Edit"_s, text)->isEnabled()) << qPrintable(text);
        choose(u"Edit"_s, text);
    }
    EXPECT_EQ(browser->page().edited,
              (QList<EditCommand>{EditCommand::undo, EditCommand::redo, EditCommand::cut, EditCommand::copy,
                                  EditCommand::paste, EditCommand::selectAll}));
}

TEST_F(BrowserMenuTest, EditingOutsideOfThePageDoesNotReachIt)
{
    press(Qt::Key_L, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), u"abc"_s);
    Q_EMIT menu(u"Edit"_s)->aboutToShow();
    EXPECT_FALSE(item(u"Edit"_s, u"Copy"_s)->isEnabled());
    choose(u"Edit"_s, u"Select All"_s);
    EXPECT_EQ(part<URLField>()->selectedText(), u"abc"_s);
    EXPECT_TRUE(browser->page().edited.isEmpty());
}

TEST_F(BrowserMenuTest, KeysOpenCloseAndReopenTabs)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(tabs(), (QStringList{u"A"_s, u"Start Page"_s}));
    manager.switchTab(manager.tabs().front()->id());
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(tabs(), QStringList{u"Start Page"_s});
    press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(browser->page().log.last(), u"load https://a.test/"_s);
    announcer.spoken.clear();
    choose(u"History"_s, u"Reopen Closed Tab"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"No closed tab to reopen."_s});
}

TEST_F(BrowserMenuTest, ZoomGoesInQuartersAndStaysWithinItsLimits)
{
    press(Qt::Key_Equal, Qt::ControlModifier);
    EXPECT_EQ(browser->page().zoom, 1.25);
    EXPECT_EQ(announcer.spoken, QStringList{u"Zoom 125 percent"_s});
    for (int i = 0; i < 10; ++i)
        choose(u"View"_s, u"Zoom In"_s);
    EXPECT_EQ(browser->page().zoom, 3.0);
    press(Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(browser->page().zoom, 1.0);
    for (int i = 0; i < 5; ++i)
        press(Qt::Key_Minus, Qt::ControlModifier);
    EXPECT_EQ(browser->page().zoom, 0.25);
    EXPECT_EQ(announcer.spoken.last(), u"Zoom 25 percent"_s);
}

TEST_F(BrowserMenuTest, ThePlusKeyEnlargesToo)
{
    press(Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_EQ(browser->page().zoom, 1.25);
}

TEST_F(BrowserMenuTest, BackAndForwardAreOnWhereThePageHasThem)
{
    EXPECT_FALSE(item(u"History"_s, u"Back"_s)->isEnabled());
    browser->page().back = true;
    browser->page().forward = true;
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_BracketLeft, Qt::ControlModifier);
    EXPECT_EQ(browser->page().log.last(), u"back"_s);
    browser->page().finish();
    press(Qt::Key_BracketRight, Qt::ControlModifier);
    EXPECT_EQ(browser->page().log.last(), u"forward"_s);
}

TEST_F(BrowserMenuTest, TheHistoryMenuShowsTheNewestTenPages)
{
    EXPECT_EQ(historyItems(), QStringList());
    for (int i = 0; i < 12; ++i) {
        browser->now += 60;
        browser->load(u"https://a.test/%1"_s.arg(i), u"Page & %1"_s.arg(i));
    }
    settle();
    QStringList expected{u"-"_s};
    for (int i = 11; i >= 2; --i)
        expected.append(u"Page && %1"_s.arg(i));
    EXPECT_EQ(historyItems(), expected);
    EXPECT_EQ(historyItems(), expected); // and no more the second time
    menu(u"History"_s)->actions().at(11)->trigger();
    settle();
    EXPECT_EQ(browser->page().log.last(), u"load https://a.test/10"_s);
    browser->records.clearHistory();
    EXPECT_EQ(historyItems(), QStringList());
}

TEST_F(BrowserMenuTest, ALongTitleDoesNotWidenTheHistoryMenu)
{
    browser->load(u"https://a.test/"_s, QString(100'000, u'W'));
    settle();
    EXPECT_LT(historyItems().last().size(), 60);
}

TEST_F(BrowserMenuTest, ClearingTheHistoryAsksFirst)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    settle();
    announcer.spoken.clear();
    choose(u"History"_s, u"Clear History…"_s);
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->text(), u"Clear History?"_s);
    EXPECT_EQ(alert()->informativeText(),
              u"This will remove your browsing history (90 days, up to 2000 entries). "
              "This cannot be undone."_s);
    answer(u"Cancel"_s);
    EXPECT_EQ(browser->history.entries().size(), 1);
    choose(u"History"_s, u"Clear History…"_s);
    answer(u"Clear History"_s);
    EXPECT_TRUE(browser->history.entries().isEmpty());
    EXPECT_EQ(announcer.spoken, QStringList{u"History cleared."_s});
    EXPECT_EQ(alert(), nullptr);
}

TEST_F(BrowserMenuTest, ReturnDoesNotClear)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    settle();
    choose(u"History"_s, u"Clear History…"_s);
    QTest::keyClick(alert(), Qt::Key_Return);
    settle();
    EXPECT_EQ(browser->history.entries().size(), 1);
}

TEST_F(BrowserMenuTest, ClearingAllDataLeavesTheTabs)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    press(Qt::Key_D, Qt::ControlModifier);
    announcer.spoken.clear();
    choose(u"History"_s, u"Clear Browsing Data…"_s);
    EXPECT_EQ(alert()->text(), u"Clear Browsing Data?"_s);
    EXPECT_EQ(alert()->informativeText(),
              u"This will clear history, cookies, cache, and site data. Bookmarks will "
              "also be removed. This cannot be undone."_s);
    answer(u"Clear Data"_s);
    EXPECT_TRUE(browser->history.entries().isEmpty());
    EXPECT_TRUE(browser->bookmarks.bookmarks().isEmpty());
    EXPECT_EQ(browser->pages.removals, 1);
    EXPECT_EQ(announcer.spoken, QStringList{u"Browsing data cleared, including history."_s});
    EXPECT_EQ(manager.currentURLString(), u"https://a.test/"_s);
}

TEST_F(BrowserMenuTest, HelpOpensTheDocumentationInTheDefaultBrowser)
{
    choose(u"Help"_s, u"Morvane Help"_s);
    EXPECT_EQ(urls.ownPages, QStringList{u"/share/help/index.html"_s});
    EXPECT_TRUE(announcer.spoken.isEmpty());
    urls.works = false;
    choose(u"Help"_s, u"Morvane Help"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"The documentation could not be opened."_s});
}

TEST_F(BrowserMenuTest, TheDocumentationTellsItsKeys)
{
    QFile page(InstalledFiles::aroundProgram().help());
    ASSERT_TRUE(page.open(QFile::ReadOnly));
    const QString help = QString::fromUtf8(page.readAll());
    for (const QString &title : {u"File"_s, u"View"_s, u"History"_s, u"Bookmarks"_s})
        for (const QAction *action : menu(title)->actions())
            if (!action->shortcut().isEmpty())
                EXPECT_TRUE(help.contains(action->shortcut().toString())) << qPrintable(action->text());
    for (const auto *key : window->findChildren<QShortcut *>())
        EXPECT_TRUE(help.contains(key->key().toString())) << qPrintable(key->key().toString());
}

TEST_F(BrowserMenuTest, AboutTellsTheVersionUnderTheBrowsersName)
{
    choose(u"Morvane"_s, u"About Morvane Browser"_s);
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->windowTitle(), u"About Morvane Browser"_s);
    EXPECT_TRUE(alert()->text().contains(u"A desktop AI agent"_s));
}

TEST_F(BrowserMenuTest, FullScreenComesAndGoesAndIsSpoken)
{
    choose(u"View"_s, u"Enter Full Screen\tCtrl+F"_s);
    EXPECT_TRUE(window->isFullScreen());
    choose(u"View"_s, u"Exit Full Screen\tCtrl+F"_s);
    EXPECT_FALSE(window->isFullScreen());
    press(Qt::Key_F11);
    EXPECT_TRUE(window->isFullScreen());
    press(Qt::Key_F11);
    window->showMaximized();
    settle();
    EXPECT_EQ(announcer.spoken.join(u' '),
              u"Full screen entered. Full screen left. Full screen entered. Full screen left."_s);
}

TEST_F(BrowserMenuTest, MinimizeAndHideTakeTheWindowAway)
{
    press(Qt::Key_M, Qt::ControlModifier);
    EXPECT_TRUE(window->isMinimized());
    EXPECT_FALSE(manager.window()->isVisible());
    manager.window()->orderFront();
    EXPECT_TRUE(manager.window()->isVisible());
    QWidget other;
    other.show();
    choose(u"Morvane"_s, u"Hide Morvane"_s);
    EXPECT_FALSE(manager.window()->isVisible());
    EXPECT_TRUE(other.isMinimized());
}

} // namespace
} // namespace morvane
