#include "support/AppFixture.h"

#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"

#include <QTest>
#include <QToolButton>

using namespace std::chrono_literals;

namespace morvane {
namespace {

using Service = FakeAIService;

class ComposerViewTest : public AppFixture {
protected:
    ComposerViewTest() : view(std::make_unique<ComposerView>(*model))
    {
        view->show();
        edit = view->findChild<ComposerEdit *>();
    }
    ~ComposerViewTest() override { view.reset(); }

    QToolButton *button(const QString &accessibleName) const
    {
        for (auto *candidate : view->findChildren<QToolButton *>())
            if (candidate->isVisible() && candidate->accessibleName() == accessibleName)
                return candidate;
        return nullptr;
    }

    std::unique_ptr<ComposerView> view;
    ComposerEdit *edit = nullptr;
};

TEST_F(ComposerViewTest, FieldTellsWhatItIsFor)
{
    EXPECT_EQ(edit->accessibleName(), QStringLiteral("Message Morvane"));
    EXPECT_EQ(edit->accessibleDescription(),
              QStringLiteral("Type your message, then press Return to send it."));
    EXPECT_EQ(edit->placeholderText(), QStringLiteral("Message Morvane"));
}

TEST_F(ComposerViewTest, ReturnOnAnEmptyDraftDoesNothing)
{
    QTest::keyClick(edit, Qt::Key_Return);
    QTest::keyClicks(edit, QStringLiteral("   "));
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), QStringLiteral("   "));
}

TEST_F(ComposerViewTest, ReturnSendsAndEmptiesTheDraft)
{
    service.willTurn(Service::answer(QStringLiteral("ok")));
    QTest::keyClicks(edit, QStringLiteral("hello"));
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(view->draft(), QString());
    finishRun();
    EXPECT_EQ(model->messages().first().text, QStringLiteral("hello"));
}

TEST_F(ComposerViewTest, ShiftReturnBeginsANewLine)
{
    QTest::keyClicks(edit, QStringLiteral("one"));
    QTest::keyClick(edit, Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(edit, QStringLiteral("two"));
    EXPECT_EQ(view->draft(), QStringLiteral("one\ntwo"));
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(ComposerViewTest, RefusedMessageKeepsTheDraft)
{
    updates.update = UpdateInfo{QStringLiteral("2"), 2};
    updates.required = true;
    edit->setPlainText(QStringLiteral("draft"));
    EXPECT_FALSE(view->canSend());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(view->draft(), QStringLiteral("draft"));
}

TEST_F(ComposerViewTest, SendButtonSaysWhatIsMissing)
{
    auto *missing = button(QStringLiteral("Send message. Add a message or an attachment first."));
    ASSERT_NE(missing, nullptr);
    EXPECT_FALSE(missing->isEnabled());
    edit->setPlainText(QStringLiteral("x"));
    auto *send = button(QStringLiteral("Send message"));
    ASSERT_NE(send, nullptr);
    EXPECT_TRUE(send->isEnabled());
}

TEST_F(ComposerViewTest, StopTakesTheSendButtonsPlaceWhileBusy)
{
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    edit->setPlainText(QStringLiteral("go"));
    button(QStringLiteral("Send message"))->click();
    ASSERT_TRUE(model->isBusy());
    EXPECT_EQ(button(QStringLiteral("Send message")), nullptr);
    edit->setPlainText(QStringLiteral("next"));
    EXPECT_FALSE(view->canSend());
    auto *stop = button(QStringLiteral("Stop generating"));
    ASSERT_NE(stop, nullptr);
    stop->click();
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(view->draft(), QStringLiteral("next"));
}

TEST_F(ComposerViewTest, SuggestedPromptBecomesTheDraftAndIsNotSent)
{
    model->suggestPrompt(QStringLiteral("What can you do?"));
    EXPECT_EQ(view->draft(), QStringLiteral("What can you do?"));
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(ComposerViewTest, FieldGrowsWithItsTextUpToEightLines)
{
    const int one = edit->height();
    edit->setPlainText(QStringLiteral("1\n2\n3"));
    const int three = edit->height();
    edit->setPlainText(QString(8, QLatin1Char('\n')));
    const int many = edit->height();
    edit->setPlainText(QString(50, QLatin1Char('\n')));
    EXPECT_GT(three, one);
    EXPECT_GT(many, three);
    EXPECT_EQ(edit->height(), many);
}

} // namespace
} // namespace morvane
