#include "LocalModelFixture.h"

#include "ui/sheets/SheetCard.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/OnboardingModelCard.h"
#include "ui/window/OnboardingView.h"

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace morvane {
namespace {

const auto skip = u"Skip local model setup. You can choose a provider in Settings later."_s;
const auto notYet = u"Get started. Wait until the local model is ready."_s;
const auto getStarted = u"Get started with the local model"_s;
const auto cancelSetup = u"Cancel the local model setup"_s;
const auto installModel = u"Install the built-in local model"_s;

class OnboardingTest : public LocalModelFixture {
protected:
    OnboardingTest() { settings->setValue(u"hasCompletedOnboarding"_s, false); }
    ~OnboardingTest() override { QApplication::setFont(m_usualFont); }

    /// The first start of the program.
    void greet()
    {
        restart();
        show();
        view = part<OnboardingView>();
        ASSERT_NE(view, nullptr);
        ASSERT_TRUE(view->isOpen());
        card = part<OnboardingModelCard>();
    }
    /// The greeting in large letters in the smallest window, long enough for the user to have seen it.
    void greetInLargeLetters()
    {
        setTextSize(20);
        restart();
        m_host = std::make_unique<QWidget>();
        m_host->resize(600, 640);
        m_host->show();
        m_host->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_host.get()));
        view = new OnboardingView(*model, m_host.get(), [this] { return m_now += AnswerGuard::quietTime; });
        card = view->findChild<OnboardingModelCard *>();
        settle();
    }
    static void setTextSize(int points)
    {
        QFont font = QApplication::font();
        font.setPointSize(points);
        QApplication::setFont(font);
    }
    void type(Qt::Key key) { QTest::keyClick(view->window()->focusWidget(), key); }
    void press(const QString &name)
    {
        QAbstractButton *pressed = button(view, name);
        ASSERT_NE(pressed, nullptr) << name.toStdString();
        pressed->click();
        settle();
    }
    /// Whether all of it is seen.
    static bool isInSight(const QWidget *part)
    {
        return part->visibleRegion().boundingRect() == part->rect();
    }
    QString focused() const { return view->window()->focusWidget()->accessibleName(); }
    bool isGreetedAgain()
    {
        model->cancelLocalModelWork(); // as its end does
        settle();
        restart();
        show();
        return part<OnboardingView>() != nullptr;
    }

    OnboardingView *view = nullptr;
    OnboardingModelCard *card = nullptr;

private:
    const QFont m_usualFont = QApplication::font();
    std::chrono::steady_clock::time_point m_now;
    std::unique_ptr<QWidget> m_host;
};

TEST_F(OnboardingTest, ANewcomerIsGreetedAndTheModelSetUpUnasked)
{
    localModel.installationTime = 1h;
    greet();
    EXPECT_TRUE(model->localModel().info().installing);
    EXPECT_THAT(
        texts(view),
        ElementsAre(u"Welcome to Morvane"_s,
                    u"A free AI agent for your Mac. Ask it to run commands, edit files, search the web, and "
                    "more. The built-in model runs entirely on your computer — no account, no limits, and "
                    "your data never leaves this Mac."_s,
                    u"Setting up the built-in local model"_s,
                    u"Morvane is setting up the built-in local model. This one-time download happens "
                    "automatically and only once."_s,
                    u"Starting"_s, u"Starting Ollama…"_s));
    EXPECT_EQ(view->card()->accessibleName(), u"Welcome to Morvane"_s);
    EXPECT_EQ(view->card()->accessibleDescription(), texts(view).at(1));
}

TEST_F(OnboardingTest, TheSetupCanBeStoppedFromItsBeginning)
{
    localModel.installationTime = 1h;
    greet();
    button(view, cancelSetup)->setFocus();
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    press(cancelSetup);
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_EQ(button(view, cancelSetup), nullptr);
    EXPECT_THAT(texts(card),
                ElementsAre(u"This downloads a small model (about 5 GB) that runs fully on your Mac."_s,
                            u"No account, no limits, and your data never leaves this Mac."_s));
    EXPECT_EQ(focused(), installModel);
    EXPECT_EQ(moves.size(), 1) << "what has the keyboard for a moment is read out";
    press(installModel);
    EXPECT_TRUE(model->localModel().info().installing);
    EXPECT_EQ(focused(), cancelSetup);
    EXPECT_EQ(moves.size(), 2);
    EXPECT_EQ(localModel.installations, 2);
}

