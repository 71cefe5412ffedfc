#include "ConversationInputFixture.h"

#include <QClipboard>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class SelectedTextTest : public ConversationInputFixture {};

TEST_F(SelectedTextTest, ADoubleClickSelectsAWordForCopying)
{
    say(Role::assistant, u"several words"_s);
    show();
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    EXPECT_EQ(view.selectedText(), u"several"_s);
    view.copy();
    EXPECT_EQ(clipboard(), u"several"_s);
}

TEST_F(SelectedTextTest, DraggingSelectsTheTextBetween)
{
    say(Role::assistant, u"several words on a line"_s);
    show();
    const QPoint start = textOf(0) - QPoint(12, 0);
    const QFontMetrics metrics(view.rows().style().font);
    const auto drag = [&](const QPoint &to, Qt::MouseButtons buttons) {
        QMouseEvent move(QEvent::MouseMove, to, view.viewport()->mapToGlobal(to), Qt::NoButton, buttons, {});
        QApplication::sendEvent(view.viewport(), &move);
    };
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, start);
    drag(start + QPoint(metrics.horizontalAdvance(u"several"_s), 0), Qt::LeftButton);
    EXPECT_EQ(view.selectedText(), u"several"_s);
    const QPoint end = start + QPoint(metrics.horizontalAdvance(u"several words"_s), 0);
    drag(end, Qt::LeftButton);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, end);
    EXPECT_EQ(view.selectedText(), u"several words"_s);
    drag(start, Qt::NoButton);
    EXPECT_EQ(view.selectedText(), u"several words"_s);
    view.copy();
    EXPECT_EQ(clipboard(), u"several words"_s);
}

TEST_F(SelectedTextTest, DraggingAcrossALinkSelectsItAndOpensNothing)
{
    say(Role::assistant, u"[linked words](https://example.com/) and more"_s);
    show();
    const QPoint start = textOf(0);
    const QPoint end = start + QPoint(200, 0);
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, start);
    QMouseEvent move(QEvent::MouseMove, end, view.viewport()->mapToGlobal(end), Qt::NoButton, Qt::LeftButton,
                     {});
    QApplication::sendEvent(view.viewport(), &move);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, end);
    EXPECT_TRUE(opened.isEmpty());
    EXPECT_TRUE(view.selectedText().contains(u"words ("_s)) << view.selectedText().toStdString();
}

TEST_F(SelectedTextTest, SelectAllTakesTheWholeRowAcrossItsSegments)
{
    const QString text = u"token "_s.repeated(3000).trimmed();
    say(Role::user, text);
    showWithFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selectedText(), text);
}

TEST_F(SelectedTextTest, SelectedCodeHasNoFenceLines)
{
    say(Role::assistant, u"Before\n\n```sh\nls -l\n```\n\n> after"_s);
    showWithFocus();
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selectedText(), u"Before\n\nls -l\n\nafter"_s);
}

TEST_F(SelectedTextTest, DraggingSelectsAcrossMessages)
{
    say(Role::user, u"first message"_s);
    say(Role::assistant, u"One paragraph.\n\n- item\n- item two\n\nThe end."_s);
    say(Role::user, u"last message"_s);
    show();
    const QPoint start = textOf(0) - QPoint(12, 0);
    const QPoint end = textOf(2) - QPoint(12, 0);
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, start);
    drag(end);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, end);
    const QString expected = u"first message\n\nOne paragraph.\n\n• item\n• item two\n\nThe end."_s;
    EXPECT_EQ(view.selectedText().replace(u'\t', u' '), expected);
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, end);
    drag(start);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, start);
    EXPECT_EQ(view.selectedText().replace(u'\t', u' '), expected);
    view.copy();
    EXPECT_EQ(clipboard().replace(u'\t', u' '), expected);
    EXPECT_TRUE(accessibleRow(1)->state().selected);
}

TEST_F(SelectedTextTest, ParagraphsOfOneMessageKeepTheirEmptyLines)
{
    say(Role::assistant, u"One.\n\nTwo.\n\n| a | b |\n|---|---|\n| c | d |\n\nThree."_s);
    show();
    const ConversationItem item = view.content().item(0);
    const int bottom = view.rowRect(0).bottom() - view.rows().rowFrame(item).bottom - 2;
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, textOf(0) - QPoint(12, 0));
    drag({view.viewport()->width() - 5, bottom});
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, {view.viewport()->width() - 5, bottom});
    EXPECT_EQ(view.selectedText(), u"One.\n\nTwo.\na\tb\nc\td\nThree."_s);
}

TEST_F(SelectedTextTest, ADragThatLeavesTheWindowScrollsOn)
{
    transcript.reset(dialogue(100));
    show();
    const int before = offset();
    const QPoint start(400, 300);
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, start);
    drag({400, -40});
    ASSERT_TRUE(QTest::qWaitFor([&] { return offset() < before - 2000; }));
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, {400, -40});
    EXPECT_GT(view.selectedText().count(u"Message "_s), 5);
    const int stopped = offset();
    settle();
    EXPECT_EQ(offset(), stopped);
}

