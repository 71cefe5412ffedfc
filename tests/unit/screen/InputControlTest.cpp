#include "ScreenFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using InputControlTest = ScreenFixture;

const QString noPermission =
    u"Error: Morvane needs Accessibility permission to control your Mac. Open System Settings, Privacy and "
    "Security, Accessibility, and enable Morvane, then try again."_s;

TEST_F(InputControlTest, AClickLooksWarpsMovesAndPresses)
{
    EXPECT_EQ(run(m_tools.clickAt({120, -7})), u"Clicked at (120, -7)."_s);
    EXPECT_THAT(events(),
                ElementsAre(u"look at 120,-7"_s, u"warp 120,-7"_s, u"sleep 30"_s, u"moved 120,-7"_s,
                            u"sleep 20"_s, u"left down 120,-7"_s, u"sleep 80"_s, u"left up 120,-7"_s));
}

TEST_F(InputControlTest, AClickTellsWhatItHitWithFortyCharactersOfItsLabel)
{
    m_desktop.elements->underPointer =
        ScreenElement{u"AXButton"_s, true, {}, QString(41, u'x'), {}, {}, false, {}};
    EXPECT_EQ(run(m_tools.clickAt({1, 2})), u"Clicked at (1, 2) on button '"_s + QString(40, u'x') + u"'."_s);
}

TEST_F(InputControlTest, WhatAClickHitIsToldInOneLine)
{
    m_desktop.elements->underPointer =
        ScreenElement{u"AXButton"_s, true, {}, u"Save\nas"_s, {}, {}, false, {}};
    EXPECT_EQ(run(m_tools.clickAt({1, 2})), u"Clicked at (1, 2) on button 'Save as'."_s);
}

TEST_F(InputControlTest, TheFirstLabelThatExistsCountsEvenIfItIsEmpty)
{
    m_desktop.elements->underPointer =
        ScreenElement{u"AXCheckBox"_s, true, {}, QString(u""_s), u"described"_s, {}, false, {}};
    EXPECT_EQ(run(m_tools.clickAt({1, 2})), u"Clicked at (1, 2) on checkbox."_s);
}

TEST_F(InputControlTest, AnElementWithoutARoleIsNotDescribed)
{
    m_desktop.elements->underPointer = ScreenElement{{}, true, {}, u"title"_s, {}, {}, false, {}};
    EXPECT_EQ(run(m_tools.clickAt({1, 2})), u"Clicked at (1, 2)."_s);
}

TEST_F(InputControlTest, ADoubleClickIsTwoClicksWithTheirPauses)
{
    EXPECT_EQ(run(m_tools.mouseDoubleClick({3, 4})), u"Double-clicked at (3, 4)."_s);
    EXPECT_THAT(events(), ElementsAre(u"warp 3,4"_s, u"sleep 30"_s, u"left down 3,4"_s, u"sleep 50"_s,
                                      u"left up 3,4"_s, u"sleep 30"_s, u"left down 3,4"_s, u"sleep 50"_s,
                                      u"left up 3,4"_s, u"sleep 30"_s));
}

TEST_F(InputControlTest, ARightClick)
{
    EXPECT_EQ(run(m_tools.mouseRightClick({3, 4})), u"Right-clicked at (3, 4)."_s);
    EXPECT_THAT(events(), ElementsAre(u"warp 3,4"_s, u"sleep 30"_s, u"right down 3,4"_s, u"sleep 50"_s,
                                      u"right up 3,4"_s));
}

TEST_F(InputControlTest, MovingTheCursorPostsNothingElse)
{
    EXPECT_EQ(run(m_tools.moveCursor({-3, 4})), u"Moved the cursor to (-3, 4)."_s);
    EXPECT_THAT(events(), ElementsAre(u"warp -3,4"_s));
}

TEST_F(InputControlTest, ADragGoesInTwelveSteps)
{
    EXPECT_EQ(run(m_tools.mouseDrag({0, 100}, {120, 40})), u"Dragged from (0, 100) to (120, 40)."_s);
    QStringList expected{u"warp 0,100"_s, u"sleep 30"_s,        u"moved 0,100"_s,
                         u"sleep 20"_s,   u"left down 0,100"_s, u"sleep 50"_s};
    for (int step = 1; step <= 12; ++step)
        expected << u"dragged %1,%2"_s.arg(step * 10).arg(100 - step * 5) << u"sleep 15"_s;
    expected << u"left up 120,40"_s;
    EXPECT_EQ(events(), expected);
}

