#include "ui/sheets/LongTextField.h"

#include "support/RunTask.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/markdown/TextSegment.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class LongTextFieldTest : public testing::Test {
protected:
    LongTextFieldTest() { field.resize(400, 300); }

    void show(const QString &text, LongTextField::Style style = LongTextField::Style::command,
              LongTextField::Hidden hidden = LongTextField::Hidden::escaped)
    {
        field.setContent(text, style, hidden);
        field.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&field));
        ASSERT_TRUE(waitUntil([this] { return field.isComplete(); }));
    }

    QString whole() const { return field.textBetween(0, field.document()->characterCount() - 1); }

    /// The letters of a block's first row as they stand from left to right.
    QString drawn(int number)
    {
        const QTextBlock block = field.document()->findBlockByNumber(number);
        const QTextLine line = block.layout()->lineAt(0);
        QMap<qreal, QChar> letters;
        for (int i = line.textStart(); i < line.textStart() + line.textLength(); ++i)
            letters.insert((line.cursorToX(i) + line.cursorToX(i + 1)) / 2, block.text().at(i));
        QString text;
        for (const QChar letter : std::as_const(letters))
            text += letter;
        return text.remove(QChar(0x202d));
    }

    LongTextField field;
};

TEST_F(LongTextFieldTest, ATextThatIsLetGoLeavesInPieces)
{
    field.setContent(u"a line\n"_s.repeated(20'000), LongTextField::Style::prose,
                     LongTextField::Hidden::asTheyStand);
    ASSERT_TRUE(QTest::qWaitFor([&] { return field.isComplete(); }));
    ASSERT_GT(field.document()->blockCount(), 20'000);
    field.letGo();
    EXPECT_GT(field.document()->blockCount(), 15'000);
    EXPECT_TRUE(QTest::qWaitFor([&] { return field.document()->isEmpty(); }));
    field.letGo();
    EXPECT_TRUE(field.document()->isEmpty());
}

TEST_F(LongTextFieldTest, AnotherTextMayComeWhileOneIsLetGo)
{
    field.setContent(u"a line\n"_s.repeated(20'000), LongTextField::Style::prose,
                     LongTextField::Hidden::asTheyStand);
    ASSERT_TRUE(QTest::qWaitFor([&] { return field.isComplete(); }));
    field.letGo();
    field.setContent(u"another"_s, LongTextField::Style::prose, LongTextField::Hidden::asTheyStand);
    for (int turn = 0; turn < 3; ++turn)
        QApplication::processEvents();
    EXPECT_EQ(field.toPlainText(), u"another"_s);
}

TEST_F(LongTextFieldTest, ATextOfAnyKindGoesInWholeAndInBoundedPieces)
{
    const QStringList texts{QString(1'000'000, u'x'),
                            u"words and words "_s.repeated(20'000),
                            u"a line\n"_s.repeated(20'000),
                            QString(100'000, QChar(0x6f22)),
                            u"x\r\n"_s.repeated(9'000),
                            u"a\n\n"_s,
                            QString()};
    for (const QString &text : texts) {
        show(text, LongTextField::Style::prose, LongTextField::Hidden::asTheyStand);
        EXPECT_EQ(whole(), QString(text).replace(u"\r\n"_s, u"\n"_s));
        EXPECT_EQ(field.lines(), text.count(u'\n') + 1);
        for (QTextBlock block = field.document()->firstBlock(); block.isValid(); block = block.next())
            ASSERT_LE(layoutCost(block.text()), segmentLimit);
        EXPECT_TRUE(field.document()->lastBlock().layout()->cacheEnabled())
            << "shaped anew with each drawing";
    }
}

TEST_F(LongTextFieldTest, OnlyTheFirstSliceGoesInAtOnce)
{
    field.setContent(QString(1'000'000, u'x'), LongTextField::Style::command, LongTextField::Hidden::escaped);
    EXPECT_FALSE(field.isComplete());
    EXPECT_LE(field.document()->characterCount(), 10'000);
    field.setContent(u"line\n"_s.repeated(100'000), LongTextField::Style::command,
                     LongTextField::Hidden::escaped);
    EXPECT_LE(field.document()->blockCount(), 201);
    field.setContent(u"✅"_s.repeated(100'000), LongTextField::Style::prose,
                     LongTextField::Hidden::asTheyStand);
    EXPECT_LE(layoutCost(field.toPlainText()), 500) << "what is dear to lay out is dear to measure, too";
    EXPECT_LE(field.characters(), 50);
    field.setContent(QString(1'000'000, QChar(0x202e)), LongTextField::Style::command,
                     LongTextField::Hidden::escaped);
    EXPECT_LE(layoutCost(field.toPlainText()), 4'000) << "an escape is longer than what it stands for";
    field.setContent(u"b\u05d0"_s.repeated(500'000), LongTextField::Style::prose,
                     LongTextField::Hidden::asTheyStand);
    EXPECT_LE(field.characters(), 300) << "letters of two scripts are shaped one by one";
}

TEST_F(LongTextFieldTest, OnlyPiecesInSightAreLaidOut)
{
    show(QString(1'000'000, u'x'));
    int laidOut = 0;
    for (QTextBlock block = field.document()->firstBlock(); block.isValid(); block = block.next())
        laidOut += block.layout()->lineCount() > 0 ? 1 : 0;
    EXPECT_GT(laidOut, 0);
    EXPECT_LT(laidOut, 20);
}

TEST_F(LongTextFieldTest, ANewTextTakesThePlaceOfOneThatStillGoesIn)
{
    field.setContent(QString(1'000'000, u'x'), LongTextField::Style::command, LongTextField::Hidden::escaped);
    show(u"short"_s);
    settle(); // a slice of the former text would go in now
    EXPECT_EQ(field.toPlainText(), u"short"_s);
    EXPECT_EQ(field.characters(), 5);
}

TEST_F(LongTextFieldTest, ALongLineIsCutBetweenItsWords)
{
    for (const QString &blanks : {u" "_s, QString(7, u' ')}) {
        show((u"kingfisher"_s + blanks).repeated(2'000), LongTextField::Style::prose,
             LongTextField::Hidden::asTheyStand);
        ASSERT_GT(field.document()->blockCount(), 5);
        for (QTextBlock block = field.document()->firstBlock(); block.isValid(); block = block.next())
            EXPECT_EQ(block.text().trimmed().replace(blanks, u" "_s).split(u' ').count(u"kingfisher"_s),
                      block.text().trimmed().count(u'k'))
                << block.blockNumber();
    }
}

TEST_F(LongTextFieldTest, ALineWithoutBlanksIsCutBetweenItsCharacters)
{
    show(u'a' + u"e\u0301"_s.repeated(20'000), LongTextField::Style::prose,
         LongTextField::Hidden::asTheyStand);
    ASSERT_GT(field.document()->blockCount(), 5);
    for (QTextBlock block = field.document()->begin().next(); block.isValid(); block = block.next())
        EXPECT_EQ(block.text().front(), u'e') << block.blockNumber();
}

TEST_F(LongTextFieldTest, ARunOfBlanksIsToldAsOneWhereverItBegins)
{
    for (qsizetype before = 1'900; before < 2'010; before += 3) {
        show(u"word "_s.repeated(before / 5) + QString(1 + before % 5, u'x') + QString(100, u' ') +
             u"word "_s.repeated(1'000));
        EXPECT_EQ(field.toPlainText().count(u"[100 blanks]"_s), 1) << before;
    }
}

TEST_F(LongTextFieldTest, WhatIsCopiedHasNoTraceOfTheCuts)
{
    const QString text = QString(50'000, u'x') + u"\nשלום 1 2\nend"_s;
    show(text);
    field.selectAll();
    field.copy();
    EXPECT_EQ(QApplication::clipboard()->text(), text);
}

TEST_F(LongTextFieldTest, ACommandIsDrawnFromLeftToRightWhateverItsLetters)
{
    const QString command = u"rm -rf א/ב 1 ג"_s;
    show(command + u"\nls"_s);
    EXPECT_EQ(drawn(0), command);
    EXPECT_EQ(drawn(1), u"ls"_s);
    show(command, LongTextField::Style::prose);
    EXPECT_NE(drawn(0), command);
}

TEST_F(LongTextFieldTest, EscapesAreMarkedWhereTheyStand)
{
    show(QString(30'000, u'x') + u"\u202Eab\n"_s + QString(100, u' ') + u"c"_s);
    const auto marks = field.extraSelections();
    ASSERT_EQ(marks.size(), 2);
    EXPECT_EQ(marks[0].cursor.selectedText(), u"\\u202E"_s);
    EXPECT_EQ(marks[1].cursor.selectedText(), u"[100 blanks]"_s);
}

} // namespace
} // namespace morvane
