#include "ComposerEditFixture.h"

#include "ui/markdown/LayoutCost.h"

#include <QAccessible>
#include <QMimeData>
#include <QTextBlock>
#include <QTextLayout>
#include <memory>

using namespace Qt::StringLiterals;

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

class ComposerEditTest : public ComposerEditFixture {};

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

} // namespace
} // namespace morvane