TEST_F(InputControlTest, ADragThatTwelveDoesNotDivideEndsAtItsEnd)
{
    run(m_tools.mouseDrag({0, 0}, {13, -13}));
    const QStringList drags = events().filter(u"dragged"_s);
    EXPECT_EQ(drags.first(), u"dragged 1,-1"_s);
    EXPECT_EQ(drags.last(), u"dragged 13,-13"_s);
}

TEST_F(InputControlTest, ScrollingByThreeIsEightEventsOf36PixelsUp)
{
    EXPECT_EQ(run(m_tools.mouseScroll(3)), u"Scrolled the mouse wheel up."_s);
    EXPECT_EQ(events().count(u"scroll 36"_s), 8);
    EXPECT_EQ(events().count(u"sleep 12"_s), 8);
    EXPECT_EQ(events().size(), 16);
}

TEST_F(InputControlTest, ScrollingDownAndNotAtAll)
{
    EXPECT_EQ(run(m_tools.mouseScroll(-5)), u"Scrolled the mouse wheel down."_s);
    EXPECT_EQ(events().count(u"scroll -60"_s), 8);
    EXPECT_EQ(run(m_tools.mouseScroll(0)), u"Scrolled the mouse wheel."_s);
    EXPECT_EQ(events().count(u"scroll 0"_s), 8);
}

TEST_F(InputControlTest, AnAmountBeyondWhatAnEventHoldsIsTheMostItHolds)
{
    run(m_tools.mouseScroll(std::numeric_limits<qint64>::max()));
    EXPECT_EQ(events().count(u"scroll 2147483640"_s), 8);
}

TEST_F(InputControlTest, TypingPostsEachCharacterDownAndUp)
{
    EXPECT_EQ(run(m_tools.typeText(u"aé"_s)), u"Typed 2 characters."_s);
    EXPECT_THAT(events(), ElementsAre(u"prepare aé"_s, u"down a"_s, u"up a"_s, u"sleep 10"_s, u"down é"_s,
                                      u"up é"_s, u"sleep 10"_s));
}

TEST_F(InputControlTest, AnEmojiIsOneEventOfItsWholeScalar)
{
    EXPECT_EQ(run(m_tools.typeText(u"😀"_s)), u"Typed 1 characters."_s);
    EXPECT_EQ(events().count(u"down 😀"_s), 1);
    EXPECT_EQ(events().size(), 4);
}

TEST_F(InputControlTest, TheCountIsOfCharactersAsPeopleSeeThem)
{
    EXPECT_EQ(run(m_tools.typeText(u"👩‍👩‍👧"_s)), u"Typed 1 characters."_s);
    EXPECT_EQ(events().filter(u"down"_s).size(), 5);
}

