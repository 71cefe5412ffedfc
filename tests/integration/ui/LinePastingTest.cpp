#include "FieldPastingFixture.h"

#include "ui/controls/LineFieldMenu.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QSpinBox>

using namespace Qt::StringLiterals;

using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

/// What is pasted into fields of one line.
class LinePastingTest : public FieldPastingFixture {};

TEST_F(LinePastingTest, TheMenuOfANumberAsksNothingEither)
{
    QSpinBox number;
    number.show();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), number.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&number, &event);
    auto *menu = qobject_cast<LineFieldMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    menu->close();
}

TEST_F(LinePastingTest, ALineTakesItWhereItWasAskedFor)
{
    QTest::keyClicks(&line, u"abc"_s);
    QTest::keyClick(&line, Qt::Key_Left);
    pasteInLine();
    QTest::keyClicks(&line, u"x"_s);
    QTest::keyClick(&line, Qt::Key_Home);
    QTest::keyClicks(&line, u"y"_s);
    answer(u"12"_s);
    EXPECT_EQ(line.text(), u"yab12xc"_s);
    EXPECT_EQ(line.cursorPosition(), 1);
    line.setSelection(3, 2);
    pasteInLine();
    answer(u"-"_s, 1);
    EXPECT_EQ(line.text(), u"yab-xc"_s);
    EXPECT_EQ(line.cursorPosition(), 4);
}

TEST_F(LinePastingTest, WhatIsTypedInALineMeanwhileIsNeverReplaced)
{
    QTest::keyClicks(&line, u"abc"_s);
    line.setSelection(0, 2);
    pasteInLine();
    QTest::keyClick(&line, Qt::Key_End);
    QTest::keyClicks(&line, u"typed"_s);
    answer(u"12"_s);
    EXPECT_EQ(line.text(), u"12abctyped"_s);
    QTest::keyClicks(&line, u"!"_s);
    EXPECT_EQ(line.text(), u"12abctyped!"_s);
}

TEST_F(LinePastingTest, WhoeverListensToALineHearsOfIt)
{
    QStringList heard;
    QObject::connect(&line, &QLineEdit::textEdited, &line, [&heard](const QString &text) { heard += text; });
    pasteInLine();
    answer(u"key"_s);
    EXPECT_THAT(heard, ElementsAre(u"key"_s));
}

TEST_F(LinePastingTest, ALineThatShowsSomethingElseByNowDoesNotGetIt)
{
    pasteInLine();
    line.setText(u"the key of another provider"_s);
    answer(u"late"_s);
    EXPECT_EQ(line.text(), u"the key of another provider"_s);
    pasteInLine();
    line.hide();
    answer(u"late"_s, 1);
    EXPECT_EQ(line.text(), u"the key of another provider"_s);
}

TEST_F(LinePastingTest, ALineThatIsForSomethingElseByNowDoesNotGetIt)
{
    // Both providers have no key yet, so that the text in the line is the same.
    line.setAccessibleName(u"One API key"_s);
    pasteInLine();
    line.setAccessibleName(u"Another API key"_s);
    answer(u"the key of one"_s);
    EXPECT_EQ(line.text(), QString());
    pasteInLine();
    answer(u"the key of another"_s, 1);
    EXPECT_EQ(line.text(), u"the key of another"_s);
}

TEST_F(LinePastingTest, AFieldForANumberIsALine)
{
    QSpinBox number;
    number.show();
    number.selectAll();
    QTest::keyClick(&number, Qt::Key_V, Qt::ControlModifier);
    settle();
    EXPECT_THAT(source.asked, ElementsAre(PasteSource::Selection::clipboard));
    answer(u"42"_s);
    EXPECT_EQ(number.value(), 42);
    number.selectAll();
    QTest::keyClick(&number, Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(&number, Qt::Key_Escape);
    answer(u"7"_s, 1);
    EXPECT_EQ(number.value(), 42);
}

TEST_F(LinePastingTest, AFieldThatIsGoneMeetsNobody)
{
    auto gone = std::make_unique<QLineEdit>();
    gone->show();
    QTest::keyClick(gone.get(), Qt::Key_V, Qt::ControlModifier);
    settle();
    ASSERT_EQ(source.asked.size(), 1);
    gone.reset();
    fail();
    EXPECT_THAT(announcer.spoken, IsEmpty());
}

} // namespace
} // namespace morvane
