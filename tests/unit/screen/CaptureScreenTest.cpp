#include "ScreenFixture.h"

#include "tools/screen/ElementWalk.h"

#include <QDir>
#include <atomic>
#include <latch>
#include <thread>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::HasSubstr;
using testing::Not;

class CaptureScreenTest : public ScreenFixture {
protected:
    QString capture() { return run(m_tools.captureScreen()); }
};

FakeElement button(const QString &title, QRectF frame)
{
    return {u"AXButton"_s, title, frame, true, {}, {}, {}};
}

FakeElement group(const QList<FakeElement> &children)
{
    return {u"AXGroup"_s, {}, {}, false, children, {}, {}};
}

TEST_F(CaptureScreenTest, TellsTextAndElementsWithTheirPlaces)
{
    showFront(group({button(u"Save"_s, {10, 20, 31, 21}),
                     {u"AXTextField"_s, {}, QRectF(200, 20, 100, 20), false, {}, u"Name"_s, {}}}));
    m_desktop.recognizer->lines = {{u"Hello world"_s, {100, 40, 50, 20}}, {u"Second"_s, {0, 100, 11, 11}}};
    EXPECT_EQ(
        capture(),
        u"Here is what is on the screen right now (frontmost window: \"notes.txt\").\n"
        "Screen region: 1000 x 800 points with top-left corner at (0, 0). Text with click coordinates:\n"
        "Hello world  [click 125,50]\nSecond  [click 5,105]\n\n"
        "Clickable elements (exact coordinates from macOS Accessibility — prefer ax_click with these "
        "numbers):\n"
        "[1] button 'Save' at (25, 30)\n[2] text field 'Name' at (250, 30)\n"_s);
}

TEST_F(CaptureScreenTest, NoTitleAndNoLabelTellsOfElementsThatThereAreNot)
{
    showFront(group({button(u"Save' at (1, 1)\n[2] button 'Go"_s, {10, 20, 31, 21}),
                     button(u"Delete"_s, {200, 20, 31, 21})}));
    m_desktop.applications->focused->title = u"Notes\").\r\n[1] button 'Go' at (5, 5)"_s;
    const QString text = capture();
    EXPECT_THAT(text.toStdString(), HasSubstr("window: \"Notes\"). [1] button 'Go' at (5, 5)\").\nScreen"));
    EXPECT_THAT(text.toStdString(),
                testing::EndsWith("[1] button 'Save' at (1, 1) [2] button 'Go' at (25, 30)\n"
                                  "[2] button 'Delete' at (215, 30)\n"));
}

TEST_F(CaptureScreenTest, WithoutAFrontmostProgramThePointersDisplayIsTaken)
{
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}};
    m_desktop.screen->mouse = {1200, 10};
    m_desktop.recognizer->lines = {{u"x"_s, {0, 0, 10, 10}}};
    EXPECT_EQ(
        capture(),
        u"Here is what is on the screen right now.\n"
        "Screen region: 500 x 400 points with top-left corner at (1000, 0). Text with click coordinates:\n"
        "x  [click 1005,5]\n\n"
        "(No clickable elements were exposed by \"the frontmost app\" — use click_at with the OCR "
        "coordinates above.)\n"_s);
}

TEST_F(CaptureScreenTest, AProgramThatShowsNoElementsIsNamed)
{
    showFront(group({}));
    m_desktop.recognizer->lines = {{u"x"_s, {0, 0, 10, 10}}};
    EXPECT_THAT(capture().toStdString(),
                testing::EndsWith("x  [click 5,5]\n\n(No clickable elements were exposed by \"Editor\" — use "
                                  "click_at with the OCR coordinates above.)\n"));
    m_desktop.applications->front->name.clear();
    EXPECT_THAT(capture().toStdString(), HasSubstr("exposed by \"the frontmost app\" — use"));
}

TEST_F(CaptureScreenTest, ProgramsAreAskedToBuildTheirTreesFirst)
{
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    capture();
    EXPECT_EQ(events(), QStringList({u"capture 0,0 1000x800"_s, u"enable"_s}));
}

