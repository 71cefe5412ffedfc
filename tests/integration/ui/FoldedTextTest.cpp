#include "ComposerEditFixture.h"

#include "support/RunTask.h"
#include "ui/controls/NoteLabel.h"
#include "ui/sheets/LongTextField.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/PastedTextView.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QMenu>
#include <QToolTip>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

class FoldedTextTest : public ComposerEditFixture {
protected:
    void select(int from, int to)
    {
        QTextCursor cursor = edit.textCursor();
        cursor.setPosition(from);
        cursor.setPosition(to, QTextCursor::KeepAnchor);
        edit.setTextCursor(cursor);
    }
    QString copied()
    {
        edit.copy();
        return QApplication::clipboard()->text();
    }

    static QStringList notes(const QWidget &view)
    {
        QStringList texts;
        for (const auto *note : view.findChildren<NoteLabel *>())
            texts.append(note->text());
        return texts;
    }
};

TEST_F(FoldedTextTest, TheLabelTellsHowMuchThereIs)
{
    paste(u"👩‍👩‍👧‍👦"_s.repeated(1'000));
    EXPECT_EQ(edit.toPlainText(), u"[Pasted text, 1,000 characters]"_s);
    edit.setDraft(u"é"_s.repeated(500'000));
    EXPECT_EQ(edit.toPlainText(), u"[Pasted text, 1.0 MB]"_s);
}

TEST_F(FoldedTextTest, FoldingIsUndoneAndRedone)
{
    QTest::keyClicks(&edit, u"a"_s);
    paste(word);
    QTest::keyClicks(&edit, u"b"_s);
    edit.undo();
    EXPECT_EQ(edit.draft(), u'a' + word);
    edit.undo();
    EXPECT_EQ(edit.draft(), u"a"_s);
    edit.redo();
    EXPECT_EQ(edit.draft(), u'a' + word);
    edit.redo();
    EXPECT_EQ(edit.draft(), u'a' + word + u'b');
}

TEST_F(FoldedTextTest, ALabelGoesAsAWholeAndComesBackAsAWhole)
{
    QTest::keyClicks(&edit, u"a"_s);
    paste(word);
    QTest::keyClicks(&edit, u"b"_s);
    press(Qt::Key_Left);
    press(Qt::Key_Backspace);
    EXPECT_EQ(edit.draft(), u"ab"_s);
    edit.undo();
    EXPECT_EQ(edit.draft(), u'a' + word + u'b');
    press(Qt::Key_Home);
    press(Qt::Key_Right);
    press(Qt::Key_Delete);
    EXPECT_EQ(edit.draft(), u"ab"_s);
    edit.undo();
    EXPECT_EQ(edit.draft(), u'a' + word + u'b');
    EXPECT_EQ(edit.toPlainText(), u'a' + label + u'b');
}

TEST_F(FoldedTextTest, TheCaretPassesALabelInOneStep)
{
    QTest::keyClicks(&edit, u"a"_s);
    paste(word);
    QTest::keyClicks(&edit, u"b"_s);
    press(Qt::Key_Left);
    EXPECT_EQ(caret(), 1 + labelSize);
    press(Qt::Key_Left);
    EXPECT_EQ(caret(), 1);
    press(Qt::Key_Right);
    EXPECT_EQ(caret(), 1 + labelSize);
    press(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(edit.textCursor().selectedText(), label);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_FALSE(edit.textCursor().hasSelection());
    press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_LE(caret(), 1);
}

TEST_F(FoldedTextTest, ASelectionTakesALabelAsAWhole)
{
    QTest::keyClicks(&edit, u"ab"_s);
    paste(word);
    select(4, 9);
    EXPECT_EQ(edit.textCursor().selectedText(), label);
    select(0, 0);
    select(1, 9);
    EXPECT_EQ(edit.textCursor().selectedText(), u'b' + label);
    select(9, 1);
    EXPECT_EQ(edit.textCursor().selectedText(), u'b' + label);
    EXPECT_EQ(caret(), 1);
}

TEST_F(FoldedTextTest, WhatIsCopiedCutAndPastedAgainIsTheText)
{
    QTest::keyClicks(&edit, u"ab"_s);
    paste(word);
    QTest::keyClicks(&edit, u"c"_s);
    select(1, 2 + labelSize);
    EXPECT_EQ(copied(), u'b' + word);
    edit.cut();
    EXPECT_EQ(edit.draft(), u"ac"_s);
    edit.paste();
    EXPECT_EQ(edit.draft(), u"ab"_s + word + u'c');
}

TEST_F(FoldedTextTest, WhatIsWrittenBesideALabelIsTextOfItsOwn)
{
    paste(word);
    press(Qt::Key_Home);
    QTest::keyClicks(&edit, u"ab"_s);
    press(Qt::Key_End);
    QTest::keyClicks(&edit, u"cd"_s);
    press(Qt::Key_Backspace);
    EXPECT_EQ(edit.draft(), u"ab"_s + word + u'c');
    paste(word);
    paste(word);
    EXPECT_EQ(edit.draft(), u"ab"_s + word + u'c' + word + word);
    press(Qt::Key_Backspace);
    EXPECT_EQ(edit.draft(), u"ab"_s + word + u'c' + word);
}

TEST_F(FoldedTextTest, OfALabelThatLosesAPartNothingStays)
{
    QTest::keyClicks(&edit, u"a"_s);
    paste(word);
    // Helping programs edit the text without a caret.
    QTextCursor foreign(edit.document());
    foreign.setPosition(3);
    foreign.deleteChar();
    EXPECT_EQ(edit.draft(), u"a"_s);
    edit.undo();
    edit.undo();
    EXPECT_EQ(edit.toPlainText(), u'a' + label);
    EXPECT_EQ(edit.draft(), u'a' + word);
    foreign.setPosition(1 + labelSize);
    foreign.insertText(u"b"_s);
    EXPECT_EQ(edit.draft(), u'a' + word + u'b');
}

TEST_F(FoldedTextTest, HalfALabelThatAReaderDeletesComesBackInOneStep)
{
    QTest::keyClicks(&edit, u"a"_s);
    paste(word);
    QAccessibleEditableTextInterface *text =
        QAccessible::queryAccessibleInterface(&edit)->editableTextInterface();
    text->deleteText(1, labelSize / 2);
    EXPECT_EQ(edit.draft(), u"a"_s);
    edit.undo();
    EXPECT_EQ(edit.draft(), u'a' + word);
    QTest::keyClicks(&edit, u"b"_s);
    EXPECT_EQ(edit.draft(), u'a' + word + u'b');
    text->deleteText(3, 1 + labelSize);
    EXPECT_EQ(edit.draft(), u"ab"_s);
    edit.undo();
    EXPECT_EQ(edit.draft(), u'a' + word + u'b');
    edit.redo();
    EXPECT_EQ(edit.draft(), u"ab"_s);
    edit.undo();
    EXPECT_EQ(edit.toPlainText(), u'a' + label + u'b');
}

TEST_F(FoldedTextTest, WhatOthersWriteBehindALabelStays)
{
    paste(word);
    edit.insertPlainText(u"\nfirst\nsecond"_s);
    EXPECT_EQ(edit.draft(), word + u"\nfirst\nsecond"_s);
    QTextCursor foreign(edit.document());
    foreign.setPosition(labelSize);
    foreign.insertText(u" one\ntwo"_s);
    EXPECT_EQ(edit.draft(), word + u" one\ntwo\nfirst\nsecond"_s);
}

TEST_F(FoldedTextTest, ATextThatLooksLikeALabelIsNone)
{
    QTest::keyClicks(&edit, label);
    EXPECT_EQ(edit.draft(), label);
    EXPECT_TRUE(edit.folds().places().isEmpty());
}

TEST_F(FoldedTextTest, ScreenReadersMeetTheLabelWhereTheCaretMeetsIt)
{
    QTest::keyClicks(&edit, u"a"_s);
    paste(word);
    QAccessibleTextInterface *text = QAccessible::queryAccessibleInterface(&edit)->textInterface();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(0, text->characterCount()), u'a' + label);
    EXPECT_EQ(text->cursorPosition(), 1 + labelSize);
    press(Qt::Key_Left, Qt::ShiftModifier);
    int from = 0;
    int to = 0;
    text->selection(0, &from, &to);
    EXPECT_EQ(text->text(from, to), label);
}

TEST_F(FoldedTextTest, ThePastedTextCanBeReadFromTheMenu)
{
    paste(word);
    press(Qt::Key_F10, Qt::ShiftModifier);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QAction *show = menu->actions().constFirst();
    EXPECT_EQ(show->text(), u"Show Pasted Text…"_s);
    EXPECT_EQ(menu->activeAction(), show);
    show->trigger();
    menu->close();
    auto *view = edit.findChild<PastedTextView *>();
    ASSERT_NE(view, nullptr);
    auto *field = view->findChild<LongTextField *>();
    ASSERT_TRUE(waitUntil([field] { return field->isComplete(); }));
    EXPECT_EQ(field->textBetween(0, field->document()->characterCount() - 1), word);
    EXPECT_THAT(notes(*view), IsEmpty());
    view->close();
}

TEST_F(FoldedTextTest, OfATextThatIsTooLongToBeReadTheBeginningIsShown)
{
    auto *view = new PastedTextView(QString(2'000'001, u'\n'), &edit);
    EXPECT_THAT(notes(*view), ElementsAre(u"This is the beginning. The whole text is sent."_s));
}

TEST_F(FoldedTextTest, TheMouseIsToldThatALabelCanBeRead)
{
    paste(word);
    QTest::keyClicks(&edit, u" and more"_s);
    const auto toldAt = [this](int position) {
        QTextCursor cursor = edit.textCursor();
        cursor.setPosition(position);
        const QPoint point = edit.cursorRect(cursor).center();
        QHelpEvent event(QEvent::ToolTip, point, edit.viewport()->mapToGlobal(point));
        QApplication::sendEvent(edit.viewport(), &event);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    EXPECT_EQ(toldAt(labelSize / 2), u"Double-click to read the pasted text."_s);
    QToolTip::hideText();
    EXPECT_TRUE(waitUntil([] { return !QToolTip::isVisible(); }));
    EXPECT_EQ(toldAt(labelSize + 5), QString());
}

TEST_F(FoldedTextTest, ALabelIsMarkedInTheColorsOfTheTheme)
{
    paste(word);
    const auto mark = [this] {
        const auto marks = edit.extraSelections();
        EXPECT_EQ(marks.size(), 1);
        EXPECT_EQ(marks.value(0).cursor.selectedText(), label);
        return marks.value(0).format;
    };
    const QTextCharFormat before = mark();
    edit.setPalette(darkPalette());
    const ThemeColors colors = ThemeColors::fromPalette(edit.palette());
    EXPECT_EQ(mark().background().color(), colors.userBubble);
    EXPECT_EQ(mark().foreground().color(), colors.text);
    EXPECT_NE(mark(), before);
}

TEST_F(FoldedTextTest, ElsewhereTheMenuHasNoSuchEntry)
{
    paste(word);
    QTest::keyClicks(&edit, u"ab"_s);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), edit.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(edit.viewport(), &event);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_NE(menu->actions().constFirst()->text(), u"Show Pasted Text…"_s);
    menu->close();
}

} // namespace
} // namespace morvane
