#include "SheetsFixture.h"

#include "base/LabelText.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/WrappingButton.h"
#include "ui/markdown/TextSegment.h"
#include "ui/sheets/QuestionView.h"
#include "ui/sheets/SheetCard.h"

#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAre;

class QuestionViewTest : public SheetsFixture {
protected:
    QLineEdit *field() const { return named<QLineEdit>(u"Your answer"_s); }
    QPushButton *send() const { return named<QPushButton>(u"Send your custom answer"_s); }
    QPushButton *option(const QString &text) const { return named<QPushButton>(u"Answer: "_s + text); }
    QPlainTextEdit *text() const { return named<QPlainTextEdit>(u"Question"_s); }
    QList<QWidget *> answers() const
    {
        QList<QWidget *> found;
        for (QPushButton *button : question->findChildren<QPushButton *>())
            if (button->isVisible() && button->accessibleName().startsWith(u"Answer: "_s))
                found.append(button);
        return found;
    }
};

/// Counts the buttons of options that are made between two timers, which is what a slice is.
class MostAtOnce : public QObject {
public:
    explicit MostAtOnce(QuestionView &view) : m_view(view), m_before(count())
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Timer) {
            most = std::max(most, count() - m_before);
            m_before = count();
        }
        return false;
    }

    qsizetype most = 0;

private:
    qsizetype count() const { return m_view.findChildren<WrappingButton *>().size(); }

    QuestionView &m_view;
    qsizetype m_before;
};

TEST_F(QuestionViewTest, EachQuestionIsTheNameOfItsSheet)
{
    for (const QString &asked : {u"Which file?"_s, u"And then?"_s}) {
        ask(asked);
        EXPECT_EQ(question->card()->accessibleName(), u"Morvane asks: "_s + asked);
        model->questions().resolveQuestion(u"That"_s);
        settle();
    }
}

TEST_F(QuestionViewTest, ShowsTheQuestionAndItsOptionsInOrder)
{
    ask(u"Which colour?"_s, {u"Red"_s, u"Green"_s});
    ASSERT_TRUE(question->isVisible());
    EXPECT_THAT(labels(*question), ElementsAre(u"Morvane has a question"_s, u"Choose an answer:"_s,
                                               u"Or type your own answer:"_s));
    EXPECT_EQ(text()->toPlainText(), u"Which colour?"_s);
    EXPECT_THAT(answers(), ElementsAre(option(u"Red"_s), option(u"Green"_s)));
    EXPECT_EQ(field()->placeholderText(), u"Custom answer"_s);
    ASSERT_NE(send(), nullptr);
}

TEST_F(QuestionViewTest, QuestionWithoutOptionsShowsTheTextFieldAlone)
{
    ask(u"What is your name?"_s);
    EXPECT_THAT(labels(*question), ElementsAre(u"Morvane has a question"_s));
    EXPECT_TRUE(answers().isEmpty());
    EXPECT_EQ(focus(), field());
}

TEST_F(QuestionViewTest, OptionAnswersWithItsText)
{
    auto answer = ask(u"Which?"_s, {u"One & two"_s, u"Three"_s});
    notice();
    click(option(u"One & two"_s));
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), u"One & two"_s);
    EXPECT_FALSE(question->isVisible());
}

TEST_F(QuestionViewTest, ReturnOnAnOptionAnswersWithIt)
{
    auto answer = ask(u"Which?"_s, {u"One"_s, u"Two"_s});
    notice();
    EXPECT_EQ(focus(), option(u"One"_s));
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), u"Two"_s);
}

TEST_F(QuestionViewTest, CustomAnswerIsSentTrimmed)
{
    auto answer = ask(u"Which?"_s);
    notice();
    type(u"  my way  "_s);
    click(send());
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), u"my way"_s);
}

TEST_F(QuestionViewTest, ReturnInTheFieldSendsTheCustomAnswer)
{
    auto answer = ask(u"Which?"_s, {u"One"_s});
    notice();
    field()->setFocus();
    type(u"mine"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), u"mine"_s);
}

TEST_F(QuestionViewTest, AnswerOfBlanksOnlyDoesNotCloseTheSheet)
{
    auto answer = ask(u"Which?"_s);
    notice();
    type(u"  \u00A0 "_s);
    press(Qt::Key_Return);
    click(send());
    EXPECT_FALSE(answer.done());
    EXPECT_TRUE(question->isVisible());
}

TEST_F(QuestionViewTest, EscapeLeavesTheQuestionStanding)
{
    auto answer = ask(u"Which?"_s, {u"One"_s});
    notice();
    press(Qt::Key_Escape);
    EXPECT_FALSE(answer.done());
    EXPECT_TRUE(question->isVisible());
    EXPECT_TRUE(question->isAncestorOf(focus()));
}

TEST_F(QuestionViewTest, NextQuestionBeginsWithAnEmptyField)
{
    auto first = ask(u"First?"_s, {u"One"_s});
    notice();
    field()->setFocus();
    type(u"left over"_s);
    click(option(u"One"_s));
    ASSERT_TRUE(first.done());
    ask(u"Second?"_s, {u"Two"_s});
    EXPECT_EQ(field()->text(), QString());
    EXPECT_THAT(answers(), ElementsAre(option(u"Two"_s)));
}

