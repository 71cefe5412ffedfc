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

TEST(UnaskedDialogTest, WhoeverComesBackToItsWindowIsLedToTheDialog)
{
    CountingWindow window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QDialog dialog(&window);
    dialog.setWindowModality(Qt::WindowModal);
    EXPECT_FALSE(openUnasked(dialog));
    ASSERT_TRUE(waitUntil([&] { return dialog.isActiveWindow(); }));
    const int before = window.activations;
    window.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return window.activations > before; }));
    EXPECT_TRUE(waitUntil([&] { return dialog.isActiveWindow(); }));
}

TEST(UnaskedDialogTest, WhereTheDialogAsksInItsTurnThatQuestionGetsTheKeyboard)
{
    CountingWindow window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QDialog dialog(&window);
    dialog.setWindowModality(Qt::WindowModal);
    openUnasked(dialog);
    QDialog question(&dialog);
    question.open();
    ASSERT_TRUE(waitUntil([&] { return question.isActiveWindow(); }));
    const int before = window.activations;
    window.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return window.activations > before; }));
    EXPECT_TRUE(waitUntil([&] { return question.isActiveWindow(); }));
}

TEST(UnaskedDialogTest, AKeyOfAButtonWaitsForThePauseToo)
{
    QWidget window;
    window.show();
    QDialog dialog(&window);
    QPushButton button("&Save", &dialog);
    const QSignalSpy presses(&button, &QPushButton::pressed);
    std::chrono::steady_clock::time_point now{};
    guardAnswers(dialog, [&now] { return now; });
    dialog.open();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(&button, Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(presses.size(), 0);
    now += AnswerGuard::quietTime;
    QTest::keyClick(&button, Qt::Key_S, Qt::AltModifier);
    EXPECT_EQ(presses.size(), 1);
}

} // namespace
} // namespace morvane
