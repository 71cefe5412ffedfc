#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

using testing::Contains;
using testing::Not;

/// How requests end that do not simply end in an answer.
class EndOfRequestTest : public MorvaneTest {};

TEST_F(EndOfRequestTest, ARefusedKeyIsShownSpokenAndStored)
{
    MorvaneSession &morvane =
        start({ScriptedTurn::failing(401, R"({"error":{"message":"The key is not valid."}})")});
    const auto error = QStringLiteral("The AI provider returned an error (HTTP 401). The key is not valid.");
    morvane.send(QStringLiteral("Hello"));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("There was an error. ") + error));
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Error")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said  Error: ") + error));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("errorMessage"), error));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("isStreaming"), false));
}

TEST_F(EndOfRequestTest, AProviderThatIsBusyTwiceStillAnswers)
{
    const auto busy = ScriptedTurn::failing(503, "busy", {{"Retry-After", "0"}});
    MorvaneSession &morvane = start({busy, busy, ScriptedTurn::saying({"Here I am."})});
    morvane.send(QStringLiteral("Hello"));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Here I am.")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Here I am.")));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), QStringLiteral("Here I am.")));
}

TEST_F(EndOfRequestTest, AnUnreachableProviderIsExplained)
{
    MorvaneSession &morvane = prepare({});
    morvane.setSetting(QStringLiteral("customBaseURL"), QStringLiteral("http://127.0.0.1:1/v1"));
    morvane.start();
    morvane.send(QStringLiteral("Hello"));
    EXPECT_TRUE(morvane.ear().hears(
        QStringLiteral("There was an error. Could not connect to the AI provider. Check your internet "
                       "connection and try again.")));
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Error")));
}

TEST_F(EndOfRequestTest, AConnectionThatBreaksInMidstreamIsAnErrorAndKeepsTheConversation)
{
    ScriptedTurn broken;
    broken.steps = {step::Text{"Half an ans"}, step::Reset{}};
    MorvaneSession &morvane = start({broken, ScriptedTurn::saying({"Whole."})});
    morvane.send(QStringLiteral("Hello"));
    ASSERT_TRUE(morvane.hasStatus(QStringLiteral("Error")));
    morvane.send(QStringLiteral("Again"));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Whole.")));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), QStringLiteral("Whole.")));
}

TEST_F(EndOfRequestTest, TheThirdIdenticalCallStopsTheRun)
{
    const auto call = callingTool("calculate", R"({"expression":"1+1"})");
    MorvaneSession &morvane = start({call, call, call, ScriptedTurn::saying({"Never asked."})});
    const auto note = QStringLiteral(
        "I noticed I was repeating the same action without progress, so I stopped to avoid going in circles. "
        "The obstacle did not respond to that approach — tell me what you would like me to try instead.");
    morvane.send(QStringLiteral("Add"));
    EXPECT_TRUE(morvane.ear().hears(note));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said ") + note));
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Ready")));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), note));
    EXPECT_THAT(morvane.activity(),
                Contains(testing::Property(
                    &QString::toStdString,
                    testing::HasSubstr("Stopped: the same action repeated without progress."))));
}

TEST_F(EndOfRequestTest, TheStepLimitEndsInItsNote)
{
    std::vector<ScriptedTurn> turns;
    for (int step = 0; step < 9; ++step) {
        turns.push_back(callingTool("calculate", R"({"expression":"1+)" + std::to_string(step) + R"("})"));
    }
    MorvaneSession &morvane = prepare(turns);
    morvane.setSetting(QStringLiteral("maxSteps"), QStringLiteral("8"));
    morvane.start();
    const auto note = QStringLiteral(
        "I reached the limit of 8 steps while working on this and stopped to avoid running forever. Ask me "
        "to "
        "continue and I'll pick up where I left off — or raise the limit in Settings under Behaviour.");
    morvane.send(QStringLiteral("Count"));
    EXPECT_TRUE(morvane.ear().hears(note));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said ") + note));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), note));
}

TEST_F(EndOfRequestTest, StoppingInMidstreamKeepsWhatCameAndFreesTheWindow)
{
    ScriptedTurn endless;
    const std::string beginning(250, 'a');
    endless.steps = {step::Text{beginning}, step::Stall{}};
    MorvaneSession &morvane = start({endless, ScriptedTurn::saying({"Next answer."})});
    morvane.send(QStringLiteral("Write"));
    ASSERT_TRUE(morvane.model().waitForRequests(1));
    const AccessibleElement stop = morvane.program().find(QStringLiteral("Stop generating"));
    // Text reaches the row in batches; once it is there the stop falls into the middle of the stream.
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Morvane is responding")));
    stop.press();
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Cancelled")));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Generation cancelled.")));
    EXPECT_TRUE(morvane.model().waitForAbandoned(1));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("isStreaming"), false));
    morvane.send(QStringLiteral("Go on"));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Next answer.")));
}

TEST_F(EndOfRequestTest, ATurnWithoutTextOrToolsIsSaidToHaveNone)
{
    MorvaneSession &morvane = start({ScriptedTurn{}});
    morvane.send(QStringLiteral("Hello"));
    EXPECT_TRUE(waitUntil([&] { return morvane.ear().heard().size() >= 2; }));
    EXPECT_THAT(morvane.ear().heard(), Not(Contains(QString())));
}

} // namespace
} // namespace morvane
