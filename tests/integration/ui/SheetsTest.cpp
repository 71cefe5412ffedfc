#include "SheetsFixture.h"

#include "ui/sheets/LongTextField.h"
#include "ui/sheets/PermissionView.h"
#include "ui/sheets/QuestionView.h"
#include "ui/sheets/SheetCard.h"

#include <QAction>
#include <QMenuBar>
#include <QShortcut>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// What both sheets share: how they hold the window.
class SheetsTest : public SheetsFixture {};

TEST_F(SheetsTest, FocusGoesIntoTheSheetAndBack)
{
    ASSERT_EQ(focus(), draft);
    requestWrite();
    EXPECT_TRUE(permission->isAncestorOf(focus()));
    notice();
    press(Qt::Key_Escape);
    EXPECT_EQ(focus(), draft);
    EXPECT_TRUE(draft->isEnabled());
}

TEST_F(SheetsTest, FocusFallsOnAnotherPartWhenTheOldOneIsGone)
{
    requestWrite();
    delete draft;
    notice();
    press(Qt::Key_Escape);
    EXPECT_EQ(focus(), behind);
}

TEST_F(SheetsTest, NothingBehindCanBeClicked)
{
    requestWrite();
    notice();
    click(behind);
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(3, 3));
    QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(3, 3));
    EXPECT_EQ(pressedBehind, 0);
    EXPECT_TRUE(permission->isOpen());
    EXPECT_TRUE(permission->isAncestorOf(focus()));
}

TEST_F(SheetsTest, AssistiveTechnologyReadsWhatLiesBehindAsItIs)
{
    requestWrite();
    EXPECT_FALSE(accessible(behind)->state().disabled);
    EXPECT_FALSE(accessible(draft)->state().disabled);
    EXPECT_TRUE(accessible(draft)->state().editable);
    EXPECT_TRUE(window->centralWidget()->isEnabled());
}

TEST_F(SheetsTest, NothingBehindTakesTheFocusByItself)
{
    requestWrite();
    QWidget *const first = focus();
    ASSERT_TRUE(permission->isAncestorOf(first));
    draft->setFocus();
    EXPECT_EQ(focus(), first);
    accessible(behind)->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_EQ(focus(), first);
    notice();
    type(u"abc"_s);
    EXPECT_EQ(draft->toPlainText(), QString());
}

TEST_F(SheetsTest, WhatLiesBehindIsHeld)
{
    EXPECT_FALSE(Sheet::holds(*behind));
    requestWrite();
    EXPECT_TRUE(Sheet::holds(*behind));
    EXPECT_TRUE(Sheet::holds(*draft));
    EXPECT_FALSE(Sheet::holds(*named<QPushButton>(u"Allow the action"_s)));
    EXPECT_FALSE(Sheet::holds(*window->menuBar()));
    notice();
    press(Qt::Key_Escape);
    EXPECT_FALSE(Sheet::holds(*behind));
}

TEST_F(SheetsTest, AMenuOfTheWindowBelowDoesNotTakeTheAnswer)
{
    int chosen = 0;
    QMenu menu(behind);
    QMenu *further = menu.addMenu(u"Further"_s);
    further->addAction(u"Delete"_s, [&chosen] { ++chosen; });
    menu.popup(window->mapToGlobal(QPoint(5, 5)));
    menu.setActiveAction(menu.actions().constFirst());
    further->popup(window->mapToGlobal(QPoint(50, 5)));
    further->setActiveAction(further->actions().constFirst());
    ASSERT_EQ(QApplication::activePopupWidget(), further);
    requestWrite();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EXPECT_TRUE(permission->isAncestorOf(window->focusWidget()));
    notice();
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, 0);
    EXPECT_FALSE(permission->isOpen());
}

TEST_F(SheetsTest, AMenuOfAnotherWindowStaysOpen)
{
    QWidget other;
    other.show();
    QMenu menu(&other);
    menu.addAction(u"Copy"_s);
    menu.popup(other.mapToGlobal(QPoint(5, 5)));
    requestWrite();
    EXPECT_TRUE(menu.isVisible());
}