TEST_F(OnboardingTest, ItsProgressIsShownAndTold)
{
    localModel.installationTime = 1h;
    greet();
    ASSERT_NE(bar(card), nullptr);
    EXPECT_EQ(bar(card)->accessibleName(), u"Download progress"_s);
    EXPECT_THAT(texts(card), Contains(u"Starting"_s));
    report(u"Downloading Ollama… 420 MB of 1000 MB (42%)"_s, 0.42);
    EXPECT_EQ(bar(card)->accessibleName(), u"Download progress 42%"_s);
    QAccessibleInterface *told = QAccessible::queryAccessibleInterface(bar(card));
    ASSERT_NE(told->valueInterface(), nullptr);
    EXPECT_EQ(told->valueInterface()->currentValue().toInt(), 42);
    EXPECT_EQ(told->text(QAccessible::Value), u"42 percent"_s);
    EXPECT_THAT(texts(card), Contains(u"42%"_s));
    EXPECT_THAT(texts(card), Contains(u"Downloading Ollama… 420 MB of 1000 MB (42%)"_s));
    report(u"Installing Ollama…"_s, std::nullopt);
    EXPECT_THAT(texts(card), Contains(u"Starting"_s));
    EXPECT_EQ(told->text(QAccessible::Value), QString());
    EXPECT_EQ(told->valueInterface(), nullptr);
    report(u"Downloading model… 99%"_s, 0.999); // nothing is there before it is
    EXPECT_EQ(told->text(QAccessible::Value), u"99 percent"_s);
}

TEST_F(OnboardingTest, ItBeginsWhenTheModelIsReady)
{
    localModel.installationTime = 1min;
    greet();
    QAbstractButton *start = button(view, notYet);
    ASSERT_NE(start, nullptr);
    EXPECT_FALSE(start->isEnabled());
    EXPECT_EQ(focused(), skip);
    service.willTurn(FakeAIService::Turn{}); // the request that loads the model
    clock.advance(1min);
    settle();
    EXPECT_TRUE(start->isEnabled());
    EXPECT_EQ(focused(), getStarted);
    EXPECT_THAT(texts(card), ElementsAre(u"Local model ready"_s,
                                         u"The local model is ready. You can start chatting right away."_s));
    press(getStarted);
    EXPECT_FALSE(view->isOpen());
    EXPECT_EQ(window->focusWidget(), part<ComposerEdit>());
    EXPECT_EQ(announcer.spoken.constLast(), u"Let's get started. Ask me anything."_s);
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    EXPECT_FALSE(isGreetedAgain());
}

TEST_F(OnboardingTest, TheFocusIsMovedOnceWhenTheModelIsReady)
{
    haveModel();
    greet();
    ASSERT_EQ(focused(), getStarted);
    button(view, skip)->setFocus();
    service.willTurn(FakeAIService::Turn{}); // the request that loads the model
    model->localModel().refreshLocalModel();
    settle();
    EXPECT_EQ(focused(), skip);
}

