#include "ConversationFixture.h"

#include <QAccessibleActionInterface>
#include <QApplication>
#include <QContextMenuEvent>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ChatScrollViewAccessibleTest : public ConversationFixture {
protected:
    QStringList names()
    {
        QStringList names;
        for (int i = 0; i < accessible()->childCount(); ++i)
            names += accessible()->child(i)->text(QAccessible::Name);
        return names;
    }

    QAccessibleActionInterface *actions(int row) { return accessibleRow(row)->actionInterface(); }
};

TEST_F(ChatScrollViewAccessibleTest, AHeldKeyFoldsTheActivityOnce)
{
    say(Role::user, u"one"_s);
    activity.log(u"Running: x"_s, ActivityStep::Kind::tool);
    show();
    view.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&view, Qt::Key_Home);
    QTest::keyClick(&view, Qt::Key_Down);
    ASSERT_TRUE(accessibleRow(view.currentRow())->state().expanded);
    QTest::keyPress(&view, Qt::Key_Space);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, u" "_s, true);
    QApplication::sendEvent(&view, &repeated);
    settle();
    EXPECT_TRUE(accessibleRow(view.currentRow())->state().collapsed);
}

TEST_F(ChatScrollViewAccessibleTest, TheMenuOfTheMouseBelongsToTheRowBelowIt)
{
    transcript.reset(dialogue(4));
    show();
    view.setFocus(Qt::TabFocusReason);
    ASSERT_EQ(view.currentRow(), 3);
    const QPoint place = view.rowRect(1).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, view.viewport()->mapToGlobal(place));
    QApplication::sendEvent(view.viewport(), &event);
    EXPECT_EQ(view.currentRow(), 1);
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QApplication::activePopupWidget()->close();
}

TEST_F(ChatScrollViewAccessibleTest, RowsStandInOrderWithTheActivityAboveTheAnswer)
{
    say(Role::user, u"Hello"_s);
    startAnswer(u"Partial"_s);
    activity.log(u"Running: a tool"_s, ActivityStep::Kind::tool);
    show();
    const QStringList all = names();
    ASSERT_EQ(all.size(), 4);
    EXPECT_EQ(all[0], u"You said Hello"_s);
    EXPECT_EQ(all[1], u"Activity, 1 steps"_s);
    EXPECT_TRUE(all[2].startsWith(u"Running: a tool"_s));
    EXPECT_EQ(all[3], u"Morvane is responding"_s);
}

TEST_F(ChatScrollViewAccessibleTest, AStepIsReadToItsEndAndInItsOrderWhateverItHolds)
{
    const QString told = QString(u"Running: "_s) + QChar(u'\0') + u"open \u202Efdp.exe\u2066\u001B[2J"_s;
    activity.log(told, ActivityStep::Kind::tool);
    show();
    const QString shown = u"Running: \uFFFDopen \uFFFDfdp.exe\uFFFD\uFFFD[2J"_s;
    EXPECT_TRUE(names()[1].startsWith(shown + u", "_s)) << names()[1].toStdString();
    EXPECT_EQ(view.rows().plainText({ConversationItem::Kind::activityStep, 0}, 0), shown);
    accessibleRow(1)->actionInterface()->doAction(u"Copy"_s);
    EXPECT_EQ(clipboard(), told) << "as it came";
}

TEST_F(ChatScrollViewAccessibleTest, EveryRowExistsWhetherInSightOrNot)
{
    transcript.reset(dialogue(5000));
    show();
    EXPECT_EQ(accessible()->role(), QAccessible::List);
    EXPECT_EQ(accessible()->text(QAccessible::Name), u"Conversation"_s);
    EXPECT_EQ(accessible()->childCount(), 5000);
    EXPECT_TRUE(accessibleRow(0)->text(QAccessible::Name).startsWith(u"You said Message 0."_s));
    EXPECT_TRUE(accessibleRow(0)->state().offscreen);
    EXPECT_FALSE(accessibleRow(4999)->state().offscreen);
    EXPECT_LT(view.rows().documentCount(), 64);
}

TEST_F(ChatScrollViewAccessibleTest, RowsKnowTheirPlaceAndTheirParent)
{
    transcript.reset(dialogue(20));
    show();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(accessible()->indexOfChild(accessibleRow(i)), i);
        EXPECT_EQ(accessibleRow(i)->parent(), accessible());
        EXPECT_EQ(accessibleRow(i), accessibleRow(i));
    }
    EXPECT_EQ(accessible()->child(20), nullptr);
}