TEST_F(CaptureScreenTest, APointOnTheEdgeOfTwoDisplaysBelongsToTheOneThatBeginsThere)
{
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}, {0, 800, 1000, 600}};
    m_desktop.screen->mouse = {1000, 10};
    capture();
    m_desktop.screen->mouse = {10, 800};
    capture();
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    m_desktop.applications->focused->frame = QRectF(900, 100, 200, 100);
    capture();
    EXPECT_EQ(
        events().filter(u"capture"_s),
        QStringList({u"capture 1000,0 500x400"_s, u"capture 0,800 1000x600"_s, u"capture 1000,0 500x400"_s}));
}

TEST_F(CaptureScreenTest, ADisplayAtNegativeCoordinatesGivesNegativeRegionAndPlaces)
{
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {-640, -480, 640, 480}};
    m_desktop.screen->mouse = {-1, -1};
    m_desktop.recognizer->lines = {{u"far"_s, {100, 100, 20, 20}}};
    const QString text = capture();
    EXPECT_EQ(events().first(), u"capture -640,-480 640x480"_s);
    EXPECT_THAT(text.toStdString(), HasSubstr("640 x 480 points with top-left corner at (-640, -480)"));
    EXPECT_THAT(text.toStdString(), HasSubstr("far  [click -530,-370]"));
}

TEST_F(CaptureScreenTest, TwiceThePixelsAreBroughtBackToPoints)
{
    m_desktop.screen->pixelsPerPoint = 2;
    m_desktop.recognizer->lines = {{u"sharp"_s, {400, 200, 20, 20}}};
    EXPECT_THAT(capture().toStdString(), HasSubstr("sharp  [click 205,105]"));
}

TEST_F(CaptureScreenTest, ARegionOfZeroWidthDividesByOne)
{
    m_desktop.screen->frames = {QRect(5, 6, 0, 0)};
    m_desktop.recognizer->lines = {{u"dot"_s, {0, 0, 2, 2}}};
    EXPECT_THAT(capture().toStdString(), HasSubstr("dot  [click 6,7]"));
}

TEST_F(CaptureScreenTest, WithNeitherTextNorElementsOnlyThatIsTold)
{
    showFront();
    EXPECT_EQ(capture(), u"The screen was captured, but no readable text was found. If windows are missing "
                         "from the capture, grant Morvane Screen Recording permission in System Settings and "
                         "try again."_s);
}

TEST_F(CaptureScreenTest, ElementsWithoutTextAreToldWithAnEmptyTextPart)
{
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    const std::string text = capture().toStdString();
    EXPECT_THAT(text, HasSubstr("coordinates:\n\n\nClickable elements"));
}

TEST_F(CaptureScreenTest, AFailedPictureIsAnError)
{
    m_desktop.screen->fails = true;
    EXPECT_EQ(capture(), u"Error: could not capture the screen. If no windows appeared in the picture, grant "
                         "Morvane Screen Recording permission in System Settings, then ask me to look at the "
                         "screen again."_s);
}

TEST_F(CaptureScreenTest, WithoutPermissionTheUserIsAskedAndAFailureTold)
{
    m_desktop.screen->granted = false;
    EXPECT_EQ(capture(),
              u"Error: Morvane needs Screen Recording permission to see your screen. A permission "
              "request was shown. If no dialog appeared, open System Settings, Privacy and "
              "Security, Screen and System Audio Recording, and enable Morvane. Then ask me to look "
              "at the screen again."_s);
    EXPECT_EQ(events(), QStringList({u"request screen access"_s, u"sleep 3000"_s}));
}

TEST_F(CaptureScreenTest, APermissionThatIsGivenWhenAskedForServes)
{
    m_desktop.screen->granted = false;
    m_desktop.screen->grantsWhenAsked = true;
    m_desktop.recognizer->lines = {{u"x"_s, {0, 0, 10, 10}}};
    EXPECT_THAT(capture().toStdString(), testing::StartsWith("Here is what"));
}

TEST_F(CaptureScreenTest, TheDisplayOfTheFrontmostWindowsCentreIsTaken)
{
    showFront();
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}};
    m_desktop.applications->focused->frame = QRectF(900, 100, 400, 100);
    capture();
    EXPECT_EQ(events().first(), u"capture 1000,0 500x400"_s);
}