TEST_F(OnboardingTest, WhereResponsesAreNotAnnouncedItsEndIsNot)
{
    settings->setAnnounceResponses(false);
    haveModel();
    greet();
    announcer.spoken.clear();
    model->status().setStatusText(u"Local model not ready"_s);
    press(getStarted);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    settings->setValue(u"hasCompletedOnboarding"_s, false);
    service.willTurn(FakeAIService::Turn{});
    greet();
    announcer.spoken.clear();
    press(skip);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(OnboardingTest, SkippingLeavesTheSetupAsItIsAndClosesTheScreen)
{
    localModel.installationTime = 1h;
    greet();
    press(skip);
    EXPECT_FALSE(view->isOpen());
    EXPECT_TRUE(model->localModel().info().installing);
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_EQ(window->focusWidget(), part<ComposerEdit>());
    EXPECT_EQ(announcer.spoken.constLast(),
              u"Skipped local model setup. Open Settings to choose a provider."_s);
    EXPECT_FALSE(isGreetedAgain());
}

TEST_F(OnboardingTest, AFailureIsToldAndTheSetupTriedAgain)
{
    localModel.failure = u"No network."_s;
    greet();
    EXPECT_THAT(texts(card), Contains(u"Local model error: No network."_s));
    EXPECT_EQ(focused(), skip);
    localModel.failure.clear();
    localModel.installationTime = 1h;
    press(installModel);
    EXPECT_TRUE(model->localModel().info().installing);
    EXPECT_THAT(texts(card), Not(Contains(u"Local model error: No network."_s)));
}

TEST_F(OnboardingTest, AModelThatIsThereNeedsNoDownload)
{
    haveModel();
    greet();
    EXPECT_EQ(localModel.installations, 0);
    EXPECT_THAT(texts(card), Contains(u"Local model ready"_s));
    EXPECT_EQ(focused(), getStarted);
}

TEST_F(OnboardingTest, WhoeverLeavesTheProgramBeforeIsGreetedAgain)
{
    localModel.installationTime = 1h;
    greet();
    EXPECT_TRUE(isGreetedAgain());
}

TEST_F(OnboardingTest, ItStaysOpenForEscape)
{
    localModel.installationTime = 1h;
    greet();
    QTest::keyClick(window->focusWidget(), Qt::Key_Escape);
    QTest::keyClick(window->focusWidget(), Qt::Key_Escape);
    settle();
    EXPECT_TRUE(view->isOpen());
    EXPECT_TRUE(model->localModel().info().installing);
}

TEST_F(OnboardingTest, ALongErrorKeepsNoButtonOutOfSight)
{
    localModel.failure = QString(u"No network. "_s).repeated(10'000);
    greet();
    window->resize(600, 640);
    settle();
    EXPECT_TRUE(isInSight(button(view, skip)));
    EXPECT_TRUE(isInSight(button(view, installModel)));
}

TEST_F(OnboardingTest, TheWayToStopTheDownloadIsInSightHoweverLargeTheLetters)
{
    localModel.installationTime = 1h;
    greet();
    ASSERT_TRUE(card->isAncestorOf(button(view, cancelSetup))) << "in the usual size it stands at the bar";
    for (const int points : {16, 20, 26, 10}) {
        setTextSize(points);
        for (const QSize &size : {QSize(600, 640), QSize(600, 400), QSize(760, 720), QSize(1100, 800)}) {
            window->resize(size);
            settle();
            EXPECT_TRUE(isInSight(button(view, cancelSetup)))
                << points << " points, " << window->width() << " by " << window->height();
        }
    }
    EXPECT_TRUE(card->isAncestorOf(button(view, cancelSetup))) << "where it was before";
}

TEST_F(OnboardingTest, TheWayToStopTheDownloadKeepsTheFocusWhereverItStands)
{
    localModel.installationTime = 1h;
    greetInLargeLetters();
    ASSERT_FALSE(card->isAncestorOf(button(view, cancelSetup)));
    ASSERT_EQ(focused(), skip);
    type(Qt::Key_Tab);
    EXPECT_EQ(focused(), cancelSetup);
    view->window()->resize(1000, 1200);
    settle();
    ASSERT_TRUE(card->isAncestorOf(button(view, cancelSetup)));
    EXPECT_EQ(focused(), cancelSetup);
    view->window()->resize(600, 640);
    settle();
    ASSERT_FALSE(card->isAncestorOf(button(view, cancelSetup)));
    EXPECT_EQ(focused(), cancelSetup);
    press(cancelSetup);
    EXPECT_EQ(focused(), installModel);
    EXPECT_TRUE(isInSight(button(view, installModel)));
    press(installModel);
    EXPECT_EQ(focused(), cancelSetup);
    EXPECT_TRUE(isInSight(button(view, cancelSetup)));
    type(Qt::Key_Tab);
    EXPECT_EQ(focused(), skip);
}

TEST_F(OnboardingTest, TheKeyboardScrollsToTheProgress)
{
    localModel.installationTime = 1h;
    greetInLargeLetters();
    ASSERT_FALSE(isInSight(bar(card)));
    for (int page = 0; page < 10; ++page)
        type(Qt::Key_PageDown);
    EXPECT_TRUE(isInSight(bar(card)));
    for (int page = 0; page < 10; ++page)
        type(Qt::Key_PageUp);
    EXPECT_FALSE(isInSight(bar(card)));
    EXPECT_EQ(focused(), skip);
}

TEST_F(OnboardingTest, AnErrorWithoutABlankIsBrokenWithinTheCard)
{
    localModel.failure = QString(1'000, u'x');
    greet();
    EXPECT_LE(card->minimumSizeHint().width(), view->card()->width());
}

TEST_F(OnboardingTest, ProgressWithoutABlankIsBrokenWithinTheCard)
{
    localModel.installationTime = std::chrono::hours(1);
    greet();
    localModel.progress(QString(1'000, u'x'), 0.07);
    settle();
    EXPECT_LE(card->minimumSizeHint().width(), view->card()->width());
}

} // namespace
} // namespace morvane