TEST_F(QuestionViewTest, IsAModalDialogThatAsksItsQuestion)
{
    ask(u"Which colour?"_s, {u"Red"_s});
    const auto *card = accessible(question->card());
    EXPECT_EQ(card->role(), QAccessible::Dialog);
    EXPECT_EQ(card->text(QAccessible::Name), u"Morvane asks: Which colour?"_s);
    EXPECT_TRUE(card->state().modal);
    EXPECT_EQ(accessible(option(u"Red"_s))->text(QAccessible::Name), u"Answer: Red"_s);
}

TEST_F(QuestionViewTest, TabGoesThroughOptionsFieldAndButton)
{
    ask(u"Which?"_s, {u"One"_s, u"Two"_s});
    notice();
    EXPECT_THAT(tabStops(), ElementsAre(option(u"One"_s), option(u"Two"_s), field(), send(), text()));
}

TEST_F(QuestionViewTest, LongOptionWrapsAndTellsAllOfItself)
{
    const QString longText = u"a rather long answer that goes on & on "_s.repeated(40).trimmed();
    ask(u"Which?"_s, {longText, u"<b>short</b>"_s});
    EXPECT_LE(option(longText)->width(), window->width());
    EXPECT_GT(option(longText)->height(), 2 * option(u"<b>short</b>"_s)->height());
    EXPECT_TRUE(hoverText(option(longText)).contains(longText.toHtmlEscaped()));
    EXPECT_TRUE(hoverText(option(u"<b>short</b>"_s)).isEmpty());
}

TEST_F(QuestionViewTest, HundredsOfOptionsScrollAndKeepTheSheetInTheWindow)
{
    QStringList many;
    for (int i = 0; i < 300; ++i)
        many.append(u"Option %1"_s.arg(i));
    auto answer = ask(u"Which?"_s, many);
    notice();
    ASSERT_TRUE(waitUntil([this] { return answers().size() == 300; }));
    settle();
    EXPECT_TRUE(window->rect().contains(question->card()->geometry()));
    EXPECT_TRUE(window->rect().contains(send()->mapTo(window.get(), send()->rect().bottomRight())));
    for (int i = 0; i < 299; ++i)
        press(Qt::Key_Tab);
    auto *last = option(u"Option 299"_s);
    ASSERT_EQ(focus(), last);
    EXPECT_TRUE(question->card()->rect().contains(
        last->mapTo(question->card(), last->rect().center()))); // scrolled into view
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), u"Option 299"_s);
}

TEST_F(QuestionViewTest, QuestionAndOptionsOfAMegabyteAreShownInBoundedPieces)
{
    const QString endless(1'000'000, u'x');
    auto answer = ask(endless, {endless, u"Yes"_s});
    notice();
    ASSERT_TRUE(question->isVisible());
    EXPECT_LE(question->card()->accessibleName().size(), 2 * labelLimit + 20);
    EXPECT_TRUE(question->card()->accessibleName().startsWith(u"Morvane asks: xxx"_s));
    for (const WrappingButton *button : question->findChildren<WrappingButton *>()) {
        EXPECT_LE(button->accessibleName().size(), 2 * labelLimit + 20);
        EXPECT_LE(hoverText(button).size(), 2 * labelLimit + 20);
    }
    for (QTextBlock block = text()->document()->firstBlock(); block.isValid(); block = block.next())
        ASSERT_LE(block.length(), segmentLimit + 1);
    EXPECT_TRUE(window->rect().contains(question->card()->geometry()));
    // The answer is the whole option, whatever of it is shown.
    click(answers().first());
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), endless);
}

TEST_F(QuestionViewTest, ManyLongOptionsComeInSlices)
{
    QStringList many;
    for (int i = 0; i < 100; ++i)
        many.append(QString::number(i) + QString(2'000, QChar(0x6f22)));
    MostAtOnce slices(*question);
    auto answer = ask(u"Which?"_s, many);
    EXPECT_LE(slices.most, 2);
    ASSERT_TRUE(waitUntil([this] { return answers().size() == 100; }));
    EXPECT_LE(slices.most, 2);
    notice();
    EXPECT_EQ(focus(), answers().first());
    const QList<QWidget *> buttons = answers();
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(buttons.at(i)->accessibleName().startsWith(u"Answer: %1漢"_s.arg(i)));
    press(Qt::Key_Tab);
    EXPECT_EQ(focus(), buttons.at(1));
    buttons.at(99)->setFocus();
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), many.last());
}

TEST_F(QuestionViewTest, OptionsOfAQuestionThatIsAnsweredDoNotComeLater)
{
    QStringList many;
    for (int i = 0; i < 100; ++i)
        many.append(QString(2'000, u'x'));
    auto first = scheduler.spawn(model->questions().askUserQuestion(u"Which?"_s, many));
    ASSERT_TRUE(waitUntil([this] { return question->isVisible(); }));
    const auto made = question->findChildren<QPushButton *>().size();
    ASSERT_LT(made, many.size());
    model->questions().resolveQuestion(u"none"_s);
    settle();
    EXPECT_EQ(question->findChildren<QPushButton *>().size(), made);
    auto second = ask(u"And now?"_s, {u"Yes"_s});
    settle();
    EXPECT_THAT(answers(), ElementsAre(option(u"Yes"_s)));
}

} // namespace
} // namespace morvane
