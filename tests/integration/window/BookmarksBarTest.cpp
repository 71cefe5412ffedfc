#include "BrowserWindowFixture.h"

#include "browser/window/BookmarksBar.h"
#include "browser/window/ScrollStrip.h"
#include "ui/controls/HoverText.h"

#include <QAccessible>
#include <QScrollBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class BookmarksBarTest : public BrowserWindowFixture {
protected:
    void mark(const QString &name)
    {
        browser->load(u"https://%1.test/"_s.arg(name.toLower().section(u' ', 0, 0)), name);
        settle();
        announcer.spoken.clear();
        click(u"Bookmark this page"_s);
    }
    BookmarksBar *bar() const { return part<BookmarksBar>(); }
    void openMenu(const QString &title)
    {
        auto *found = static_cast<QToolButton *>(button(u"Open bookmark "_s + title));
        ASSERT_NE(found, nullptr);
        Q_EMIT found->customContextMenuRequested({});
        settle();
    }
};

TEST_F(BookmarksBarTest, ItIsShownWithTheFirstBookmark)
{
    EXPECT_FALSE(bar()->isVisible());
    mark(u"One"_s);
    EXPECT_TRUE(bar()->isVisible());
    EXPECT_GE(bar()->height(), button(u"Open bookmark One"_s)->height());
    EXPECT_EQ(bar()->accessibleName(), u"Bookmarks, 1 items"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"Bookmarked One"_s});
    mark(u"Two"_s);
    EXPECT_EQ(bar()->accessibleName(), u"Bookmarks, 2 items"_s);
    EXPECT_EQ(bar()->findChildren<QToolButton *>().size(), 2);
}