TEST_F(SelectedTextTest, ShiftAndTheArrowsSelectMessages)
{
    for (const char *text : {"one", "two", "three", "four"})
        say(Role::user, QString::fromLatin1(text));
    showWithFocus();
    view.setCurrentRow(1);
    press(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), u"two\n\nthree"_s);
    press(Qt::Key_Up, Qt::ShiftModifier);
    press(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), u"one\n\ntwo"_s);
    press(Qt::Key_End, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), u"two\n\nthree\n\nfour"_s);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"two\n\nthree\n\nfour"_s);
    EXPECT_FALSE(accessibleRow(0)->state().selected);
    EXPECT_TRUE(accessibleRow(3)->state().selected);
    press(Qt::Key_Up);
    EXPECT_EQ(view.selectedText(), QString());
    press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(view.selectedText(), u"one\n\ntwo\n\nthree\n\nfour"_s);
}

TEST_F(SelectedTextTest, SelectingEverythingLaysNothingOut)
{
    transcript.reset(dialogue(2000));
    showWithFocus();
    const int height = view.rows().height();
    const qsizetype documents = view.rows().documentCount();
    press(Qt::Key_A, Qt::ControlModifier);
    const QString text = view.selectedText();
    EXPECT_TRUE(text.startsWith(u"Message 0. "_s));
    EXPECT_EQ(text.count(u"Message "_s), 2000);
    EXPECT_EQ(view.rows().height(), height);
    EXPECT_EQ(view.rows().documentCount(), documents);
    // So much is copied in pieces, and stays what it was when copying began.
    QApplication::clipboard()->setText(u"before"_s);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(clipboard(), u"before"_s);
    transcript.reset({message(Role::user, u"Another conversation"_s)});
    EXPECT_TRUE(QTest::qWaitFor([&] { return clipboard() == text; }));
}

TEST_F(SelectedTextTest, AThirdClickSelectsTheParagraph)
{
    say(Role::assistant, u"Some words of one.\n\nSome words of two."_s);
    show();
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, textOf(0));
    EXPECT_EQ(view.selectedText(), u"Some words of one."_s);
}

TEST_F(SelectedTextTest, AClickWithShiftSelectsUpToIt)
{
    say(Role::assistant, u"First."_s);
    say(Role::assistant, u"Second."_s);
    show();
    const QPoint left(12, 0);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(0) - left);
    EXPECT_TRUE(view.selectedText().isEmpty());
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ShiftModifier, textOf(1) - left);
    EXPECT_EQ(view.selectedText().trimmed(), u"First."_s);
}

TEST_F(SelectedTextTest, APressOfTheMouseBeginsAnewWithTheKeyboardToo)
{
    transcript.reset({message(Role::assistant, u"One."_s), message(Role::assistant, u"Two."_s),
                      message(Role::assistant, u"Three."_s), message(Role::assistant, u"Four."_s)});
    showWithFocus();
    press(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), u"Three.\n\nFour."_s);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    press(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedText(), u"One.\n\nTwo."_s);
}

TEST_F(SelectedTextTest, FoldingTheActivitySelectsNothingThatIsGone)
{
    say(Role::user, u"Go"_s);
    activity.log(u"Something"_s, ActivityStep::Kind::info);
    show();
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, textOf(2));
    EXPECT_EQ(view.selectedText(), u"Something"_s);
    view.setActivityFolded(true);
    settle();
    EXPECT_EQ(view.selectedText(), QString());
    view.setActivityFolded(false);
    settle();
    EXPECT_EQ(view.selectedText(), QString()) << "nobody remembers";
}

TEST_F(SelectedTextTest, TheMenuCopiesTheSelectionWhereItIsOpenedOnIt)
{
    say(Role::assistant, u"several words"_s);
    showWithFocus();
    press(Qt::Key_Return);
    ASSERT_NE(menu(), nullptr);
    EXPECT_EQ(menu()->actions().constFirst()->text(), u"Copy"_s);
    EXPECT_EQ(menu()->activeAction(), menu()->actions().constFirst());
    menu()->close();
    ASSERT_TRUE(QTest::qWaitFor([this] { return menu() == nullptr; }));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, textOf(0));
    press(Qt::Key_Return);
    ASSERT_NE(menu(), nullptr);
    ASSERT_EQ(menu()->actions().constFirst()->text(), u"Copy Selection"_s);
    menu()->actions().constFirst()->trigger();
    menu()->close();
    ASSERT_TRUE(QTest::qWaitFor([] { return clipboard() == "several"_L1; }));
}

} // namespace
} // namespace morvane
