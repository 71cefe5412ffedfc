#include "ConversationInputFixture.h"

#include <QClipboard>
#include <QToolButton>
#include <QToolTip>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ChatScrollViewInputTest : public ConversationInputFixture {};

TEST_F(ChatScrollViewInputTest, TabReachesTheNewestRow)
{
    transcript.reset(dialogue(10));
    showWithFocus();
    EXPECT_EQ(view.currentRow(), 9);
    EXPECT_TRUE(view.focusPolicy() & Qt::TabFocus);
}

TEST_F(ChatScrollViewInputTest, ArrowsMoveRowByRow)
{
    transcript.reset(dialogue(50));
    showWithFocus();
    press(Qt::Key_Up);
    EXPECT_EQ(view.currentRow(), 48);
    press(Qt::Key_Up);
    press(Qt::Key_Down);
    EXPECT_EQ(view.currentRow(), 48);
    for (int i = 0; i < 100; ++i) {
        press(Qt::Key_Up);
        ASSERT_TRUE(view.rowRect(view.currentRow()).intersects(view.viewport()->rect()));
    }
    EXPECT_EQ(view.currentRow(), 0);
}

TEST_F(ChatScrollViewInputTest, HomeAndEndGoToTheFirstAndTheLastRow)
{
    transcript.reset(dialogue(500));
    showWithFocus();
    press(Qt::Key_Home);
    EXPECT_EQ(view.currentRow(), 0);
    EXPECT_TRUE(view.viewport()->rect().contains(view.rowRect(0)));
    press(Qt::Key_End);
    EXPECT_EQ(view.currentRow(), 499);
    EXPECT_EQ(remaining(), 0);
    EXPECT_TRUE(view.isNearBottom());
}

TEST_F(ChatScrollViewInputTest, PagesScrollAndTakeTheFocusAlong)
{
    transcript.reset(dialogue(100));
    showWithFocus();
    const int before = offset();
    press(Qt::Key_PageUp);
    EXPECT_LT(offset(), before);
    EXPECT_LT(view.currentRow(), 99);
    EXPECT_TRUE(view.rowRect(view.currentRow()).intersects(view.viewport()->rect()));
    press(Qt::Key_PageDown);
    EXPECT_TRUE(view.rowRect(view.currentRow()).intersects(view.viewport()->rect()));
}

TEST_F(ChatScrollViewInputTest, PagesReadARowThatIsTallerThanTheWindow)
{
    say(Role::assistant, u"A line.\n\n"_s.repeated(200));
    showWithFocus();
    press(Qt::Key_Home);
    const int top = offset();
    press(Qt::Key_PageDown);
    EXPECT_GT(offset(), top + view.viewport()->height() / 2);
    EXPECT_EQ(view.currentRow(), 0);
}

TEST_F(ChatScrollViewInputTest, TheRowWithTheKeyboardIsTheFocusedElement)
{
    transcript.reset(dialogue(10));
    showWithFocus();
    press(Qt::Key_Up);
    EXPECT_TRUE(accessibleRow(8)->state().focused);
    EXPECT_TRUE(accessibleRow(8)->state().focusable);
    EXPECT_FALSE(accessibleRow(9)->state().focused);
    EXPECT_EQ(accessible()->focusChild(), accessibleRow(8));
}

TEST_F(ChatScrollViewInputTest, ControlCCopiesTheRow)
{
    transcript.reset(dialogue(10));
    showWithFocus();
    press(Qt::Key_Up);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), transcript.messages().at(8).text);
}

TEST_F(ChatScrollViewInputTest, ReturnOffersCopyAndReadAgain)
{
    say(Role::assistant, u"The answer"_s);
    showWithFocus();
    press(Qt::Key_Return);
    ASSERT_NE(menu(), nullptr);
    const auto offered = menu()->actions();
    ASSERT_EQ(offered.size(), 2);
    EXPECT_EQ(offered[0]->text(), u"Copy"_s);
    EXPECT_EQ(offered[1]->text(), u"Read again"_s);
    offered[1]->trigger();
    menu()->close();
    EXPECT_EQ(announcer.spoken, QStringList{u"The answer"_s});
}

TEST_F(ChatScrollViewInputTest, SpaceAndTheContextMenuOfferTheSame)
{
    say(Role::assistant, u"The answer"_s);
    showWithFocus();
    press(Qt::Key_Space);
    ASSERT_NE(menu(), nullptr);
    menu()->close();
    ASSERT_TRUE(QTest::qWaitFor([this] { return menu() == nullptr; }));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(&view, &event);
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(menu()->actions().size(), 2);
    menu()->close();
}

TEST_F(ChatScrollViewInputTest, TheMenuOpensTheRowsLinks)
{
    say(Role::assistant, u"See [this](https://example.com/a&b) and [that](javascript:x)."_s);
    showWithFocus();
    press(Qt::Key_Return);
    ASSERT_NE(menu(), nullptr);
    ASSERT_EQ(menu()->actions().size(), 3);
    EXPECT_EQ(menu()->actions()[2]->text(), u"Open https://example.com/a&&b"_s) << "shown with one";
    menu()->actions()[2]->trigger();
    menu()->close();
    EXPECT_EQ(opened, QStringList{u"https://example.com/a&b"_s});
}

TEST_F(ChatScrollViewInputTest, APressOnALinkOpensIt)
{
    say(Role::assistant, u"[linked words](https://example.com/)"_s);
    show();
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    EXPECT_EQ(opened, QStringList{u"https://example.com/"_s});
}

TEST_F(ChatScrollViewInputTest, ALinkInTheUsersOwnTextIsText)
{
    say(Role::user, u"[linked words](https://example.com/)"_s);
    show();
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    EXPECT_TRUE(opened.isEmpty());
}