TEST_F(InputControlTest, NothingToType)
{
    EXPECT_EQ(run(m_tools.typeText({})), u"Error: nothing to type."_s);
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(InputControlTest, AKeyIsPressedForTwentyMillisecondsAndToldAsItWasGiven)
{
    EXPECT_EQ(run(m_tools.pressKey(u"Return"_s)), u"Pressed Return."_s);
    EXPECT_THAT(events(), ElementsAre(u"key down 36 flags 0"_s, u"sleep 20"_s, u"key up 36 flags 0"_s));
}

TEST_F(InputControlTest, ModifiersAreOnBothEvents)
{
    EXPECT_EQ(run(m_tools.pressKey(u"command+shift+4"_s)), u"Pressed command+shift+4."_s);
    EXPECT_THAT(events(),
                ElementsAre(u"key down 21 flags 120000"_s, u"sleep 20"_s, u"key up 21 flags 120000"_s));
}

TEST_F(InputControlTest, TheLayoutsOwnKeyServesOnceItIsKnown)
{
    m_desktop.input->layout = {u"q"_s, u"s"_s, u"d"_s, {},     {}, {}, u"y"_s, {},    {},
                               {},     {},     {},     u"a"_s, {}, {}, {},     u"z"_s};
    run(m_tools.pressKey(u"command+z"_s));
    EXPECT_EQ(events().first(), u"key down 6 flags 100000"_s);
    m_desktop.log.clear();
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    EXPECT_EQ(m_desktop.input->layoutQuestions, 1);
    run(m_tools.pressKey(u"command+Z"_s));
    EXPECT_EQ(events().first(), u"key down 16 flags 100000"_s);
    m_desktop.log.clear();
    run(m_tools.pressKey(u"k"_s));
    EXPECT_EQ(events().first(), u"key down 40 flags 0"_s);
}

TEST_F(InputControlTest, TheLayoutsOwnDigitIsPressedWithBothModifiers)
{
    m_desktop.input->layout = QList<QString>(30);
    m_desktop.input->layout[23] = u"4"_s;
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    EXPECT_EQ(run(m_tools.pressKey(u"command+shift+4"_s)), u"Pressed command+shift+4."_s);
    EXPECT_THAT(events(),
                ElementsAre(u"key down 23 flags 120000"_s, u"sleep 20"_s, u"key up 23 flags 120000"_s));
}

TEST_F(InputControlTest, OfTwoKeysForOneCharacterTheLowerCodeWins)
{
    m_desktop.input->layout = {u"1"_s, u"1"_s};
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    run(m_tools.pressKey(u"1"_s));
    EXPECT_EQ(events().first(), u"key down 0 flags 0"_s);
}

TEST_F(InputControlTest, OfAKeyThatTypesSeveralCharactersTheFirstCounts)
{
    m_desktop.input->layout = {{}, u"ab"_s, u"𞤮𞤭"_s};
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    run(m_tools.pressKey(u"a"_s));
    EXPECT_EQ(events().first(), u"key down 1 flags 0"_s);
    // Of two units each.
    EXPECT_EQ(run(m_tools.pressKey(u"command+𞤮"_s)), u"Pressed command+𞤮."_s);
}

TEST_F(InputControlTest, ALayoutThatIsNotKnownIsAskedForOnceAndTheUsualKeysServe)
{
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    m_desktop.input->layout = {u"z"_s};
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    EXPECT_EQ(m_desktop.input->layoutQuestions, 1);
    run(m_tools.pressKey(u"z"_s));
    EXPECT_EQ(events().first(), u"key down 6 flags 0"_s);
}

TEST_F(InputControlTest, FunctionKeysAreNotInTheTable)
{
    EXPECT_EQ(run(m_tools.pressKey(u"f5"_s)),
              u"Error: unknown key \"f5\". Supported keys: return, enter, tab, space, escape, delete, "
              "backspace, up, down, left, right, home, end, pageup, pagedown, and letters or digits. Add "
              "modifiers like command+v, shift+command+return."_s);
}

TEST_F(InputControlTest, AnUnknownModifierIsNamed)
{
    EXPECT_EQ(run(m_tools.pressKey(u"a+b"_s)),
              u"Error: unknown modifier \"a\". Supported modifiers: command, shift, option, control, fn."_s);
}

TEST_F(InputControlTest, CombinationsWithoutAKeyAreRefused)
{
    for (const QString &key : {u"+"_s, u"command+"_s, u""_s, u"  "_s})
        EXPECT_EQ(run(m_tools.pressKey(key)), u"Error: no key was given."_s);
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(InputControlTest, BlanksAroundThePartsDoNotCount)
{
    EXPECT_EQ(run(m_tools.pressKey(u" Cmd +  V "_s)), u"Pressed  Cmd +  V ."_s);
    EXPECT_EQ(events().first(), u"key down 9 flags 100000"_s);
}

TEST_F(InputControlTest, WithoutPermissionTheUserIsAskedOnceAndNothingIsPosted)
{
    m_desktop.input->trusted = false;
    EXPECT_EQ(run(m_tools.clickAt({1, 1})), noPermission);
    EXPECT_THAT(events(), ElementsAre(u"request trust"_s, u"sleep 2000"_s));
    for (auto task :
         {&ScreenTools::moveCursor, &ScreenTools::mouseDoubleClick, &ScreenTools::mouseRightClick})
        EXPECT_EQ(run((m_tools.*task)({1, 1})), noPermission);
    EXPECT_EQ(run(m_tools.axClick(1)), noPermission);
    EXPECT_EQ(run(m_tools.axType(1, u"x"_s)), noPermission);
    EXPECT_EQ(run(m_tools.typeText(u"x"_s)), noPermission);
    EXPECT_EQ(run(m_tools.pressKey(u"x"_s)), noPermission);
    EXPECT_EQ(run(m_tools.pasteText(u"x"_s)), noPermission);
    EXPECT_EQ(run(m_tools.mouseDrag({1, 1}, {2, 2})), noPermission);
    EXPECT_EQ(run(m_tools.mouseScroll(1)), noPermission);
}

TEST_F(InputControlTest, TheClipboardAndProgramsNeedNoPermission)
{
    m_desktop.input->trusted = false;
    run(m_tools.clipboardSet(u"x"_s));
    EXPECT_EQ(run(m_tools.clipboardRead()), u"Clipboard content: x"_s);
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is unknown."_s);
    run(m_tools.openApplication(u"Notes"_s));
    run(m_tools.activateApp(u"Notes"_s));
    run(m_tools.openURL(u"https://example.com/"_s, {}));
    EXPECT_THAT(events(), ElementsAre(u"clipboard x"_s, u"open Notes"_s, u"open Notes"_s,
                                      u"open address https://example.com/ in []"_s));
}

TEST_F(InputControlTest, APermissionThatIsGivenWhenAskedForServes)
{
    m_desktop.input->trusted = false;
    m_desktop.input->trustsWhenAsked = true;
    EXPECT_EQ(run(m_tools.moveCursor({1, 1})), u"Moved the cursor to (1, 1)."_s);
}

TEST_F(InputControlTest, AnElementIsPressedByItsNumber)
{
    showElement(u"AXButton"_s, u"Save"_s, true);
    EXPECT_EQ(run(m_tools.axClick(1)), u"Pressed button 'Save' at (25, 20)."_s);
    EXPECT_THAT(events(), ElementsAre(u"press Save"_s));
}

TEST_F(InputControlTest, AnElementWithoutALabelIsItsRoleAlone)
{
    showElement(u"AXButton"_s, {}, true);
    EXPECT_EQ(run(m_tools.axClick(1)), u"Pressed button at (25, 20)."_s);
}

TEST_F(InputControlTest, NumbersOutsideOfTheListAreRefused)
{
    showElement(u"AXButton"_s, u"Save"_s, true);
    for (const qint64 number : {qint64(0), qint64(-1), qint64(2), std::numeric_limits<qint64>::max()}) {
        EXPECT_EQ(run(m_tools.axClick(number)),
                  u"Error: there is no element [%1]. Run capture_screen first and use a number from its "
                  "'Clickable elements' list."_s.arg(number));
        EXPECT_EQ(run(m_tools.axType(number, u"x"_s)), run(m_tools.axClick(number)));
    }
}

TEST_F(InputControlTest, ARefusedPressIsAClickOnTheCentre)
{
    showElement(u"AXButton"_s, u"Save"_s, true);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    EXPECT_EQ(run(m_tools.axClick(1)), u"AXPress was refused; Clicked at (25, 20)."_s);
    EXPECT_EQ(events().count(u"left down 25,20"_s), 1);
}

TEST_F(InputControlTest, AnElementThatCannotBePressedGetsTheSameWords)
{
    showElement(u"AXTextField"_s, u"Name"_s, false);
    EXPECT_EQ(run(m_tools.axClick(1)), u"AXPress was refused; Clicked at (25, 20)."_s);
    EXPECT_EQ(events().count(u"press Name"_s), 0);
}

TEST_F(InputControlTest, AnElementThatIsGoneIsAnErrorAndNeverAClick)
{
    for (const bool pressable : {true, false}) {
        showElement(u"AXButton"_s, u"Save"_s, pressable);
        m_desktop.elements->outcome = AccessibilityTree::Outcome::gone;
        EXPECT_THAT(run(m_tools.axClick(1)).toStdString(),
                    testing::StartsWith("Error: element [1] is no longer"));
        EXPECT_THAT(run(m_tools.axType(1, u"x"_s)).toStdString(),
                    testing::StartsWith("Error: element [1] is no longer"));
        EXPECT_THAT(events().filter(u"left"_s), IsEmpty());
        m_desktop.elements->outcome = AccessibilityTree::Outcome::done;
    }
}

TEST_F(InputControlTest, AnElementBehindAnotherWindowIsPressedButNeitherClickedNorTypedInto)
{
    showElement(u"AXButton"_s, u"Save"_s, true);
    m_desktop.elements->covered = true;
    EXPECT_EQ(run(m_tools.axClick(1)), u"Pressed button 'Save' at (25, 20)."_s);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    m_desktop.log.clear();
    const QString problem =
        u"Error: element [1] is behind another window. Bring its application to the front with "
        "activate_app, then run capture_screen again."_s;
    EXPECT_EQ(run(m_tools.axClick(1)), problem);
    EXPECT_EQ(run(m_tools.axType(1, u"ab"_s)), problem);
    EXPECT_THAT(events().filter(QRegularExpression(u"down|warp"_s)), IsEmpty());
}

TEST_F(InputControlTest, AnElementThatHasMovedIsClickedWhereItIsNow)
{
    m_desktop.elements->onCurrent = [](ScreenElement &element) { element.frame = QRectF(100, 200, 11, 11); };
    showElement(u"AXTextField"_s, u"Name"_s, false);
    EXPECT_EQ(run(m_tools.axClick(1)), u"AXPress was refused; Clicked at (105, 205)."_s);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    m_desktop.log.clear();
    EXPECT_EQ(run(m_tools.axType(1, u"a"_s)), u"Typed 1 characters."_s);
    EXPECT_EQ(events().count(u"left down 105,205"_s), 1);
}

TEST_F(InputControlTest, AnElementThatIsHiddenByNowIsNotClicked)
{
    m_desktop.elements->onCurrent = [](ScreenElement &element) { element.frame.reset(); };
    showElement(u"AXTextField"_s, u"Name"_s, false);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    EXPECT_THAT(run(m_tools.axClick(1)).toStdString(),
                testing::StartsWith("Error: element [1] is no longer"));
    EXPECT_THAT(run(m_tools.axType(1, u"x"_s)).toStdString(),
                testing::StartsWith("Error: element [1] is no longer"));
    EXPECT_THAT(events(), ElementsAre(u"set Name to x"_s));
}

TEST_F(InputControlTest, AValueIsSetAndSixtyCharactersOfItAreTold)
{
    showElement(u"AXTextField"_s, u"Name"_s, false);
    EXPECT_EQ(run(m_tools.axType(1, QString(61, u'x'))),
              u"Set the contents of text field 'Name' to \""_s + QString(60, u'x') + u"\"."_s);
    EXPECT_EQ(run(m_tools.axType(1, u"👩‍👧"_s.repeated(61))),
              u"Set the contents of text field 'Name' to \""_s + u"👩‍👧"_s.repeated(60) + u"\"."_s);
    EXPECT_EQ(run(m_tools.axType(1, {})), u"Error: nothing to type."_s);
}

TEST_F(InputControlTest, AnElementThatRefusesItsValueIsClickedAndTypedInto)
{
    showElement(u"AXTextField"_s, u"Name"_s, false);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    EXPECT_EQ(run(m_tools.axType(1, u"ab"_s)), u"Typed 2 characters."_s);
    const QStringList log = events();
    EXPECT_LT(log.indexOf(u"left up 25,20"_s), log.indexOf(u"sleep 200"_s));
    EXPECT_LT(log.indexOf(u"sleep 200"_s), log.indexOf(u"down a"_s));
}

TEST_F(InputControlTest, PastingTrimsReplacesTheClipboardAndPressesCommandV)
{
    EXPECT_EQ(run(m_tools.pasteText(u"  hello \n"_s)), u"Pasted 5 characters into the focused app."_s);
    EXPECT_EQ(m_desktop.clipboard->content, u"hello"_s);
    EXPECT_THAT(events(), ElementsAre(u"clipboard hello"_s, u"key down 9 flags 100000"_s, u"sleep 20"_s,
                                      u"key up 9 flags 100000"_s));
    EXPECT_EQ(run(m_tools.pasteText(u" \n "_s)), u"Error: nothing to paste."_s);
    // A program that never asks for the text is waited for a second.
    m_desktop.clipboard->isAskedFor = false;
    m_desktop.log.clear();
    EXPECT_EQ(run(m_tools.pasteText(u"words"_s)), u"Pasted 5 characters into the focused app."_s);
    EXPECT_EQ(events().count(u"sleep 10"_s), 100);
}

} // namespace
} // namespace morvane