TEST_F(SheetsTest, TheFocusComesBackToAnotherPartWhenTheOneThatHadItIsGone)
{
    requestWrite();
    QWidget *const first = focus();
    notice();
    press(Qt::Key_Tab);
    ASSERT_NE(focus(), first);
    focus()->hide();
    draft->setFocus();
    EXPECT_TRUE(permission->isAncestorOf(focus()));
    EXPECT_TRUE(focus()->isVisible());
}

TEST_F(SheetsTest, TabGoesRoundWithinTheSheetInBothDirections)
{
    requestWrite();
    notice();
    const QList<QWidget *> stops = tabStops();
    EXPECT_GE(stops.size(), 4);
    for (const QWidget *stop : stops)
        EXPECT_TRUE(permission->isAncestorOf(stop));
    for (qsizetype i = stops.size() - 1; i >= 0; --i) {
        press(Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_EQ(focus(), stops.at(i));
    }
}

TEST_F(SheetsTest, ShortcutsOfWhatLiesBehindDoNothing)
{
    int used = 0;
    QObject::connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_B), window->centralWidget()),
                     &QShortcut::activated, window.get(), [&used] { ++used; });
    auto *action = new QAction(behind);
    action->setShortcut(Qt::CTRL | Qt::Key_D);
    behind->addAction(action);
    QObject::connect(action, &QAction::triggered, window.get(), [&used] { ++used; });
    behind->setText(u"&Behind"_s);
    const auto pressAll = [this] {
        press(Qt::Key_B, Qt::ControlModifier);
        press(Qt::Key_D, Qt::ControlModifier);
        press(Qt::Key_B, Qt::AltModifier);
    };
    requestWrite();
    notice();
    pressAll();
    EXPECT_EQ(used + pressedBehind, 0);
    press(Qt::Key_Escape);
    pressAll();
    EXPECT_TRUE(waitUntil([&] { return used == 2 && pressedBehind == 1; })) << used << ' ' << pressedBehind;
}

TEST_F(SheetsTest, WhatWasDisabledBeforeStaysDisabledAfterwards)
{
    window->centralWidget()->setEnabled(false);
    requestWrite();
    notice();
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->centralWidget()->isEnabled());
}

TEST_F(SheetsTest, CommandsOfTheMenuStayAtHand)
{
    int used = 0;
    QMenu *menu = window->menuBar()->addMenu(u"Program"_s);
    menu->addAction(u"New Conversation"_s, QKeySequence(Qt::CTRL | Qt::Key_N), [&used] { ++used; });
    requestWrite();
    notice();
    press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(used, 1);
}