TEST_F(CaptureScreenTest, AWindowOutsideOfEveryDisplayLeavesThePrimaryOne)
{
    showFront();
    m_desktop.screen->mouse = {1100, 10};
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}};
    m_desktop.applications->focused->frame = QRectF(5000, 5000, 10, 10);
    m_desktop.recognizer->lines = {{u"x"_s, {0, 0, 10, 10}}};
    EXPECT_THAT(capture().toStdString(), HasSubstr("(frontmost window: \"notes.txt\")"));
    EXPECT_EQ(events().first(), u"capture 0,0 1000x800"_s);
}

TEST_F(CaptureScreenTest, AWindowWhoseCentreIsOnNoDisplayIsLookedAtWhereMostOfItIsShown)
{
    showFront();
    m_desktop.screen->mouse = {1100, 10};
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}, {1500, 0, 500, 400}};
    m_desktop.applications->focused->frame = QRectF(1400, 300, 500, 800);
    capture();
    m_desktop.applications->focused->frame = QRectF(950, 390, 100, 1000);
    capture();
    EXPECT_EQ(events().filter(u"capture"_s),
              QStringList({u"capture 1500,0 500x400"_s, u"capture 0,0 1000x800"_s}));
}

TEST_F(CaptureScreenTest, APointerOnNoDisplayLeavesThePrimaryOne)
{
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}};
    m_desktop.screen->mouse = {1100, 500};
    capture();
    EXPECT_EQ(events().filter(u"capture"_s), QStringList({u"capture 0,0 1000x800"_s}));
}

TEST_F(CaptureScreenTest, WithoutAFocusedWindowTheProgramsLargestOrdinaryWindowCounts)
{
    showFront();
    m_desktop.applications->focused.reset();
    m_desktop.screen->frames = {{0, 0, 1000, 800}, {1000, 0, 500, 400}};
    m_desktop.applications->allWindows = {{7, 0, {0, 0, 60, 60}, u"small"_s},
                                          {7, 3, {0, 0, 900, 700}, u"panel"_s},
                                          {8, 0, {0, 0, 990, 790}, u"other"_s},
                                          {7, 0, {1100, 50, 200, 200}, u"large"_s}};
    m_desktop.recognizer->lines = {{u"x"_s, {0, 0, 10, 10}}};
    EXPECT_THAT(capture().toStdString(), HasSubstr("(frontmost window: \"large\")"));
    EXPECT_EQ(events().first(), u"capture 1000,0 500x400"_s);
}

TEST_F(CaptureScreenTest, ALargestWindowOfFiftyPointsIsNone)
{
    showFront();
    m_desktop.applications->focused.reset();
    m_desktop.applications->allWindows = {{7, 0, {0, 0, 50, 500}, u"narrow"_s}};
    m_desktop.recognizer->lines = {{u"x"_s, {0, 0, 10, 10}}};
    EXPECT_THAT(capture().toStdString(), Not(HasSubstr("narrow")));
}

TEST_F(CaptureScreenTest, ACaptureWithoutElementsEmptiesTheInventory)
{
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    capture();
    EXPECT_EQ(run(m_tools.axClick(1)), u"Pressed button 'Go' at (5, 5)."_s);
    m_desktop.elements->applications[7] = group({});
    capture();
    EXPECT_EQ(
        run(m_tools.axClick(1)),
        u"Error: there is no element [1]. Run capture_screen first and use a number from its 'Clickable "
        "elements' list."_s);
}

TEST_F(CaptureScreenTest, ACaptureWithoutAFrontmostProgramEmptiesTheInventory)
{
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    capture();
    m_desktop.applications->front.reset();
    capture();
    EXPECT_THAT(run(m_tools.axClick(1)).toStdString(),
                testing::StartsWith("Error: there is no element [1]."));
}

TEST_F(CaptureScreenTest, AStopEndsTheReadingAndLeavesTheNumbersThatTheModelKnows)
{
    showFront(group({button(u"Known"_s, {0, 0, 10, 10})}));
    capture();
    m_desktop.elements->applications[7] = group({button(u"Never told"_s, {0, 0, 10, 10})});
    stopDuring(m_desktop.recognizer->onRecognize, m_tools.captureScreen());
    EXPECT_EQ(run(m_tools.axClick(1)), u"Pressed button 'Known' at (5, 5)."_s);
}

