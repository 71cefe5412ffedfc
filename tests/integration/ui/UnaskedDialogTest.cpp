#include "ui/sheets/UnaskedDialog.h"

#include "support/WaitUntil.h"

#include <QDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <chrono>
#include <gtest/gtest.h>

namespace morvane {
namespace {

/// Counts how often it became the active one.
class CountingWindow : public QWidget {
public:
    int activations = 0;

protected:
    bool event(QEvent *event) override
    {
        activations += event->type() == QEvent::WindowActivate ? 1 : 0;
        return QWidget::event(event);
    }
};

class UnaskedDialogTest : public testing::Test {
protected:
    UnaskedDialogTest()
    {
        window.show();
        window.activateWindow();
        dialog.setWindowModality(Qt::WindowModal);
    }

    static bool hasKeyboard(const QWidget &widget)
    {
        return waitUntil([&] { return widget.isActiveWindow(); });
    }
    /// As by a press beside its dialog.
    bool comesBackToTheWindow()
    {
        const int before = window.activations;
        window.activateWindow();
        return waitUntil([&] { return window.activations > before; });
    }

    CountingWindow window;
    QDialog dialog{&window};
};

TEST_F(UnaskedDialogTest, WhoeverComesBackToItsWindowIsLedToTheDialog)
{
    ASSERT_TRUE(hasKeyboard(window));
    EXPECT_FALSE(openUnasked(dialog));
    ASSERT_TRUE(hasKeyboard(dialog));
    ASSERT_TRUE(comesBackToTheWindow());
    EXPECT_TRUE(hasKeyboard(dialog));
}

TEST_F(UnaskedDialogTest, WhereTheDialogAsksInItsTurnThatQuestionGetsTheKeyboard)
{
    ASSERT_TRUE(hasKeyboard(window));
    openUnasked(dialog);
    QDialog question(&dialog);
    question.open();
    ASSERT_TRUE(hasKeyboard(question));
    ASSERT_TRUE(comesBackToTheWindow());
    EXPECT_TRUE(hasKeyboard(question));
}

TEST_F(UnaskedDialogTest, OfSeveralTheNewestGetsTheKeyboard)
{
    ASSERT_TRUE(hasKeyboard(window));
    openUnasked(dialog);
    QDialog newest(&window);
    newest.setWindowModality(Qt::WindowModal);
    openUnasked(newest);
    ASSERT_TRUE(hasKeyboard(newest));
    ASSERT_TRUE(comesBackToTheWindow());
    QCoreApplication::processEvents(); // whoever leads on has done so
    EXPECT_TRUE(newest.isActiveWindow());
    newest.hide();
    ASSERT_TRUE(comesBackToTheWindow());
    EXPECT_TRUE(hasKeyboard(dialog));
}

TEST_F(UnaskedDialogTest, AnOlderModalOneIsAnsweredBeforeOneThatItHolds)
{
    ASSERT_TRUE(hasKeyboard(window));
    openUnasked(dialog);
    ASSERT_TRUE(hasKeyboard(dialog));
    QWidget elsewhere;
    elsewhere.show();
    elsewhere.activateWindow();
    ASSERT_TRUE(hasKeyboard(elsewhere));
    QDialog newest(&window);
    ASSERT_TRUE(openUnasked(newest));
    QTest::keyClick(newest.windowHandle(), Qt::Key_Escape);
    ASSERT_TRUE(newest.isVisible()) << "it is not held";
    ASSERT_TRUE(comesBackToTheWindow());
    EXPECT_TRUE(hasKeyboard(dialog));
    dialog.hide();
    window.activateWindow();
    EXPECT_TRUE(hasKeyboard(newest));
    QTest::keyClick(newest.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(newest.isVisible());
}

TEST_F(UnaskedDialogTest, AKeyOfAButtonWaitsForThePauseToo)
{
    QPushButton button("&Save", &dialog);
    const QSignalSpy presses(&button, &QPushButton::pressed);
    std::chrono::steady_clock::time_point now{};
    guardAnswers(dialog, [&now] { return now; });
    dialog.open();
    dialog.activateWindow();
    ASSERT_TRUE(hasKeyboard(dialog));
    QTest::keyClick(&button, Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(presses.size(), 0);
    now += AnswerGuard::quietTime;
    QTest::keyClick(&button, Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(presses.size(), 1);
}

} // namespace
} // namespace morvane
