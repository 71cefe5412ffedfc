#include "ui/window/ComposerEdit.h"

#include "support/RunTask.h"
#include "ui/controls/NoteLabel.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/sheets/LongTextField.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/PastedTextView.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolTip>
#include <gmock/gmock.h>
#include <memory>

using namespace Qt::StringLiterals;

using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

/// What is on a clipboard whose owner does not answer: nothing, each time after a while.
class SilentData : public QMimeData {
public:
    QStringList formats() const override
    {
        ++questions;
        return {};
    }
    mutable int questions = 0;

protected:
    QVariant retrieveData(const QString &, QMetaType) const override
    {
        ++questions;
        return {};
    }
};

/// What the toolkit calls on its way to and from the clipboard.
class ExposedEdit : public ComposerEdit {
public:
    static QMimeData *selectionOf(const ComposerEdit &edit)
    {
        return (edit.*&ExposedEdit::createMimeDataFromSelection)();
    }
    static bool canInsert(const ComposerEdit &edit, const QMimeData &data)
    {
        return (edit.*&ExposedEdit::canInsertFromMimeData)(&data);
    }
    static void insert(ComposerEdit &edit, const QMimeData &data)
    {
        (edit.*&ExposedEdit::insertFromMimeData)(&data);
    }
};

class ComposerEditTest : public testing::Test {
protected:
    ComposerEditTest()
    {
        edit.resize(400, 100);
        edit.show();
        edit.activateWindow();
        edit.setFocus();
    }

    void paste(const QString &text)
    {
        QApplication::clipboard()->setText(text);
        edit.paste();
    }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&edit, static_cast<Qt::Key>(key), modifiers);
    }
    int caret() const { return edit.textCursor().position(); }
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

    ComposerEdit edit;
    const QString word = QString(70'000, u'x');
    const QString label = u"[Pasted text, 70,000 characters]"_s;
    const int labelSize = static_cast<int>(label.size());
};

TEST_F(ComposerEditTest, ALongTextIsFoldedAndStaysWhatItIs)
{
    QTest::keyClicks(&edit, u"before "_s);
    paste(word);
    QTest::keyClicks(&edit, u" behind"_s);
    EXPECT_EQ(edit.toPlainText(), u"before "_s + label + u" behind"_s);
    EXPECT_EQ(edit.draft(), u"before "_s + word + u" behind"_s);
    EXPECT_TRUE(edit.hasContent());
}

