#include "BrowserWindowFixture.h"

#include "browser/window/BrowserTabBar.h"
#include "browser/window/BrowserTabButton.h"
#include "browser/window/ScrollStrip.h"
#include "ui/controls/HoverText.h"

#include <QAccessible>
#include <QScrollBar>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class BrowserTabBarTest : public BrowserWindowFixture {
protected:
    /// Opens further tabs with a page of this name each.
    void open(const QStringList &titles)
    {
        for (const QString &title : titles) {
            if (!manager.currentURLString().isEmpty())
                manager.newTab();
            browser->load(u"https://%1.test/"_s.arg(title.toLower()), title);
        }
        settle();
        announcer.spoken.clear();
    }
    BrowserTabButton *tab(const QString &title) const
    {
        for (auto *button : window->findChildren<BrowserTabButton *>())
            if (button->accessibleName() == title)
                return button;
        return nullptr;
    }
    static QAccessibleInterface *accessible(QWidget *widget)
    {
        return QAccessible::queryAccessibleInterface(widget);
    }
    static bool isSelected(BrowserTabButton *button) { return accessible(button)->state().selected; }
};

TEST_F(BrowserTabBarTest, ATabTellsWhatItIsAndWhatItsPartsDo)
{
    EXPECT_NE(named(u"Browser tabs"_s), nullptr);
    open({u"One"_s});
    BrowserTabButton *one = tab(u"One"_s);
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(accessible(one)->role(), QAccessible::PageTab);
    EXPECT_EQ(accessible(one)->parent()->role(), QAccessible::PageTabList);
    EXPECT_EQ(one->accessibleDescription(), u"Switch to this tab"_s);
    QAbstractButton *close = button(u"Close tab One"_s);
    ASSERT_NE(close, nullptr);
    EXPECT_EQ(close->accessibleDescription(), u"Closes this tab"_s);
    EXPECT_EQ(accessible(one)->indexOfChild(accessible(close)), 0);
    EXPECT_EQ(button(u"New browser tab"_s)->accessibleDescription(), u"Open a new tab"_s);
}

TEST_F(BrowserTabBarTest, TheActiveTabIsTheSelectedOne)
{
    open({u"One"_s, u"Two"_s});
    EXPECT_FALSE(isSelected(tab(u"One"_s)));
    EXPECT_TRUE(isSelected(tab(u"Two"_s)));
    accessible(tab(u"One"_s))->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(isSelected(tab(u"One"_s)));
    EXPECT_FALSE(isSelected(tab(u"Two"_s)));
    EXPECT_EQ(announcer.spoken, QStringList{u"Switched to tab One"_s});
}

TEST_F(BrowserTabBarTest, PlusOpensATab)
{
    click(u"New browser tab"_s);
    EXPECT_EQ(tabs(), (QStringList{u"Start Page"_s, u"Start Page"_s}));
    EXPECT_EQ(announcer.spoken, QStringList{u"Opened new tab."_s});
}

