#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

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
    const auto error = u"The AI provider returned an error (HTTP 401). The key is not valid."_s;
    morvane.send(u"Hello"_s);
    EXPECT_TRUE(morvane.ear().hears(u"There was an error. "_s + error));
    EXPECT_TRUE(morvane.hasStatus(u"Error"_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said  Error: "_s + error));
    EXPECT_TRUE(morvane.storesLastMessage(u"errorMessage"_s, error));
    EXPECT_TRUE(morvane.storesLastMessage(u"isStreaming"_s, false));
}

TEST_F(EndOfRequestTest, AProviderThatIsBusyTwiceStillAnswers)
{
    const auto busy = ScriptedTurn::failing(503, "busy", {{"Retry-After", "0"}});
    MorvaneSession &morvane = start({busy, busy, ScriptedTurn::saying({"Here I am."})});
    morvane.send(u"Hello"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Here I am."_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Here I am."_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Here I am."_s));
}

TEST_F(EndOfRequestTest, AnUnreachableProviderIsExplained)
{
    MorvaneSession &morvane = prepare({});
    morvane.setSetting(u"customBaseURL"_s, u"http://127.0.0.1:1/v1"_s);
    morvane.start();
    morvane.send(u"Hello"_s);
    EXPECT_TRUE(
        morvane.ear().hears(u"There was an error. Could not connect to the AI provider. Check your internet "
                            "connection and try again."_s));
    EXPECT_TRUE(morvane.hasStatus(u"Error"_s));
}

TEST_F(EndOfRequestTest, AConnectionThatBreaksInMidstreamIsAnErrorAndKeepsTheConversation)
{
    ScriptedTurn broken;
    broken.steps = {step::Text{"Half an ans"}, step::Reset{}};
    MorvaneSession &morvane = start({broken, ScriptedTurn::saying({"Whole."})});
    morvane.send(u"Hello"_s);
    ASSERT_TRUE(morvane.hasStatus(u"Error"_s));
    morvane.send(u"Again"_s);
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Whole."_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Whole."_s));
}

TEST_F(EndOfRequestTest, TheThirdIdenticalCallStopsTheRun)
{
    const auto call = callingTool("calculate", R"({"expression":"1+1"})");
    MorvaneSession &morvane = start({call, call, call, ScriptedTurn::saying({"Never asked."})});
    const auto note =
        u"I noticed I was repeating the same action without progress, so I stopped to avoid going in "
        u"circles. "
        "The obstacle did not respond to that approach — tell me what you would like me to try instead."_s;
    morvane.send(u"Add"_s);
    EXPECT_TRUE(morvane.ear().hears(note));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said "_s + note));
    EXPECT_TRUE(morvane.hasStatus(u"Ready"_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, note));
    EXPECT_THAT(morvane.activity(),
                Contains(testing::Property(
                    &QString::toStdString,
                    testing::HasSubstr("Stopped: the same action repeated without progress."))));
}

TEST_F(EndOfRequestTest, TheStepLimitEndsInItsNote)
{
    std::vector<ScriptedTurn> turns;
    for (int step = 0; step < 9; ++step)
        turns.push_back(callingTool("calculate", R"({"expression":"1+)" + std::to_string(step) + R"("})"));
    MorvaneSession &morvane = prepare(turns);
    morvane.setSetting(u"maxSteps"_s, u"8"_s);
    morvane.start();
    const auto note =
        u"I reached the limit of 8 steps while working on this and stopped to avoid running forever. Ask me "
        "to "
        "continue and I'll pick up where I left off — or raise the limit in Settings under Behaviour."_s;
    morvane.send(u"Count"_s);
    EXPECT_TRUE(morvane.ear().hears(note));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said "_s + note));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, note));
}

TEST_F(EndOfRequestTest, StoppingInMidstreamKeepsWhatCameAndFreesTheWindow)
{
    ScriptedTurn endless;
    const std::string beginning(250, 'a');
    endless.steps = {step::Text{beginning}, step::Stall{}};
    MorvaneSession &morvane = start({endless, ScriptedTurn::saying({"Next answer."})});
    morvane.send(u"Write"_s);
    ASSERT_TRUE(morvane.model().waitForRequests(1));
    const AccessibleElement stop = morvane.program().find(u"Stop generating"_s);
    // Text reaches the row in batches; once it is there the stop falls into the middle of the stream.
    ASSERT_TRUE(morvane.program().shows(u"Morvane is responding"_s));
    stop.press();
    EXPECT_TRUE(morvane.hasStatus(u"Cancelled"_s));
    EXPECT_TRUE(morvane.ear().hears(u"Generation cancelled."_s));
    EXPECT_TRUE(morvane.model().waitForAbandoned(1));
    EXPECT_TRUE(morvane.storesLastMessage(u"isStreaming"_s, false));
    morvane.send(u"Go on"_s);
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Next answer."_s));
}

TEST_F(EndOfRequestTest, ATurnWithoutTextOrToolsIsSaidToHaveNone)
{
    MorvaneSession &morvane = start({ScriptedTurn{}});
    morvane.send(u"Hello"_s);
    EXPECT_TRUE(waitUntil([&] { return morvane.ear().heard().size() >= 2; }));
    EXPECT_THAT(morvane.ear().heard(), Not(Contains(QString())));
}

} // namespace
} // namespace morvane
