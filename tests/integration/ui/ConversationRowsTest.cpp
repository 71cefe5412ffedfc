#include "MainWindowFixture.h"

#include "ui/window/ConversationListModel.h"
#include "ui/window/ConversationListView.h"

#include <QContextMenuEvent>
#include <QListView>
#include <QMenu>
#include <QScrollBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The rows of the sidebar in their window, and the button that goes with the pointer and the keyboard.
class ConversationRowsTest : public MainWindowFixture {
protected:
    ConversationRowsTest()
    {
        for (int i = 0; i < 30; ++i)
            save(u"Title %1"_s.arg(i), {message(Role::user, u"one"_s)});
        restart();
        show();
        list = part<ConversationListView>()->findChild<QListView *>();
        remove = part<ConversationListView>()->findChild<QToolButton *>();
    }

    QModelIndex row(int number) const { return list->model()->index(number, 0); }
    QString title(int number) const { return row(number).data().toString(); }
    void goTo(int number)
    {
        list->setFocus(Qt::TabFocusReason);
        list->setCurrentIndex(row(number));
    }
    /// Whether the button stands on a row and would delete it.
    bool isOn(int number) const
    {
        const QPoint centre =
            list->viewport()->mapFrom(part<ConversationListView>(), remove->geometry().center());
        return remove->isVisible() && remove->accessibleName() == u"Delete "_s + title(number) &&
               list->visualRect(row(number)).contains(centre);
    }

    QListView *list = nullptr;
    QToolButton *remove = nullptr;
};

TEST_F(ConversationRowsTest, AfterARowIsDeletedByItsButtonTheKeyboardIsInTheList)
{
    for (const int number : {5, 5, 0}) {
        goTo(number);
        remove->setFocus(Qt::TabFocusReason);
        const QString gone = title(number);
        QTest::keyClick(remove, Qt::Key_Space);
        settle();
        EXPECT_NE(title(number), gone);
        EXPECT_EQ(window->focusWidget(), list) << number;
        EXPECT_TRUE(list->currentIndex().isValid());
    }
}

TEST_F(ConversationRowsTest, TheButtonFollowsThePointerAndGoesBackWhenItLeaves)
{
    goTo(2);
    EXPECT_TRUE(isOn(2));
    Q_EMIT list->entered(row(4));
    EXPECT_TRUE(isOn(4));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(list->viewport(), &leave);
    EXPECT_TRUE(isOn(2));
}

TEST_F(ConversationRowsTest, TheButtonScrollsWithItsRow)
{
    goTo(2);
    list->verticalScrollBar()->setValue(30);
    EXPECT_TRUE(isOn(2));
    list->verticalScrollBar()->setValue(list->verticalScrollBar()->maximum());
    EXPECT_FALSE(remove->isVisible());
}

TEST_F(ConversationRowsTest, AButtonThatIsScrolledAwayLeavesTheKeyboardInTheList)
{
    goTo(2);
    remove->setFocus(Qt::TabFocusReason);
    list->verticalScrollBar()->setValue(list->verticalScrollBar()->maximum());
    EXPECT_FALSE(remove->isVisible());
    EXPECT_EQ(window->focusWidget(), list);
}

TEST_F(ConversationRowsTest, TheButtonNamesARowAsItIsCalledNow)
{
    goTo(2);
    const QUuid id = model->conversations().list().at(2).id;
    store->save(id, u"Another name"_s, {message(Role::user, u"one"_s)});
    model->conversations().reload();
    settle();
    EXPECT_EQ(remove->accessibleName(), u"Delete Another name"_s);
}

TEST_F(ConversationRowsTest, TheRowOfTheKeyboardIsTheSameAfterAMenuAndAnotherWindow)
{
    goTo(3);
    const QPoint place = list->visualRect(row(3)).center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, list->viewport()->mapToGlobal(place));
    QApplication::sendEvent(list->viewport(), &event);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    menu->close();
    EXPECT_EQ(list->currentIndex(), row(3));
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_EQ(list->currentIndex(), row(3));
    EXPECT_TRUE(list->hasFocus());
}

} // namespace
} // namespace morvane