TEST_F(BookmarksBarTest, TheStartPageIsNoBookmark)
{
    EXPECT_FALSE(button(u"Bookmark this page"_s)->isEnabled());
    press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_TRUE(browser->bookmarks.bookmarks().isEmpty());
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(BookmarksBarTest, ThePageThatIsMarkedAlreadyIsNotMarkedTwice)
{
    mark(u"One"_s);
    mark(u"One"_s);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    EXPECT_EQ(bar()->findChildren<QToolButton *>().size(), 1);
}

TEST_F(BookmarksBarTest, ABookmarkOpensItsPage)
{
    mark(u"One"_s);
    browser->load(u"https://two.test/"_s, u"Two"_s);
    click(u"Open bookmark One"_s);
    EXPECT_EQ(browser->page().log.last(), u"load https://one.test/"_s);
}

TEST_F(BookmarksBarTest, TheMenuRemovesIt)
{
    mark(u"One & all"_s);
    openMenu(u"One & all"_s);
    ASSERT_NE(BrowserWindowFixture::openMenu(), nullptr);
    QAction *remove = BrowserWindowFixture::openMenu()->actions().first();
    EXPECT_EQ(remove->text(), u"Remove bookmark One && all"_s);
    QAccessibleInterface *const heard =
        QAccessible::queryAccessibleInterface(BrowserWindowFixture::openMenu())->child(0);
    ASSERT_NE(heard, nullptr);
    EXPECT_EQ(heard->text(QAccessible::Name), u"Remove bookmark One & all"_s);
    EXPECT_EQ(heard->text(QAccessible::Description), u"Remove this bookmark"_s);
    EXPECT_EQ(heard->role(), QAccessible::MenuItem);
    EXPECT_TRUE(heard->state().focused);
    EXPECT_FALSE(heard->state().invisible);
    EXPECT_EQ(heard->parent()->object(), BrowserWindowFixture::openMenu());
    EXPECT_TRUE(BrowserWindowFixture::openMenu()->geometry().contains(heard->rect()));
    announcer.spoken.clear();
    auto *press = heard->actionInterface();
    ASSERT_NE(press, nullptr);
    press->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(announcer.spoken, QStringList{u"Removed bookmark One & all"_s});
    EXPECT_FALSE(bar()->isVisible());
    BrowserWindowFixture::openMenu()->close();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(BrowserWindowFixture::openMenu(), nullptr);
}

TEST_F(BookmarksBarTest, KeysOpenTheMenu)
{
    mark(u"One"_s);
    for (const auto &[key, modifier] :
         {std::pair(Qt::Key_F10, Qt::ShiftModifier), std::pair(Qt::Key_Menu, Qt::NoModifier)}) {
        button(u"Open bookmark One"_s)->setFocus();
        press(key, modifier);
        ASSERT_NE(BrowserWindowFixture::openMenu(), nullptr);
        EXPECT_EQ(BrowserWindowFixture::openMenu()->activeAction()->text(), u"Remove bookmark One"_s);
        BrowserWindowFixture::openMenu()->close();
        settle();
    }
}

TEST_F(BookmarksBarTest, RemovingLeavesTheKeyboardAtTheNextOne)
{
    mark(u"One"_s);
    mark(u"Two"_s);
    mark(u"Three"_s);
    button(u"Open bookmark Two"_s)->setFocus();
    browser->records.removeBookmark(browser->bookmarks.bookmarks().at(1).id);
    EXPECT_TRUE(button(u"Open bookmark Three"_s)->hasFocus());
}

TEST_F(BookmarksBarTest, AnIconComesWithTheSite)
{
    browser->icons[u"one.test"_s] = Qt::magenta;
    EXPECT_TRUE(browser->records.bookmarkFavicon({{}, {}, u"https://one.test/"_s}).isNull());
    mark(u"One"_s);
    EXPECT_EQ(browser->records.bookmarkFavicon({{}, {}, u"https://one.test/x"_s}).pixelColor(3, 3),
              QColor(Qt::magenta));
}

TEST_F(BookmarksBarTest, AnIconOfAHostInAnotherScriptIsShown)
{
    browser->icons[u"b\u00FCcher.com"_s] = Qt::magenta;
    browser->load(u"https://b\u00FCcher.com/"_s, u"One"_s);
    settle();
    click(u"Bookmark this page"_s);
    EXPECT_TRUE(waitUntil([this] {
        return button(u"Open bookmark One"_s)->icon().pixmap(16, 16).toImage().pixelColor(8, 8) ==
               QColor(Qt::magenta);
    }));
}

TEST_F(BookmarksBarTest, AnIconThatComesAfterTheBookmarkIsShown)
{
    mark(u"One"_s);
    const auto shown = [this] {
        return button(u"Open bookmark One"_s)->icon().pixmap(16, 16).toImage().pixelColor(8, 8);
    };
    EXPECT_NE(shown(), QColor(Qt::magenta));
    browser->icons[u"one.test"_s] = Qt::magenta;
    browser->load(u"https://one.test/"_s, u"One"_s);
    EXPECT_TRUE(waitUntil([&] { return shown() == QColor(Qt::magenta); }));
}

TEST_F(BookmarksBarTest, ATitleIsNoMarkupUnderThePointer)
{
    browser->load(u"https://a.test/?x&y"_s, u"<b>x</b>"_s);
    settle();
    click(u"Bookmark this page"_s);
    EXPECT_EQ(hoverText(button(u"Open bookmark <b>x</b>"_s)),
              u"<qt>&lt;b&gt;x&lt;/b&gt;<br>https://a.test/?x&amp;y</qt>"_s);
}

TEST_F(BookmarksBarTest, AnIconThatComesInALaterWindowIsShownToo)
{
    mark(u"One"_s);
    window->close();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    openWindow();
    browser->icons[u"one.test"_s] = Qt::magenta;
    browser->load(u"https://one.test/"_s, u"One"_s);
    EXPECT_TRUE(waitUntil([this] {
        return button(u"Open bookmark One"_s)->icon().pixmap(16, 16).toImage().pixelColor(8, 8) ==
               QColor(Qt::magenta);
    }));
}

TEST_F(BookmarksBarTest, OfVeryManyThoseFurtherOnComeWhenTheUserComesNear)
{
    for (int i = 0; i < 2'000; ++i)
        browser->bookmarks.add(u"https://a.test/%1"_s.arg(i), u"Title %1"_s.arg(i));
    settle();
    const auto made = [this] { return bar()->findChildren<QToolButton *>().size(); };
    EXPECT_LE(made(), 100);
    EXPECT_EQ(bar()->accessibleName(), u"Bookmarks, 2000 items"_s);
    ASSERT_NE(button(u"Open bookmark Title 0"_s), nullptr);
    button(u"Open bookmark Title 0"_s)->setFocus();
    for (int i = 1; i <= 200; ++i) {
        press(Qt::Key_Tab);
        ASSERT_EQ(QApplication::focusWidget(), button(u"Open bookmark Title %1"_s.arg(i))) << i;
    }
    EXPECT_LE(made(), 300);
    browser->records.removeBookmark(browser->bookmarks.bookmarks().at(200).id);
    EXPECT_TRUE(button(u"Open bookmark Title 201"_s)->hasFocus());
    browser->bookmarks.clear();
    EXPECT_EQ(made(), 0);
}

TEST_F(BookmarksBarTest, OfVeryManyMoreAreThereBeforeTheEndIsInSight)
{
    for (int i = 0; i < 200; ++i)
        browser->bookmarks.add(u"https://a.test/%1"_s.arg(i), u"Title %1"_s.arg(i));
    settle();
    const auto made = [this] { return bar()->findChildren<QToolButton *>().size(); };
    const qsizetype atFirst = made();
    QScrollBar *scroll = bar()->findChild<ScrollStrip *>()->horizontalScrollBar();
    scroll->setValue(scroll->maximum() - scroll->pageStep());
    EXPECT_GT(made(), atFirst);
}

TEST_F(BookmarksBarTest, LongTitlesAndManyBookmarksDoNotWidenTheWindow)
{
    for (int i = 0; i < 40; ++i)
        browser->bookmarks.add(u"https://a.test/%1"_s.arg(i), QString(3'000, u'W'));
    settle();
    EXPECT_LT(window->minimumSizeHint().width(), 700);
    EXPECT_EQ(bar()->width(), window->width());
}

} // namespace
} // namespace morvane