TEST_F(ChatScrollViewInputTest, OnlyTheCopyButtonsOfTheFocusedRowAreOnTheWayOfTab)
{
    say(Role::assistant, u"```\none\n```"_s);
    say(Role::user, u"and"_s);
    say(Role::assistant, u"```\ntwo\n```"_s);
    showWithFocus();
    ASSERT_EQ(view.codeButtons().size(), 2);
    EXPECT_EQ(view.currentRow(), 2);
    EXPECT_EQ(view.codeButtons()[0]->focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(view.codeButtons()[1]->focusPolicy(), Qt::TabFocus);
    press(Qt::Key_Home);
    EXPECT_EQ(view.codeButtons()[0]->focusPolicy(), Qt::TabFocus);
    EXPECT_EQ(view.codeButtons()[1]->focusPolicy(), Qt::NoFocus);
}

TEST_F(ChatScrollViewInputTest, TheActivityFoldsByMouseKeyboardAndAssistiveTechnology)
{
    say(Role::user, u"Go"_s);
    for (int i = 0; i < 5; ++i)
        activity.log(u"step %1"_s.arg(i), ActivityStep::Kind::tool);
    say(Role::assistant, u"Done."_s);
    showWithFocus();
    ASSERT_EQ(view.content().count(), 8);
    const int unfolded = view.rows().height();

    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(1));
    settle();
    EXPECT_EQ(view.content().count(), 3);
    EXPECT_LT(view.rows().height(), unfolded);
    EXPECT_EQ(accessible()->childCount(), 3);
    EXPECT_EQ(accessibleRow(1)->text(QAccessible::Name), u"Activity, 5 steps"_s);
    EXPECT_TRUE(accessibleRow(1)->state().collapsed);
    activity.log(u"another"_s, ActivityStep::Kind::tool);
    settle();
    EXPECT_EQ(view.content().count(), 3);

    view.setCurrentRow(1);
    press(Qt::Key_Space);
    settle();
    EXPECT_EQ(view.content().count(), 9);
    EXPECT_TRUE(accessibleRow(1)->state().expanded);
    EXPECT_EQ(accessibleRow(7)->text(QAccessible::Name).section(u',', 0, 0), u"another"_s);

    view.setCurrentRow(4);
    accessibleRow(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
    EXPECT_EQ(view.content().count(), 3);
    EXPECT_EQ(view.currentRow(), 1);
    press(Qt::Key_Return);
    settle();
    EXPECT_GT(view.rows().height(), unfolded);
    EXPECT_EQ(view.content().count(), 9);
}

TEST_F(ChatScrollViewInputTest, AStepThatWasCutTellsAllInItsToolTipItsDescriptionAndItsCopy)
{
    const QString command = u"run the command: echo <b> "_s + QString(300, u'x');
    say(Role::user, u"Go"_s);
    activity.log(u"Running: "_s, command, ActivityStep::Kind::tool);
    showWithFocus();
    const QString line = u"Running: "_s + command.first(140) + u'…';
    EXPECT_TRUE(accessibleRow(2)->text(QAccessible::Name).startsWith(line + u", "_s));
    EXPECT_EQ(accessibleRow(2)->text(QAccessible::Description),
              u"Running: "_s + command + u". Accessibility action: copy."_s);
    QHelpEvent help(QEvent::ToolTip, textOf(2), view.viewport()->mapToGlobal(textOf(2)));
    QApplication::sendEvent(view.viewport(), &help);
    EXPECT_EQ(QToolTip::text(), u"<qt>Running: "_s + command.toHtmlEscaped() + u"</qt>"_s);
    view.setCurrentRow(2);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"Running: "_s + command);
}

TEST_F(ChatScrollViewInputTest, ControlAndAnArrowScrollAndLeaveTheRow)
{
    transcript.reset(dialogue(40));
    showWithFocus();
    const qsizetype row = view.currentRow();
    const int before = offset();
    press(Qt::Key_Up, Qt::ControlModifier);
    press(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_EQ(offset(), before - 2 * view.rows().style().lineHeight);
    press(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(offset(), before - view.rows().style().lineHeight);
    EXPECT_EQ(view.currentRow(), row);
}

TEST_F(ChatScrollViewInputTest, ThePointerTellsWhatCanBePressed)
{
    say(Role::user, u"Go"_s);
    activity.log(u"Something"_s, ActivityStep::Kind::info);
    say(Role::assistant, u"[Words of a link](https://example.com/)"_s);
    show();
    const auto shapeOver = [this](qsizetype row) {
        QTest::mouseMove(view.viewport(), textOf(row));
        return view.viewport()->cursor().shape();
    };
    EXPECT_EQ(shapeOver(0), Qt::IBeamCursor);
    EXPECT_EQ(shapeOver(1), Qt::PointingHandCursor);
    EXPECT_EQ(shapeOver(2), Qt::IBeamCursor);
    EXPECT_EQ(shapeOver(3), Qt::PointingHandCursor);
}

TEST_F(ChatScrollViewInputTest, ADragThatBeginsOnTheActivityDoesNotFoldIt)
{
    say(Role::user, u"Go"_s);
    activity.log(u"Something"_s, ActivityStep::Kind::info);
    show();
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, textOf(1));
    drag(textOf(2));
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, textOf(2));
    EXPECT_FALSE(view.content().isActivityFolded());
    EXPECT_FALSE(view.selectedText().isEmpty());
}

TEST_F(ChatScrollViewInputTest, AnEmptyConversationTakesEveryKey)
{
    showWithFocus();
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp,
                              Qt::Key_PageDown, Qt::Key_Return, Qt::Key_Space}) {
        press(key);
    }
    press(Qt::Key_C, Qt::ControlModifier);
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.currentRow(), -1);
}

} // namespace
} // namespace morvane
