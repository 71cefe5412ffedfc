#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

using testing::Contains;
using testing::ElementsAre;

const auto answer = QStringLiteral("Six times seven is 42.");
const auto spokenRow = QStringLiteral("Morvane said Six times seven is 42.");

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
    morvane.send(QStringLiteral("What is six times seven?"));
    ASSERT_TRUE(morvane.ear().hears(answer));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Conversation summarized as: Scripted title.")));
    EXPECT_THAT(morvane.ear().heard(),
                ElementsAre(QStringLiteral("Morvane is responding."),
                            QStringLiteral("Assistant is running: use the calculate tool."), answer,
                            QStringLiteral("Conversation summarized as: Scripted title.")));
    EXPECT_TRUE(morvane.program().shows(spokenRow));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("You said What is six times seven?")));
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Ready")));
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
    morvane.send(QStringLiteral("What is six times seven?"));
    ASSERT_TRUE(morvane.ear().hears(answer));
    EXPECT_TRUE(morvane.program().focuses(QStringLiteral("Message Morvane")));
    EXPECT_EQ(morvane.program().find(QStringLiteral("Message Morvane")).text(), QString());
}

TEST_F(MainRoadTest, TheAnswerIsCopiedByItsRow)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(QStringLiteral("What is six times seven?"));
    ASSERT_TRUE(morvane.ear().hears(answer));
    const AccessibleElement row = morvane.program().find(spokenRow);
    EXPECT_EQ(row.description(), QStringLiteral("Accessibility actions: copy, read again."));
    EXPECT_THAT(row.actions(), testing::IsSupersetOf({QStringLiteral("Copy"), QStringLiteral("Read again")}));
    row.act(QStringLiteral("Copy"));
    EXPECT_TRUE(waitUntil([&] { return morvane.screen().clipboardText() == answer; }));
}

TEST_F(MainRoadTest, TheAnswerIsReadAgainByItsRow)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(QStringLiteral("What is six times seven?"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Conversation summarized as: Scripted title.")));
    morvane.ear().forget();
    morvane.program().find(spokenRow).act(QStringLiteral("Read again"));
    EXPECT_TRUE(morvane.ear().hears(answer));
}

TEST_F(MainRoadTest, TheConversationIsOnDiskWithItsTitle)
{
    MorvaneSession &morvane = startWithCalculation();
    morvane.send(QStringLiteral("What is six times seven?"));
    ASSERT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), answer));
    EXPECT_TRUE(waitUntil([&] {
        const auto stored = morvane.storedConversations();
        return stored.size() == 1 &&
               stored.first().value(QLatin1String("title")) == QLatin1String("Scripted title");
    }));
}

TEST_F(MainRoadTest, AnnouncementsOfProgressCanBeSwitchedOff)
{
    MorvaneSession &morvane =
        prepare({ScriptedTurn::saying({"Quiet answer."}), ScriptedTurn::failing(401, "{}")});
    morvane.setSetting(QStringLiteral("announce"), QStringLiteral("false"));
    morvane.start();
    morvane.send(QStringLiteral("first"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Quiet answer.")));
    morvane.send(QStringLiteral("second"));
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
    morvane.send(QStringLiteral("Speak"));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Morvane is responding.")));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Heard by all.")));
}

TEST_F(MainRoadTest, TwentyThousandStreamedWordsArriveWholeOnDiskAndInTheEar)
{
    ScriptedTurn longAnswer;
    longAnswer.steps = {step::Burst{20'000}};
    MorvaneSession &morvane = start({longAnswer});
    const QString words = QStringLiteral("word ").repeated(20'000);
    morvane.send(QStringLiteral("Tell me everything"));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), words));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Conversation summarized as: Scripted title.")));
    const QStringList heard = morvane.ear().heard();
    EXPECT_EQ(heard.mid(1, heard.size() - 2).join(QString()), words);
}

} // namespace
} // namespace morvane