TEST_F(SheetsTest, WhatWasAnsweredIsForgotten)
{
    const auto isForgotten = [](const QWidget &sheet) {
        const auto *field = sheet.findChild<LongTextField *>();
        return waitUntil([field] { return field->document()->isEmpty(); });
    };
    requestCommand(u"ls\n"_s.repeated(10'000));
    EXPECT_FALSE(permission->findChild<LongTextField *>()->document()->isEmpty());
    notice();
    press(Qt::Key_Escape);
    EXPECT_TRUE(isForgotten(*permission));
    ask(u"Which of these?\n"_s.repeated(10'000), {u"One"_s});
    notice();
    press(Qt::Key_Return);
    EXPECT_TRUE(isForgotten(*question));
}

TEST_F(SheetsTest, ASheetHasItsHeightBeforeItHasAllOfItsText)
{
    struct Sizes : QObject {
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() == QEvent::Paint)
                painted.append(static_cast<QWidget *>(watched)->size());
            return false;
        }
        QList<QSize> painted;
    } sizes;
    permission->card()->installEventFilter(&sizes);
    requestCommand(u"b\u05d0"_s.repeated(5'000));
    const auto *field = permission->findChild<LongTextField *>();
    EXPECT_TRUE(waitUntil([&] { return field->isComplete() && !sizes.painted.isEmpty(); }));
    settle();
    for (const QSize &size : sizes.painted)
        EXPECT_EQ(size, permission->card()->size());
}

TEST_F(SheetsTest, FollowsTheSizeOfTheWindow)
{
    requestWrite();
    for (const QSize size : {QSize(1400, 900), QSize(600, 640), QSize(420, 300)}) {
        window->resize(size);
        settle();
        EXPECT_EQ(permission->geometry(), window->rect());
        EXPECT_TRUE(window->rect().contains(permission->card()->geometry()));
        EXPECT_NEAR(permission->card()->geometry().center().x(), window->rect().center().x(), 1);
    }
}

TEST_F(SheetsTest, SizeTakenWhileItWasClosedIsRight)
{
    window->resize(1000, 800);
    settle();
    requestWrite();
    EXPECT_EQ(permission->geometry(), window->rect());
}

TEST_F(SheetsTest, SheetAboveAnotherTakesTheInputAndGivesItBack)
{
    auto answer = ask(u"Which?"_s, {u"One"_s});
    auto allowed = requestWrite();
    notice();
    EXPECT_TRUE(permission->isAncestorOf(focus()));
    EXPECT_FALSE(question->isOnTop());
    named<QPushButton>(u"Answer: One"_s)->setFocus();
    EXPECT_TRUE(permission->isAncestorOf(focus()));
    press(Qt::Key_Return);
    EXPECT_TRUE(allowed.done());
    EXPECT_FALSE(answer.done());
    EXPECT_TRUE(question->isOnTop());
    EXPECT_TRUE(question->isAncestorOf(focus()));
    draft->setFocus();
    EXPECT_TRUE(question->isAncestorOf(focus()));
    press(Qt::Key_Return);
    EXPECT_TRUE(answer.done());
    EXPECT_EQ(focus(), draft);
}

TEST_F(SheetsTest, SheetBelowAnotherMayCloseFirst)
{
    ask(u"Which?"_s, {u"One"_s});
    requestWrite();
    notice();
    model->questions().resolveQuestion(u"One"_s);
    draft->setFocus();
    EXPECT_TRUE(permission->isAncestorOf(focus()));
    press(Qt::Key_Escape);
    EXPECT_EQ(focus(), draft);
}

TEST_F(SheetsTest, WhatLiesBelowIsHeldUntilTheLastOfTwoSheetsCloses)
{
    ask(u"Which?"_s, {u"One"_s});
    requestWrite();
    EXPECT_TRUE(Sheet::holds(*behind));
    EXPECT_TRUE(Sheet::holds(*named<QPushButton>(u"Answer: One"_s)));
    named<QPushButton>(u"Deny the action"_s)->click();
    EXPECT_TRUE(waitUntil([this] { return !permission->isOpen(); }));
    EXPECT_TRUE(Sheet::holds(*behind));
    EXPECT_FALSE(Sheet::holds(*named<QPushButton>(u"Answer: One"_s)));
    named<QPushButton>(u"Answer: One"_s)->click();
    EXPECT_TRUE(waitUntil([this] { return !question->isOpen(); }));
    EXPECT_FALSE(Sheet::holds(*behind));
}

TEST_F(SheetsTest, WhatLiesBelowStaysHeldWhereTheLowerOfTwoSheetsClosesFirst)
{
    ask(u"Which?"_s, {u"One"_s});
    requestWrite();
    model->questions().resolveQuestion(u"One"_s);
    EXPECT_TRUE(waitUntil([this] { return !question->isOpen(); }));
    EXPECT_TRUE(Sheet::holds(*behind));
    model->gate().resolvePermission(false, false);
    EXPECT_TRUE(waitUntil([this] { return !permission->isOpen(); }));
    EXPECT_FALSE(Sheet::holds(*behind));
}

} // namespace
} // namespace morvane