TEST_F(CaptureScreenTest, AStopEndsEachQuestionToTheDesktopThatWaits)
{
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    const auto isStoppedDuring = [this](QuestionHooks &hooks, const QString &question) {
        EXPECT_EQ(stopDuring(hooks[question], m_tools.captureScreen()),
                  u"Error: stopped before it was done."_s)
            << question.toStdString();
    };
    isStoppedDuring(m_desktop.screen->onAsked, u"displays"_s);
    isStoppedDuring(m_desktop.screen->onAsked, u"capture"_s);
    isStoppedDuring(m_desktop.elements->onAsked, u"children"_s);
    isStoppedDuring(m_desktop.applications->onAsked, u"focusedWindow"_s);
    m_desktop.applications->focused.reset();
    isStoppedDuring(m_desktop.applications->onAsked, u"windows"_s);
    m_desktop.applications->front.reset();
    isStoppedDuring(m_desktop.screen->onAsked, u"pointer"_s);
}

TEST_F(CaptureScreenTest, AWalkThatFindsNothingIsRepeatedOnce)
{
    showFront(group({}));
    int asked = 0;
    m_desktop.elements->onApplication = [&] {
        if (++asked == 2)
            m_desktop.elements->applications[7] = group({button(u"Late"_s, {0, 0, 10, 10})});
    };
    EXPECT_THAT(capture().toStdString(), HasSubstr("[1] button 'Late' at (5, 5)\n"));
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(events().count(u"sleep 300"_s), 1);
}

TEST_F(CaptureScreenTest, AProgramThatHasUsedUpTheTimeIsNotAskedAgain)
{
    showFront();
    m_desktop.clock->isTimeUsedUp = true;
    int asked = 0;
    m_desktop.elements->onApplication = [&] { ++asked; };
    m_desktop.recognizer->lines = {{u"seen"_s, {0, 0, 10, 10}}};
    const QString text = capture();
    EXPECT_THAT(text.toStdString(), HasSubstr("seen  [click 5,5]"));
    EXPECT_THAT(text.toStdString(), HasSubstr("(No clickable elements were exposed by \"Editor\""));
    EXPECT_EQ(events().count(u"sleep 300"_s), 0);
    EXPECT_EQ(asked, 1);
}

TEST_F(CaptureScreenTest, TheElementsAreAskedForWhileTheTextIsRecognised)
{
    showFront(group({button(u"Go"_s, {0, 0, 10, 10})}));
    std::latch bothAreUnderWay(2);
    m_desktop.elements->onApplication = [&] { bothAreUnderWay.arrive_and_wait(); };
    m_desktop.recognizer->onRecognize = [&](const std::stop_token &) { bothAreUnderWay.arrive_and_wait(); };
    EXPECT_THAT(capture().toStdString(), HasSubstr("[1] button 'Go'"));
}

TEST_F(CaptureScreenTest, ThePictureIsNeverWrittenToAFile)
{
    const auto entries = [] { return QDir(QDir::tempPath()).entryList({u"morvane-screen-*"_s}); };
    const QStringList before = entries();
    QStringList during;
    m_desktop.recognizer->onRecognize = [&](const std::stop_token &) { during = entries(); };
    capture();
    EXPECT_EQ(during, before);
    EXPECT_EQ(entries(), before);
}

TEST_F(CaptureScreenTest, OnlyTheFirst120InTreeOrderCountAnd50OfThemInReadingOrderAreTold)
{
    QList<FakeElement> rows;
    for (int at = 0; at < 200; ++at)
        rows.append(group({button(QString::number(at), {0, 5000.0 - at * 20, 10, 10})}));
    showFront(group(rows));
    const QString text = capture();
    // The 120th in tree order is the topmost of those that count.
    EXPECT_THAT(text.toStdString(), HasSubstr("[1] button '119' at"));
    EXPECT_THAT(text.toStdString(), HasSubstr("[50] button '70' at"));
    EXPECT_THAT(text.toStdString(), Not(HasSubstr("[51]")));
    EXPECT_LE(m_desktop.elements->questions, 6);
}

} // namespace
} // namespace morvane