TEST_F(ChatScrollViewAccessibleTest, AMessageIsOneElementWithTwoNamedActions)
{
    say(Role::assistant, u"**Bold** answer"_s);
    show();
    QAccessibleInterface *row = accessibleRow(0);
    EXPECT_EQ(row->role(), QAccessible::ListItem);
    EXPECT_EQ(row->text(QAccessible::Name), u"Morvane said **Bold** answer"_s);
    EXPECT_EQ(row->text(QAccessible::Description), u"Accessibility actions: copy, read again."_s);
    EXPECT_EQ(actions(0)->actionNames(), (QStringList{u"Copy"_s, u"Read again"_s}));
    EXPECT_EQ(row->childCount(), 0);
    EXPECT_EQ(row->textInterface(), nullptr);
    EXPECT_TRUE(row->text(QAccessible::Value).isEmpty());
}

TEST_F(ChatScrollViewAccessibleTest, CopyPutsTheTextOnTheClipboard)
{
    say(Role::assistant, u"**Bold** answer"_s);
    show();
    actions(0)->doAction(u"Copy"_s);
    EXPECT_EQ(clipboard(), u"**Bold** answer"_s);
}

TEST_F(ChatScrollViewAccessibleTest, ReadAgainSpeaksTheText)
{
    say(Role::assistant, u"The answer"_s);
    show();
    actions(0)->doAction(u"Read again"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"The answer"_s});
}

TEST_F(ChatScrollViewAccessibleTest, ReadAgainOfAnEmptyMessageSaysSo)
{
    say(Role::assistant, QString());
    show();
    EXPECT_EQ(accessibleRow(0)->text(QAccessible::Name), u"Morvane said No text"_s);
    actions(0)->doAction(u"Read again"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"There is no text to read."_s});
}

TEST_F(ChatScrollViewAccessibleTest, AStepCanOnlyBeCopied)
{
    startAnswer();
    activity.log(u"Running: a tool"_s, ActivityStep::Kind::tool);
    show();
    EXPECT_EQ(accessibleRow(1)->text(QAccessible::Description), u"Accessibility action: copy."_s);
    EXPECT_EQ(actions(1)->actionNames(), QStringList{u"Copy"_s});
    actions(1)->doAction(u"Read again"_s);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    actions(1)->doAction(u"Copy"_s);
    EXPECT_EQ(clipboard(), u"Running: a tool"_s);
    EXPECT_EQ(accessibleRow(0)->role(), QAccessible::Heading);
    EXPECT_EQ(actions(0)->actionNames(), QStringList{QAccessibleActionInterface::pressAction()});
}

TEST_F(ChatScrollViewAccessibleTest, ARowKeepsItsElementWhileOthersAreAddedAroundIt)
{
    say(Role::user, u"Hello"_s);
    startAnswer(u"Partial"_s);
    show();
    QAccessibleInterface *answer = accessibleRow(1);
    activity.log(u"Running: a tool"_s, ActivityStep::Kind::tool);
    EXPECT_EQ(accessible()->indexOfChild(answer), 3);
    EXPECT_EQ(accessibleRow(3), answer);
    endAnswer();
    EXPECT_EQ(answer->text(QAccessible::Name), u"Morvane said Partial"_s);
}

TEST_F(ChatScrollViewAccessibleTest, AnErrorIsPartOfTheRow)
{
    startAnswer();
    show();
    transcript.setErrorMessage(0, u"No network."_s);
    endAnswer();
    EXPECT_EQ(accessibleRow(0)->text(QAccessible::Name), u"Morvane said  Error: No network."_s);
}

TEST_F(ChatScrollViewAccessibleTest, TheCopyButtonsOfCodeInSightFollowTheRows)
{
    say(Role::assistant, u"Code:\n```sh\nls -l\n```\nand\n```\ncat x\n```"_s);
    show();
    ASSERT_EQ(accessible()->childCount(), 3);
    QAccessibleInterface *button = accessible()->child(2);
    EXPECT_EQ(button->text(QAccessible::Name), u"Copy code"_s);
    EXPECT_EQ(button->role(), QAccessible::PushButton);
    EXPECT_EQ(accessible()->indexOfChild(button), 2);
    EXPECT_EQ(button->parent(), accessible());
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(QTest::qWaitFor([] { return clipboard() == u"cat x"_s; }));
}

TEST_F(ChatScrollViewAccessibleTest, TheElementUnderAPointIsTheRowDrawnThere)
{
    transcript.reset(dialogue(10));
    show();
    const QPoint point = view.viewport()->mapToGlobal(view.rowRect(9).center());
    EXPECT_EQ(accessible()->childAt(point.x(), point.y()), accessibleRow(9));
    EXPECT_TRUE(accessibleRow(9)->rect().contains(point));
}

TEST_F(ChatScrollViewAccessibleTest, AnElementOfAConversationThatIsGoneIsInvalid)
{
    transcript.reset(dialogue(5));
    show();
    QAccessibleInterface *row = accessibleRow(4);
    ASSERT_TRUE(row->isValid());
    const QAccessible::Id id = QAccessible::uniqueId(row);
    transcript.reset({});
    EXPECT_EQ(QAccessible::accessibleInterface(id), nullptr);
    EXPECT_EQ(accessible()->childCount(), 0);
}

} // namespace
} // namespace morvane
