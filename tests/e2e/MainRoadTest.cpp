#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::Contains;
using testing::ElementsAre;

const auto answer = u"Six times seven is 42."_s;
const auto spokenRow = u"Morvane said Six times seven is 42."_s;

class MainRoadTest : public MorvaneTest {
protected:
    MorvaneSession &startWithCalculation()
    {
        return start({callingTool("calculate", R"({"expression":"6*7"})"),
                      ScriptedTurn::saying({"Six times ", "seven is 42."})});
    }
};

TEST_F(MainRoadTest, ARequestIsTypedAnsweredAndHeard)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(u"What is six times seven?"_s);
    ASSERT_TRUE(morvane.ear().hears(answer));
    EXPECT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    EXPECT_THAT(morvane.ear().heard(),
                ElementsAre(u"Morvane is responding."_s, u"Assistant is running: use the calculate tool."_s,
                            answer, u"Conversation summarized as: Scripted title."_s));
    EXPECT_TRUE(morvane.program().shows(spokenRow));
    EXPECT_TRUE(morvane.program().shows(u"You said What is six times seven?"_s));
    EXPECT_TRUE(morvane.hasStatus(u"Ready"_s));
    EXPECT_THAT(
        morvane.activity(),
        ElementsAre(
            testing::Property(&QString::toStdString, testing::HasSubstr("Running: use the calculate tool")),
            testing::Property(&QString::toStdString,
                              testing::HasSubstr("calculate returned: The result is 42.")),
            testing::Property(&QString::toStdString, testing::HasSubstr("Finished. Completed: calculate."))));
}

TEST_F(MainRoadTest, TheFieldIsEmptyAndHasTheFocusAfterSending)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(u"What is six times seven?"_s);
    ASSERT_TRUE(morvane.ear().hears(answer));
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    EXPECT_EQ(morvane.program().find(u"Message Morvane"_s).text(), QString());
}

TEST_F(MainRoadTest, TheAnswerIsCopiedByItsRow)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(u"What is six times seven?"_s);
    ASSERT_TRUE(morvane.ear().hears(answer));
    const AccessibleElement row = morvane.program().find(spokenRow);
    EXPECT_EQ(row.description(), u"Accessibility actions: copy, read again."_s);
    EXPECT_THAT(row.actions(), testing::IsSupersetOf({u"Copy"_s, u"Read again"_s}));
    row.act(u"Copy"_s);
    EXPECT_TRUE(waitUntil([&] { return morvane.screen().clipboardText() == answer; }));
}

TEST_F(MainRoadTest, TheAnswerIsReadAgainByItsRow)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(u"What is six times seven?"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    morvane.ear().forget();
    morvane.program().find(spokenRow).act(u"Read again"_s);
    EXPECT_TRUE(morvane.ear().hears(answer));
}

TEST_F(MainRoadTest, TheConversationIsOnDiskWithItsTitle)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(u"What is six times seven?"_s);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, answer));
    EXPECT_TRUE(waitUntil([&] {
        const auto stored = morvane.storedConversations();
        return stored.size() == 1 && stored.first().value("title"_L1) == "Scripted title"_L1;
    }));
}

TEST_F(MainRoadTest, AnnouncementsOfProgressCanBeSwitchedOff)
{
    MorvaneSession &morvane =
        prepare({ScriptedTurn::saying({"Quiet answer."}), ScriptedTurn::failing(401, "{}")});
    morvane.setSetting(u"announce"_s, u"false"_s);
    morvane.start();
    morvane.send(u"first"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said Quiet answer."_s));
    morvane.send(u"second"_s);
    ASSERT_TRUE(waitUntil([&] { return !morvane.ear().heard().isEmpty(); }));
    EXPECT_THAT(
        morvane.ear().heard(),
        Contains(testing::Property(&QString::toStdString, testing::StartsWith("There was an error. "))));
    EXPECT_EQ(morvane.ear().heard().size(), 1);
}

TEST_F(MainRoadTest, AnOlderReaderHearsTheSameRequest)
{
    MorvaneSession &morvane = prepare({ScriptedTurn::saying({"Heard by all."})}, Hearing::notifications);
    morvane.start();
    morvane.send(u"Speak"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Morvane is responding."_s));
    EXPECT_TRUE(morvane.ear().hears(u"Heard by all."_s));
}

TEST_F(MainRoadTest, TwentyThousandStreamedWordsArriveWholeOnDiskAndInTheEar)
{
    ScriptedTurn longAnswer;
    longAnswer.steps = {step::Burst{20'000}};
    MorvaneSession &morvane = start({longAnswer});
    const QString words = u"word "_s.repeated(20'000);
    morvane.send(u"Tell me everything"_s);
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, words));
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    const QStringList heard = morvane.ear().heard();
    EXPECT_EQ(heard.mid(1, heard.size() - 2).join(QString()), words);
}

} // namespace
} // namespace morvane
