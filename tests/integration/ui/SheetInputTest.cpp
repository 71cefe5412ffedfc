#include "SheetsFixture.h"

#include "ui/sheets/AnswerGuard.h"

#include <QShortcut>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// What both sheets take as an answer, and what not.
class SheetInputTest : public SheetsFixture {
protected:
    void sendKey(QEvent::Type type, Qt::Key key, bool isAutoRepeat)
    {
        QKeyEvent event(type, key, Qt::NoModifier, QString(), isAutoRepeat);
        QApplication::sendEvent(focus(), &event);
        settle();
    }
};

TEST_F(SheetInputTest, EscapeAndReturnDoNotReachShortcutsOfTheWindow)
{
    int used = 0;
    for (const auto key : {Qt::Key_Escape, Qt::Key_Return})
        QObject::connect(new QShortcut(QKeySequence(key), window.get()), &QShortcut::activated, window.get(),
                         [&used] { ++used; });
    auto first = requestWrite();
    notice();
    press(Qt::Key_Escape);
    auto second = requestWrite();
    notice();
    press(Qt::Key_Return);
    EXPECT_EQ(used, 0);
    ASSERT_TRUE(first.done() && second.done());
    EXPECT_FALSE(first.result());
    EXPECT_TRUE(second.result());
}

TEST_F(SheetInputTest, ReturnTypedWhileTheSheetComesUpDoesNotAnswer)
{
    auto answer = requestWrite();
    press(Qt::Key_Return);
    press(Qt::Key_Escape);
    press(Qt::Key_Space);
    EXPECT_FALSE(answer.done());
}

TEST_F(SheetInputTest, TypingThatRunsOnDoesNotAnswer)
{
    auto answer = requestWrite();
    for (int i = 0; i < 20; ++i) {
        now += 120ms;
        type(u"a"_s);
    }
    now += 120ms;
    press(Qt::Key_Return);
    EXPECT_FALSE(answer.done());
    now += AnswerGuard::quietTime;
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    EXPECT_TRUE(answer.result());
}

TEST_F(SheetInputTest, KeyHeldDownSinceBeforeDoesNotAnswer)
{
    auto answer = requestWrite();
    notice();
    for (int i = 0; i < 5; ++i) {
        sendKey(QEvent::KeyPress, Qt::Key_Return, true);
        sendKey(QEvent::KeyPress, Qt::Key_Escape, true);
    }
    EXPECT_FALSE(answer.done());
    sendKey(QEvent::KeyRelease, Qt::Key_Return, false);
    press(Qt::Key_Return);
    EXPECT_TRUE(answer.done());
}

TEST_F(SheetInputTest, SecondReturnDoesNotAnswerTheNextRequest)
{
    auto first = requestWrite();
    notice();
    press(Qt::Key_Return);
    ASSERT_TRUE(first.done());
    auto second = requestWrite();
    now += 100ms;
    press(Qt::Key_Return);
    EXPECT_FALSE(second.done());
}

TEST_F(SheetInputTest, TheSecondPressOfAnImpatientAnswerDoesNotReachTheWindow)
{
    int stopped = 0;
    QObject::connect(new QShortcut(QKeySequence(Qt::Key_Escape), window.get()), &QShortcut::activated,
                     window.get(), [&stopped] { ++stopped; });
    for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
        auto answer = requestWrite();
        notice();
        for (int presses = 0; presses < 3; ++presses) {
            press(key);
            now += 150ms;
        }
        EXPECT_TRUE(answer.done());
    }
    EXPECT_EQ(focus(), draft);
    EXPECT_EQ(draft->toPlainText(), QString());
    EXPECT_EQ(stopped, 0);
    notice();
    press(Qt::Key_Escape);
    press(Qt::Key_Return);
    EXPECT_EQ(draft->toPlainText(), u"\n"_s);
    EXPECT_EQ(stopped, 1);
}

TEST_F(SheetInputTest, WhatIsTypedAfterAnAnswerIsTakenAtOnce)
{
    auto answer = requestWrite();
    notice();
    press(Qt::Key_Return);
    ASSERT_TRUE(answer.done());
    type(u"a"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(draft->toPlainText(), u"a\n"_s);
}

TEST_F(SheetInputTest, TheSecondClickOfAnAnswerDoesNotReachTheWindow)
{
    auto answer = requestWrite();
    notice();
    click(named<QPushButton>(u"Allow the action"_s));
    ASSERT_TRUE(answer.done());
    now += 200ms;
    click(behind);
    EXPECT_EQ(pressedBehind, 0);
    notice();
    click(behind);
    EXPECT_EQ(pressedBehind, 1);
}

TEST_F(SheetInputTest, AfterAnAnswerByAssistiveTechnologyTheKeyboardIsFree)
{
    auto answer = requestWrite();
    notice();
    accessible(named<QPushButton>(u"Allow the action"_s))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(waitUntil([&answer] { return answer.done(); }));
    press(Qt::Key_Return);
    EXPECT_EQ(draft->toPlainText(), u"\n"_s);
}

TEST_F(SheetInputTest, ReturnWithAModifierDoesNotAnswer)
{
    auto answer = requestWrite();
    notice();
    press(Qt::Key_Return, Qt::ShiftModifier);
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_FALSE(answer.done());
}

TEST_F(SheetInputTest, SecondClickOfADoubleClickDoesNotAnswer)
{
    auto answer = requestWrite();
    now += 200ms;
    click(named<QPushButton>(u"Allow the action"_s));
    EXPECT_FALSE(answer.done());
}

TEST_F(SheetInputTest, AssistiveTechnologyAnswersAtOnce)
{
    auto answer = requestWrite();
    accessible(named<QPushButton>(u"Allow the action"_s))
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(waitUntil([&answer] { return answer.done(); }));
    EXPECT_TRUE(answer.result());
}

TEST_F(SheetInputTest, LettersTypedWhileAQuestionComesUpDoNotLandInTheAnswer)
{
    ask(u"Which?"_s);
    now += 100ms;
    type(u"abc"_s);
    auto *field = named<QLineEdit>(u"Your answer"_s);
    EXPECT_EQ(field->text(), QString());
    notice();
    type(u"def"_s);
    EXPECT_EQ(field->text(), u"def"_s);
}

} // namespace
} // namespace morvane
