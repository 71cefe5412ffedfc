#include "support/AppFixture.h"

#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

using Service = FakeAIService;

class ComposerViewTest : public AppFixture {
protected:
    ComposerViewTest() : view(std::make_unique<ComposerView>(*model, model->updates()))
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

    /// Writes the next message, which has to wait, and presses the button that stands where that for sending
    /// was.
    void stopInPlaceOfSending()
    {
        EXPECT_EQ(button(u"Send message"_s), nullptr);
        edit->setPlainText(u"next"_s);
        EXPECT_FALSE(view->canSend());
        auto *stop = button(u"Stop generating"_s);
        ASSERT_NE(stop, nullptr);
        stop->click();
    }

    std::unique_ptr<ComposerView> view;
    ComposerEdit *edit = nullptr;
};

TEST_F(ComposerViewTest, FieldTellsWhatItIsFor)
{
    EXPECT_EQ(edit->accessibleName(), u"Message Morvane"_s);
    EXPECT_EQ(edit->accessibleDescription(), u"Type your message, then press Return to send it."_s);
    EXPECT_EQ(edit->placeholderText(), u"Message Morvane"_s);
}

TEST_F(ComposerViewTest, ReturnOnAnEmptyDraftDoesNothing)
{
    QTest::keyClick(edit, Qt::Key_Return);
    QTest::keyClicks(edit, u"   "_s);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), u"   "_s);
}

TEST_F(ComposerViewTest, ReturnSendsAndEmptiesTheDraft)
{
    service.willTurn(Service::answer(u"ok"_s));
    QTest::keyClicks(edit, u"hello"_s);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(view->draft(), QString());
    finishRun();
    EXPECT_EQ(model->messages().first().text, u"hello"_s);
}