TEST_F(BrowserTabBarTest, PressingATabSwitchesAndLeavesTheKeyboardWhereItIs)
{
    open({u"One"_s, u"Two"_s});
    QTest::mouseClick(tab(u"One"_s), Qt::LeftButton);
    EXPECT_EQ(manager.activeTab()->title(), u"One"_s);
    EXPECT_FALSE(tab(u"One"_s)->hasFocus());
    announcer.spoken.clear();
    QTest::mouseClick(tab(u"One"_s), Qt::LeftButton);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(BrowserTabBarTest, TheCloseButtonAndTheMiddleButtonClose)
{
    open({u"One"_s, u"Two"_s, u"Three"_s});
    click(u"Close tab Two"_s);
    EXPECT_EQ(tabs(), (QStringList{u"One"_s, u"Three"_s}));
    QTest::mouseClick(tab(u"One"_s), Qt::MiddleButton);
    settle();
    EXPECT_EQ(tabs(), QStringList{u"Three"_s});
    EXPECT_EQ(announcer.spoken, (QStringList{u"Closed tab Two."_s, u"Closed tab One."_s}));
}

TEST_F(BrowserTabBarTest, AMiddleButtonThatIsReleasedElsewhereClosesNothing)
{
    open({u"One"_s});
    QTest::mousePress(tab(u"One"_s), Qt::MiddleButton);
    QTest::mouseRelease(tab(u"One"_s), Qt::MiddleButton, {}, QPoint(-50, 0));
    settle();
    EXPECT_EQ(tabs(), QStringList{u"One"_s});
}

TEST_F(BrowserTabBarTest, ClosingTheLastTabOpensAnother)
{
    open({u"One"_s});
    click(u"Close tab One"_s);
    EXPECT_EQ(tabs(), QStringList{u"Start Page"_s});
    EXPECT_EQ(announcer.spoken, QStringList{u"Closed tab One. Opened new tab."_s});
}

TEST_F(BrowserTabBarTest, KeysMoveThroughTheTabsAndPressAndClose)
{
    open({u"One"_s, u"Two"_s, u"Three"_s});
    part<BrowserTabBar>()->takeFocus();
    EXPECT_TRUE(tab(u"Three"_s)->hasFocus());
    press(Qt::Key_Left);
    EXPECT_TRUE(tab(u"Two"_s)->hasFocus());
    EXPECT_EQ(manager.activeTab()->title(), u"Three"_s);
    press(Qt::Key_Space);
    EXPECT_EQ(manager.activeTab()->title(), u"Two"_s);
    press(Qt::Key_End);
    press(Qt::Key_Right);
    EXPECT_TRUE(tab(u"Three"_s)->hasFocus());
    press(Qt::Key_Home);
    EXPECT_TRUE(tab(u"One"_s)->hasFocus());
    press(Qt::Key_Delete);
    EXPECT_EQ(tabs(), (QStringList{u"Two"_s, u"Three"_s}));
    EXPECT_TRUE(tab(u"Two"_s)->hasFocus());
}

TEST_F(BrowserTabBarTest, TheArrowsGoTheWayThatIsSeenWhereLinesGoFromTheRight)
{
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    open({u"One"_s, u"Two"_s, u"Three"_s});
    settle();
    EXPECT_LT(tab(u"Three"_s)->x(), tab(u"Two"_s)->x());
    part<BrowserTabBar>()->takeFocus();
    press(Qt::Key_Right);
    EXPECT_TRUE(tab(u"Two"_s)->hasFocus());
    press(Qt::Key_Left);
    EXPECT_TRUE(tab(u"Three"_s)->hasFocus());
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(BrowserTabBarTest, TheTabKeyStopsAtOneTabOnly)
{
    open({u"One"_s, u"Two"_s, u"Three"_s});
    part<BrowserTabBar>()->takeFocus();
    press(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), button(u"New browser tab"_s));
}

TEST_F(BrowserTabBarTest, DraggingPutsATabInAnotherPlace)
{
    open({u"One"_s, u"Two"_s, u"Three"_s});
    BrowserTabButton *one = tab(u"One"_s);
    const QPoint start = one->rect().center();
    const auto to = [&](const QString &title) { return one->mapFromGlobal(tab(title)->mapToGlobal(start)); };
    QTest::mousePress(one, Qt::LeftButton, {}, start);
    QTest::mouseMove(one, start + QPoint(QApplication::startDragDistance() + 1, 0));
    EXPECT_EQ(tabs(), (QStringList{u"One"_s, u"Two"_s, u"Three"_s}));
    QTest::mouseMove(one, to(u"Two"_s) + QPoint(2, 0));
    EXPECT_EQ(tabs(), (QStringList{u"Two"_s, u"One"_s, u"Three"_s}));
    QTest::mouseMove(one, to(u"Three"_s) + QPoint(2, 0));
    EXPECT_EQ(tabs(), (QStringList{u"Two"_s, u"Three"_s, u"One"_s}));
    QTest::mouseMove(one, to(u"Two"_s) - QPoint(2, 0));
    QTest::mouseRelease(one, Qt::LeftButton);
    EXPECT_EQ(tabs(), (QStringList{u"One"_s, u"Two"_s, u"Three"_s}));
    EXPECT_EQ(manager.tabs().front()->title(), u"One"_s);
    EXPECT_EQ(manager.activeTab()->title(), u"One"_s);
}

TEST_F(BrowserTabBarTest, DraggingBeyondTheEndScrolls)
{
    for (int i = 0; i < 40; ++i)
        manager.newTab();
    const QUuid first = manager.tabs().front()->id();
    manager.switchTab(first);
    settle();
    auto *strip = part<BrowserTabBar>()->findChild<ScrollStrip *>();
    ASSERT_EQ(strip->horizontalScrollBar()->value(), 0);
    BrowserTabButton *button = window->findChildren<BrowserTabButton *>().first();
    ASSERT_EQ(button->id(), first);
    const QPoint start = button->rect().center();
    QTest::mousePress(button, Qt::LeftButton, {}, start);
    for (int i = 0; i < 3; ++i)
        QTest::mouseMove(button, button->mapFromGlobal(strip->mapToGlobal(QPoint(strip->width() + 60, 5))));
    QTest::mouseRelease(button, Qt::LeftButton);
    EXPECT_GT(strip->horizontalScrollBar()->value(), 100);
    EXPECT_NE(manager.tabs().front()->id(), first);
}

TEST_F(BrowserTabBarTest, KeysPutATabInAnotherPlace)
{
    open({u"One"_s, u"Two"_s});
    browser->load(u"https://two.test/"_s, u"Two %3"_s);
    open({u"Three"_s});
    constexpr auto both = Qt::ControlModifier | Qt::ShiftModifier;
    part<BrowserTabBar>()->takeFocus();
    press(Qt::Key_Right, both);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    press(Qt::Key_Left);
    press(Qt::Key_Left, both);
    EXPECT_EQ(tabs(), (QStringList{u"Two %3"_s, u"One"_s, u"Three"_s}));
    EXPECT_TRUE(tab(u"Two %3"_s)->hasFocus());
    EXPECT_EQ(announcer.spoken, QStringList{u"Moved tab Two %3 to place 1 of 3"_s});
    press(Qt::Key_Right, both);
    press(Qt::Key_Right, both);
    EXPECT_EQ(tabs(), (QStringList{u"One"_s, u"Three"_s, u"Two %3"_s}));
    EXPECT_EQ(manager.activeTab()->title(), u"Three"_s);
}

TEST_F(BrowserTabBarTest, AScreenReaderFindsTheTabsInTheirOrder)
{
    open({u"One"_s, u"Two"_s, u"Three"_s});
    const auto order = [this] {
        QStringList names;
        QAccessibleInterface *bar = accessible(tab(u"One"_s))->parent();
        for (int i = 0; i < bar->childCount(); ++i)
            names.append(bar->child(i)->text(QAccessible::Name));
        return names;
    };
    EXPECT_EQ(order(), (QStringList{u"One"_s, u"Two"_s, u"Three"_s}));
    manager.moveTab(0, 2);
    EXPECT_EQ(order(), (QStringList{u"Two"_s, u"Three"_s, u"One"_s}));
    manager.moveTab(1, 0);
    EXPECT_EQ(order(), (QStringList{u"Three"_s, u"Two"_s, u"One"_s}));
}

TEST_F(BrowserTabBarTest, ManyTabsScrollToTheActiveOne)
{
    for (int i = 0; i < 40; ++i)
        manager.newTab();
    settle();
    const auto *strip = part<BrowserTabBar>()->findChild<ScrollStrip *>();
    EXPECT_GT(strip->horizontalScrollBar()->maximum(), 0);
    EXPECT_EQ(strip->horizontalScrollBar()->value(), strip->horizontalScrollBar()->maximum());
    manager.switchTab(manager.tabs().front()->id());
    settle();
    EXPECT_EQ(strip->horizontalScrollBar()->value(), 0);
    EXPECT_TRUE(button(u"New browser tab"_s)->isVisible());
}

TEST_F(BrowserTabBarTest, TheWheelScrollsTheTabsAndTheyStayWhereItLeavesThem)
{
    for (int i = 0; i < 40; ++i)
        manager.newTab();
    settle();
    auto *strip = part<BrowserTabBar>()->findChild<ScrollStrip *>();
    const QScrollBar *bar = strip->horizontalScrollBar();
    const int most = bar->maximum();
    QWheelEvent turn({5, 5}, strip->mapToGlobal(QPointF(5, 5)), {}, {0, 120}, Qt::NoButton, {},
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(strip->viewport(), &turn);
    EXPECT_EQ(bar->value(), most - 120);
    browser->load(u"https://a.test/"_s, QString(300, u'W'));
    window->resize(window->width() - 40, window->height());
    settle();
    EXPECT_EQ(bar->value(), most - 120);
}

TEST_F(BrowserTabBarTest, ATitleIsNoMarkupUnderThePointer)
{
    open({u"<h1>a</h1>&"_s});
    BrowserTabButton *one = tab(u"<h1>a</h1>&"_s);
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(hoverText(one), u"<qt>&lt;h1&gt;a&lt;/h1&gt;&amp;</qt>"_s);
    EXPECT_EQ(hoverText(button(u"Close tab <h1>a</h1>&"_s)),
              u"<qt>Close tab &lt;h1&gt;a&lt;/h1&gt;&amp;</qt>"_s);
}

TEST_F(BrowserTabBarTest, ATitleOfAPageIsShownAsText)
{
    open({u"<b>\u202Eevil\u202C</b>\n\t& "_s + QString(100'000, u'x')});
    const QString name = window->findChild<BrowserTabButton *>()->accessibleName();
    EXPECT_TRUE(name.startsWith(u"<b>\\u202Eevil\\u202C</b> & xxx"_s)) << qPrintable(name);
    EXPECT_LT(name.size(), 300);
}

TEST_F(BrowserTabBarTest, TheIconOfASiteIsShown)
{
    browser->icons[u"one.test"_s] = Qt::magenta;
    open({u"One"_s});
    BrowserTabButton *one = tab(u"One"_s);
    ASSERT_TRUE(waitUntil([&] { return !manager.activeTab()->favicon().isNull(); }));
    const QImage shown = one->grab().toImage();
    bool hasIcon = false;
    for (int x = 0; x < shown.width(); ++x)
        hasIcon = hasIcon || shown.pixelColor(x, shown.height() / 2) == QColor(Qt::magenta);
    EXPECT_TRUE(hasIcon);
}

} // namespace
} // namespace morvane