TEST_F(ComposerEditTest, WhateverIsPastedTheFieldHoldsLittle)
{
    const QStringList texts{QString(1'000'000, u'x'),        u"words and words "_s.repeated(60'000),
                            u"a line\n"_s.repeated(140'000), QString(1'000'000, u'\n'),
                            QString(6'000, QChar(0x6f22)),   u'e' + QString(5'000, QChar(0x301)),
                            u"✅"_s.repeated(1'000),         QString(30'000, u' ')};
    for (const QString &text : texts) {
        edit.setDraft({});
        paste(text);
        EXPECT_LE(edit.document()->characterCount(), 100);
        EXPECT_EQ(edit.draft(), text);
        edit.setDraft(text);
        EXPECT_LE(edit.document()->characterCount(), 100);
        EXPECT_EQ(edit.draft(), text);
    }
}

TEST_F(ComposerEditTest, ALongTextThatAReaderWritesIsFolded)
{
    // Words are laid out faster than one that has no end.
    const QString text = u"words "_s.repeated(70'000 / 6) + u"more"_s;
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&edit);
    QTest::keyClicks(&edit, u"front back"_s);
    interface->editableTextInterface()->insertText(6, text);
    EXPECT_EQ(edit.toPlainText(), u"front "_s + label + u"back"_s);
    EXPECT_EQ(caret(), 10 + labelSize);
    EXPECT_EQ(edit.draft(), u"front "_s + text + u"back"_s);
    interface->setText(QAccessible::Value, text + u'\n' + text);
    EXPECT_LE(edit.document()->characterCount(), 100);
    QTest::keyClicks(&edit, u" typed"_s);
    EXPECT_EQ(edit.draft(), text + u'\n' + text + u" typed"_s);
    press(Qt::Key_Z, Qt::ControlModifier);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(edit.draft(), text + u'\n' + text);
    EXPECT_LE(edit.document()->characterCount(), 100);
}

TEST_F(ComposerEditTest, ASelectionIsPutTogetherWhenItIsAskedFor)
{
    paste(word);
    QTest::keyClicks(&edit, u" behind"_s);
    edit.selectAll();
    const std::unique_ptr<QMimeData> selection(ExposedEdit::selectionOf(edit));
    EXPECT_TRUE(selection->hasText());
    edit.clear();
    EXPECT_EQ(selection->text(), word + u" behind"_s);
    EXPECT_EQ(QString::fromUtf8(selection->data(u"text/plain"_s)), word + u" behind"_s);
    EXPECT_FALSE(selection->hasUrls() || selection->hasImage() || selection->hasHtml());
}

TEST_F(ComposerEditTest, AClipboardWhoseOwnerIsSilentIsAskedOnce)
{
    SilentData silent;
    ExposedEdit::insert(edit, silent);
    EXPECT_EQ(silent.questions, 1);
    EXPECT_FALSE(ExposedEdit::canInsert(edit, silent));
    EXPECT_EQ(silent.questions, 2);
    EXPECT_EQ(edit.draft(), QString());
}

TEST_F(ComposerEditTest, ShortTextsThatAddUpAreFoldedInTheEnd)
{
    const QString page = u"a word "_s.repeated(500) + u'\n';
    const QString note = u"note "_s.repeated(50) + u'\n';
    QString entered;
    for (int i = 0; i < 10; ++i) {
        paste(page);
        paste(note);
        entered += page + note;
    }
    EXPECT_EQ(edit.draft(), entered);
    EXPECT_LE(layoutCost(edit.toPlainText()), 21'000);
    EXPECT_EQ(edit.folds().places().size(), 5);
}

TEST_F(ComposerEditTest, AParagraphStaysShortWhereTheDraftHasRoom)
{
    const QString part = u"a word "_s.repeated(500);
    paste(part);
    paste(part);
    EXPECT_EQ(edit.folds().places().size(), 1);
    for (int i = 0; i < 100; ++i)
        paste(u"x"_s.repeated(400));
    EXPECT_LE(edit.document()->characterCount(), 15'000); // labels among them
    EXPECT_EQ(edit.draft(), part + part + QString(40'000, u'x'));
}

TEST_F(ComposerEditTest, WhatASelectionGivesUpMakesRoom)
{
    const QString page = QString(5'000, u'x');
    paste(page);
    edit.selectAll();
    paste(page);
    EXPECT_EQ(edit.toPlainText(), page);
    EXPECT_TRUE(edit.folds().places().isEmpty());
}

TEST_F(ComposerEditTest, EveryParagraphCountsForItsHeight)
{
    const int line = edit.fontMetrics().lineSpacing();
    const int frame = edit.height() - line;
    edit.resize(900, edit.height());
    edit.setDraft(u"several words in a row\nand again several words"_s);
    EXPECT_EQ(edit.height(), frame + 2 * line);
    edit.resize(100, edit.height());
    int lines = 0;
    for (QTextBlock block = edit.document()->begin(); block.isValid(); block = block.next()) {
        EXPECT_GT(block.layout()->lineCount(), 1);
        lines += block.layout()->lineCount();
    }
    EXPECT_EQ(edit.height(), frame + std::min(lines, 8) * line);
}

TEST_F(ComposerEditTest, AnOrdinaryTextStaysAsItIs)
{
    const QString text = u"Zwei\u00a0Zeilen\n\tmit ✅ und 漢字\n"_s;
    paste(text);
    EXPECT_EQ(edit.draft(), text);
    EXPECT_TRUE(edit.folds().places().isEmpty());
}

TEST_F(ComposerEditTest, LineEndsBecomeLineFeedsFoldedOrNot)
{
    for (const int count : {1, 5'000}) {
        edit.setDraft({});
        paste(u"one\r\ntwo\rthree\n"_s.repeated(count));
        EXPECT_EQ(edit.draft(), u"one\ntwo\nthree\n"_s.repeated(count));
    }
}

TEST_F(ComposerEditTest, TheLabelTellsHowMuchThereIs)
{
    paste(u"👩‍👩‍👧‍👦"_s.repeated(1'000));
    EXPECT_EQ(edit.toPlainText(), u"[Pasted text, 1,000 characters]"_s);
    edit.setDraft(u"é"_s.repeated(500'000));
    EXPECT_EQ(edit.toPlainText(), u"[Pasted text, 1.0 MB]"_s);
}

TEST_F(ComposerEditTest, FoldingIsUndoneAndRedone)
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

TEST_F(ComposerEditTest, ALabelGoesAsAWholeAndComesBackAsAWhole)
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

TEST_F(ComposerEditTest, TheCaretPassesALabelInOneStep)
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

TEST_F(ComposerEditTest, ASelectionTakesALabelAsAWhole)
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

TEST_F(ComposerEditTest, WhatIsCopiedCutAndPastedAgainIsTheText)
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

TEST_F(ComposerEditTest, WhatIsWrittenBesideALabelIsTextOfItsOwn)
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

TEST_F(ComposerEditTest, OfALabelThatLosesAPartNothingStays)
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

TEST_F(ComposerEditTest, WhatOthersWriteBehindALabelStays)
{
    paste(word);
    edit.insertPlainText(u"\nfirst\nsecond"_s);
    EXPECT_EQ(edit.draft(), word + u"\nfirst\nsecond"_s);
    QTextCursor foreign(edit.document());
    foreign.setPosition(labelSize);
    foreign.insertText(u" one\ntwo"_s);
    EXPECT_EQ(edit.draft(), word + u" one\ntwo\nfirst\nsecond"_s);
}

TEST_F(ComposerEditTest, ATextThatLooksLikeALabelIsNone)
{
    QTest::keyClicks(&edit, label);
    EXPECT_EQ(edit.draft(), label);
    EXPECT_TRUE(edit.folds().places().isEmpty());
}

TEST_F(ComposerEditTest, BlanksAreNoContentFoldedOrNot)
{
    EXPECT_FALSE(edit.hasContent());
    for (const int count : {3, 50'000}) {
        edit.setDraft(u" \n\t\u2003"_s.repeated(count));
        EXPECT_FALSE(edit.hasContent());
        QTest::keyClicks(&edit, u"x"_s);
        EXPECT_TRUE(edit.hasContent());
        press(Qt::Key_Backspace);
        EXPECT_FALSE(edit.hasContent());
    }
    edit.setDraft(QString(50'000, u' ') + u'x');
    EXPECT_TRUE(edit.hasContent());
    edit.undo();
    EXPECT_TRUE(edit.hasContent()) << "what is set is where the history begins";
}

TEST_F(ComposerEditTest, WhatIsDroppedIsFoldedToo)
{
    QMimeData data;
    data.setText(word);
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit.viewport(), &enter);
    QDragMoveEvent move(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit.viewport(), &move);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(edit.viewport(), &drop);
    EXPECT_EQ(edit.toPlainText(), label);
    EXPECT_EQ(edit.draft(), word);
}

TEST_F(ComposerEditTest, AHundredMegabytesDoNoHarm)
{
    const QString text(100'000'000, u'x');
    paste(text);
    EXPECT_EQ(edit.toPlainText(), u"[Pasted text, 100.0 MB]"_s);
    EXPECT_EQ(edit.draft().size(), text.size());
}

TEST_F(ComposerEditTest, ScreenReadersMeetTheLabelWhereTheCaretMeetsIt)
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

TEST_F(ComposerEditTest, ThePastedTextCanBeReadFromTheMenu)
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

TEST_F(ComposerEditTest, OfATextThatIsTooLongToBeReadTheBeginningIsShown)
{
    auto *view = new PastedTextView(QString(2'000'001, u'\n'), &edit);
    EXPECT_THAT(notes(*view), ElementsAre(u"This is the beginning. The whole text is sent."_s));
}

TEST_F(ComposerEditTest, TheMouseIsToldThatALabelCanBeRead)
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

TEST_F(ComposerEditTest, ALabelIsMarkedInTheColorsOfTheTheme)
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

TEST_F(ComposerEditTest, ElsewhereTheMenuHasNoSuchEntry)
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