TEST_F(ComposerViewTest, ShiftReturnBeginsANewLine)
{
    QTest::keyClicks(edit, u"one"_s);
    QTest::keyClick(edit, Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(edit, u"two"_s);
    EXPECT_EQ(view->draft(), u"one\ntwo"_s);
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(ComposerViewTest, ASuggestionTakesTheDraftsPlaceAndUndoingBringsItBack)
{
    const QString draft = u"look at this: "_s + QString(70'000, u'x');
    edit->setDraft(draft);
    QTest::keyClicks(edit, u" and more"_s);
    view->takeSuggestion(u"What can you do?"_s);
    EXPECT_EQ(view->draft(), u"What can you do?"_s);
    QTest::keyClick(edit, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(view->draft(), draft + u" and more"_s);
    QTest::keyClick(edit, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(view->draft(), u"What can you do?"_s);
}

TEST_F(ComposerViewTest, RefusedMessageKeepsTheDraft)
{
    updates.manifest = sampleUpdate(u"2"_s, 2);
    updates.manifest.required = true;
    runTask(scheduler, model->updates().checkForUpdates(UpdateModel::Occasion::programStart));
    edit->setPlainText(u"draft"_s);
    EXPECT_FALSE(view->canSend());
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(view->draft(), u"draft"_s);
}

TEST_F(ComposerViewTest, SendButtonSaysWhatIsMissing)
{
    auto *missing = button(u"Send message. Add a message or an attachment first."_s);
    ASSERT_NE(missing, nullptr);
    EXPECT_FALSE(missing->isEnabled());
    edit->setPlainText(u"x"_s);
    auto *send = button(u"Send message"_s);
    ASSERT_NE(send, nullptr);
    EXPECT_TRUE(send->isEnabled());
}

TEST_F(ComposerViewTest, StopTakesTheSendButtonsPlaceWhileBusy)
{
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    edit->setPlainText(u"go"_s);
    button(u"Send message"_s)->click();
    ASSERT_TRUE(model->isBusy());
    ASSERT_NO_FATAL_FAILURE(stopInPlaceOfSending());
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(view->draft(), u"next"_s);
}

TEST_F(ComposerViewTest, TheNoteTellsThatAnAnswerIsOnItsWay)
{
    const auto says = [this](const QString &text) {
        for (const QLabel *label : view->findChildren<QLabel *>())
            if (label->isVisible() && label->text() == text)
                return true;
        return false;
    };
    EXPECT_TRUE(says(u"Return to send · ⌘N for a new conversation"_s));
    neverAnswer();
    edit->setPlainText(u"go"_s);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_TRUE(says(u"Morvane is responding…"_s));
    model->cancel();
    EXPECT_TRUE(says(u"Return to send · ⌘N for a new conversation"_s));
}

TEST_F(ComposerViewTest, TheFocusDoesNotFallFromAButtonThatGoes)
{
    Service::Turn turn = Service::answer(u"ok"_s);
    turn.silence = 1h;
    service.willTurn(turn);
    edit->setPlainText(u"go"_s);
    QTest::keyClick(edit, Qt::Key_Return);
    auto *stop = button(u"Stop generating"_s);
    ASSERT_NE(stop, nullptr);
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    stop->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(stop->hasFocus());
    settle();
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    clock.advance(1h);
    finishRun();
    EXPECT_TRUE(edit->hasFocus());
    EXPECT_EQ(moves.size(), 1) << "what has the keyboard for a moment is read out";
}

TEST_F(ComposerViewTest, ARefusedMessageAndASuggestionLeadBackToTheField)
{
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    view->handleFiles({QUrl::fromLocalFile(u"/holiday.jpg"_s)}); // which the model does not see
    settle();
    edit->setPlainText(u"look"_s);
    auto *send = button(u"Send message"_s);
    ASSERT_NE(send, nullptr);
    send->setFocus(Qt::TabFocusReason);
    send->click();
    EXPECT_EQ(view->draft(), u"look"_s);
    EXPECT_TRUE(edit->hasFocus());
    send->setFocus(Qt::TabFocusReason);
    view->takeSuggestion(u"What can you do?"_s);
    EXPECT_TRUE(edit->hasFocus());
}

TEST_F(ComposerViewTest, WhatCouldNotBeAttachedIsForgottenWithTheNextMessage)
{
    attachments.failing = {u"interview.mov"_s};
    view->handleFiles({QUrl::fromLocalFile(u"/interview.mov"_s)});
    settle();
    const auto isTold = [this] {
        for (const QLabel *label : view->findChildren<QLabel *>())
            if (label->isVisible() && label->text().contains(u"interview.mov"_s))
                return true;
        return false;
    };
    EXPECT_TRUE(isTold());
    service.willTurn(Service::answer(u"ok"_s));
    edit->setPlainText(u"go"_s);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_FALSE(isTold());
    finishRun();
}

TEST_F(ComposerViewTest, AMessageThatWaitsForTheLocalModelCanBeStopped)
{
    settings->setProviderID(ProviderID::ollama);
    localModel.installationTime = 1h;
    edit->setPlainText(u"go"_s);
    button(u"Send message"_s)->click();
    settle();
    ASSERT_TRUE(model->isInstallPending());
    ASSERT_NO_FATAL_FAILURE(stopInPlaceOfSending());
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_EQ(view->draft(), u"next"_s);
    EXPECT_TRUE(view->canSend());
}

/// What is sent to a conversation that is still being opened.
class PostponedSendTest : public ComposerViewTest {
protected:
    PostponedSendTest()
    {
        ChatMessage message;
        message.id = QUuid::createUuid();
        message.text = u"saved"_s;
        store->save(saved, u"Saved"_s, {message});
        model->openConversation(saved);
        QTest::keyClicks(edit, u"hello"_s);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    const QUuid saved = QUuid::createUuid();
};

TEST_F(PostponedSendTest, WaitsInTheFieldAndGoesWhenTheConversationIsThere)
{
    EXPECT_EQ(view->draft(), u"hello"_s);
    service.willTurn(Service::answer(u"ok"_s));
    finishRun();
    EXPECT_EQ(view->draft(), QString());
    ASSERT_EQ(model->messages().size(), 3);
    EXPECT_EQ(model->messages().at(0).text, u"saved"_s);
    EXPECT_EQ(model->messages().at(1).text, u"hello"_s);
    EXPECT_EQ(model->currentConversationID(), saved);
}

TEST_F(PostponedSendTest, StaysInTheFieldWhenTheUserGoesToANewConversation)
{
    model->newConversation();
    settle();
    EXPECT_EQ(view->draft(), u"hello"_s);
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(PostponedSendTest, StaysInTheFieldWhenTheUserOpensYetAnother)
{
    model->openConversation(QUuid::createUuid());
    settle();
    EXPECT_EQ(view->draft(), u"hello"_s);
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(PostponedSendTest, StaysInTheFieldWhenTheUserWritesOn)
{
    QTest::keyClicks(edit, u" you"_s);
    settle();
    EXPECT_EQ(view->draft(), u"hello you"_s);
    EXPECT_EQ(model->messages().size(), 1);
}

TEST_F(ComposerViewTest, SuggestedPromptBecomesTheDraftAndIsNotSent)
{
    view->takeSuggestion(u"What can you do?"_s);
    EXPECT_EQ(view->draft(), u"What can you do?"_s);
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(ComposerViewTest, AKeyThatIsHeldDownSendsNothing)
{
    edit->setPlainText(u"next"_s);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, {}, true);
    QApplication::sendEvent(edit, &repeated);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(view->draft(), u"next"_s);
}

TEST_F(ComposerViewTest, AltAndReturnSendNothingEither)
{
    edit->setPlainText(u"next"_s);
    QTest::keyClick(edit, Qt::Key_Return, Qt::AltModifier);
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(ComposerViewTest, PagesWithShiftAreTheFieldsOwn)
{
    const QSignalSpy pages(view.get(), &ComposerView::pageRequested);
    edit->setPlainText(u"one\ntwo"_s);
    edit->moveCursor(QTextCursor::End);
    QTest::keyClick(edit, Qt::Key_PageUp, Qt::ShiftModifier);
    EXPECT_EQ(pages.size(), 0);
    EXPECT_TRUE(edit->textCursor().hasSelection());
    QTest::keyClick(edit, Qt::Key_PageUp);
    EXPECT_EQ(pages.size(), 1);
}

TEST_F(ComposerViewTest, TheNoteTellsOfARequiredUpdate)
{
    updates.manifest = sampleUpdate(u"2"_s, 2);
    updates.manifest.required = true;
    runTask(scheduler, model->updates().checkForUpdates(UpdateModel::Occasion::programStart));
    const auto notes = view->findChildren<QLabel *>();
    EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [](const QLabel *note) {
        return note->isVisible() &&
               note->text() == "This update is required to continue. Please update Morvane now."_L1;
    }));
}

TEST_F(ComposerViewTest, FieldGrowsWithItsTextUpToEightLines)
{
    const int one = edit->height();
    edit->setPlainText(u"1\n2\n3"_s);
    const int three = edit->height();
    edit->setPlainText(QString(8, u'\n'));
    const int many = edit->height();
    edit->setPlainText(QString(50, u'\n'));
    EXPECT_GT(three, one);
    EXPECT_GT(many, three);
    EXPECT_EQ(edit->height(), many);
}

} // namespace
} // namespace morvane
