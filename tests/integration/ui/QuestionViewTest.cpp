#include "SheetsFixture.h"

#include "ui/sheets/QuestionView.h"
#include "ui/sheets/SheetCard.h"

namespace morvane {
namespace {

using testing::ElementsAre;

class QuestionViewTest : public SheetsFixture {
protected:
    QLineEdit *field() const { return named<QLineEdit>(QStringLiteral("Your answer")); }
    QPushButton *send() const { return named<QPushButton>(QStringLiteral("Send your custom answer")); }
    QPushButton *option(const QString &text) const
    {
        return named<QPushButton>(QStringLiteral("Answer: ") + text);
    }
    QPlainTextEdit *text() const { return named<QPlainTextEdit>(QStringLiteral("Question")); }
    QList<QWidget *> answers() const
    {
        QList<QWidget *> found;
        for (QPushButton *button : question->findChildren<QPushButton *>())
            if (button->isVisible() && button->accessibleName().startsWith(QStringLiteral("Answer: ")))
                found.append(button);
        return found;
    }
};

TEST_F(QuestionViewTest, ShowsTheQuestionAndItsOptionsInOrder)
{
    ask(QStringLiteral("Which colour?"), {QStringLiteral("Red"), QStringLiteral("Green")});
    ASSERT_TRUE(question->isVisible());
    EXPECT_THAT(labels(*question),
                ElementsAre(QStringLiteral("Morvane has a question"), QStringLiteral("Choose an answer:"),
                            QStringLiteral("Or type your own answer:")));
    EXPECT_EQ(text()->toPlainText(), QStringLiteral("Which colour?"));
    EXPECT_THAT(answers(), ElementsAre(option(QStringLiteral("Red")), option(QStringLiteral("Green"))));
    EXPECT_EQ(field()->placeholderText(), QStringLiteral("Custom answer"));
    ASSERT_NE(send(), nullptr);
}

TEST_F(QuestionViewTest, QuestionWithoutOptionsShowsTheTextFieldAlone)
{
    ask(QStringLiteral("What is your name?"));
    EXPECT_THAT(labels(*question), ElementsAre(QStringLiteral("Morvane has a question")));
    EXPECT_TRUE(answers().isEmpty());
    EXPECT_EQ(focus(), field());
}

TEST_F(QuestionViewTest, OptionAnswersWithItsText)
{
    auto answer = ask(QStringLiteral("Which?"), {QStringLiteral("One & two"), QStringLiteral("Three")});
    notice();
    click(option(QStringLiteral("One & two")));
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), QStringLiteral("One & two"));
    EXPECT_FALSE(question->isVisible());
}

TEST_F(QuestionViewTest, ReturnOnAnOptionAnswersWithIt)
{
    auto answer = ask(QStringLiteral("Which?"), {QStringLiteral("One"), QStringLiteral("Two")});
    notice();
    EXPECT_EQ(focus(), option(QStringLiteral("One")));
    press(Qt::Key_Tab);
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), QStringLiteral("Two"));
}

TEST_F(QuestionViewTest, CustomAnswerIsSentTrimmed)
{
    auto answer = ask(QStringLiteral("Which?"));
    notice();
    type(QStringLiteral("  my way  "));
    click(send());
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), QStringLiteral("my way"));
}

TEST_F(QuestionViewTest, ReturnInTheFieldSendsTheCustomAnswer)
{
    auto answer = ask(QStringLiteral("Which?"), {QStringLiteral("One")});
    notice();
    field()->setFocus();
    type(QStringLiteral("mine"));
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), QStringLiteral("mine"));
}

TEST_F(QuestionViewTest, AnswerOfBlanksOnlyDoesNotCloseTheSheet)
{
    auto answer = ask(QStringLiteral("Which?"));
    notice();
    type(QStringLiteral("  \u00A0 "));
    press(Qt::Key_Return);
    click(send());
    EXPECT_FALSE(answer.done());
    EXPECT_TRUE(question->isVisible());
}

TEST_F(QuestionViewTest, EscapeLeavesTheQuestionStanding)
{
    auto answer = ask(QStringLiteral("Which?"), {QStringLiteral("One")});
    notice();
    press(Qt::Key_Escape);
    EXPECT_FALSE(answer.done());
    EXPECT_TRUE(question->isVisible());
    EXPECT_TRUE(question->isAncestorOf(focus()));
}

TEST_F(QuestionViewTest, NextQuestionBeginsWithAnEmptyField)
{
    auto first = ask(QStringLiteral("First?"), {QStringLiteral("One")});
    notice();
    field()->setFocus();
    type(QStringLiteral("left over"));
    click(option(QStringLiteral("One")));
    ASSERT_TRUE(first.done());
    ask(QStringLiteral("Second?"), {QStringLiteral("Two")});
    EXPECT_EQ(field()->text(), QString());
    EXPECT_THAT(answers(), ElementsAre(option(QStringLiteral("Two"))));
}

TEST_F(QuestionViewTest, IsAModalDialogThatAsksItsQuestion)
{
    ask(QStringLiteral("Which colour?"), {QStringLiteral("Red")});
    const auto *card = accessible(question->card());
    EXPECT_EQ(card->role(), QAccessible::Dialog);
    EXPECT_EQ(card->text(QAccessible::Name), QStringLiteral("Morvane asks: Which colour?"));
    EXPECT_TRUE(card->state().modal);
    EXPECT_EQ(accessible(option(QStringLiteral("Red")))->text(QAccessible::Name),
              QStringLiteral("Answer: Red"));
}

TEST_F(QuestionViewTest, TabGoesThroughOptionsFieldAndButton)
{
    ask(QStringLiteral("Which?"), {QStringLiteral("One"), QStringLiteral("Two")});
    notice();
    EXPECT_THAT(tabStops(), ElementsAre(option(QStringLiteral("One")), option(QStringLiteral("Two")), field(),
                                        send(), text()));
}

TEST_F(QuestionViewTest, LongOptionWrapsAndTellsAllOfItself)
{
    const QString longText = QStringLiteral("a rather long answer that goes on & on ").repeated(40).trimmed();
    ask(QStringLiteral("Which?"), {longText, QStringLiteral("<b>short</b>")});
    EXPECT_LE(option(longText)->width(), window->width());
    EXPECT_GT(option(longText)->height(), 2 * option(QStringLiteral("<b>short</b>"))->height());
    EXPECT_TRUE(option(longText)->toolTip().contains(longText.toHtmlEscaped()));
    EXPECT_TRUE(option(QStringLiteral("<b>short</b>"))->toolTip().isEmpty());
}

TEST_F(QuestionViewTest, HundredsOfOptionsScrollAndKeepTheSheetInTheWindow)
{
    QStringList many;
    for (int i = 0; i < 300; ++i)
        many.append(QStringLiteral("Option %1").arg(i));
    auto answer = ask(QStringLiteral("Which?"), many);
    notice();
    EXPECT_EQ(answers().size(), 300);
    EXPECT_TRUE(window->rect().contains(question->card()->geometry()));
    EXPECT_TRUE(window->rect().contains(send()->mapTo(window.get(), send()->rect().bottomRight())));
    for (int i = 0; i < 299; ++i)
        press(Qt::Key_Tab);
    auto *last = option(QStringLiteral("Option 299"));
    ASSERT_EQ(focus(), last);
    EXPECT_TRUE(question->card()->rect().contains(
        last->mapTo(question->card(), last->rect().center()))); // scrolled into view
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_EQ(answer.result(), QStringLiteral("Option 299"));
}

} // namespace
} // namespace morvane
