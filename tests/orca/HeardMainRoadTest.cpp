#include "HeardTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAreArray;

const auto row = u"Open Scripted title, updated …, 2 messages."_s;
const auto titled = u"notification Conversation summarized as: Scripted title."_s;

class HeardMainRoadTest : public HeardTest {
protected:
    static ScriptedTurn calculating() { return callingTool("calculate", R"({"expression":"6*7"})"); }
};

TEST_F(HeardMainRoadTest, ARequestIsHeardAsDocumented)
{
    MorvaneSession &morvane = listen({calculating(), ScriptedTurn::saying({"Six times ", "seven is 42."})});
    send(morvane, u"What is six times seven?"_s);
    ASSERT_TRUE(reader().hears(titled));
    const QStringList lastPieces{row,
                                 u"Delete Scripted title push button."_s,
                                 u"Morvane Browser push button."_s,
                                 u"New conversation push button."_s,
                                 u"Settings push button."_s,
                                 u"Accessibility actions: copy, read again."_s,
                                 u"Adds images, PDFs, or text files to your next message."_s,
                                 u"Type your message, then press Return to send it."_s};
    ASSERT_NO_FATAL_FAILURE(goesBy(morvane, lastPieces));
    EXPECT_THAT(heard(), ElementsAreArray(documentedIn(u"heard.md"_s)));
}

TEST_F(HeardMainRoadTest, AConversationIsHeardWhenItIsOpenedAgain)
{
    MorvaneSession &morvane = listen({ScriptedTurn::saying({"An answer."})});
    send(morvane, u"A question"_s);
    ASSERT_TRUE(reader().hears(titled));
    reader().forget();
    ASSERT_TRUE(moves(morvane, u"Ctrl+N"_s, u"notification New conversation started."_s));
    ASSERT_TRUE(moves(morvane, u"Tab"_s, row));
    ASSERT_TRUE(moves(morvane, u"Return"_s, u"notification Opened Scripted title."_s));
    EXPECT_THAT(heard(),
                ElementsAreArray({u"notification New conversation started."_s, u"Conversations."_s,
                                  u"List with 1 item."_s, row, u"notification Opened Scripted title."_s}));
}

TEST_F(HeardMainRoadTest, SettingsAreHeardControlByControl)
{
    MorvaneSession &morvane = listen({});
    reader().forget();
    ASSERT_TRUE(moves(morvane, u"Ctrl+,"_s, u"selected radio button"_s));
    const QStringList stops{u"Preset combo box."_s,
                            u"API base URL text."_s,
                            u"Model name on your server text."_s,
                            u"Custom API key password text."_s,
                            u"Show API key push button."_s,
                            u"Creativity temperature slider 0.7."_s,
                            u"Keep going until the task is done check box not checked."_s,
                            u"Maximum steps per task 25 steps spin button."_s,
                            u"Allow tools check box checked."_s,
                            u"Speak responses check box checked."_s};
    ASSERT_NO_FATAL_FAILURE(goesBy(morvane, stops));
    const QStringList sections{u"Morvane Settings frame."_s, u"AI Provider panel."_s, u"Behaviour panel."_s,
                               u"Accessibility panel."_s};
    EXPECT_TRUE(reader().hearsInOrder(sections));
    for (const QString &piece : sections + stops)
        EXPECT_EQ(times(piece), 1) << piece.toStdString();
    // The notes of a section are there to be looked up, and not read out with its name.
    for (const QString &piece : heard())
        EXPECT_LT(piece.size(), 70) << piece.toStdString();
}

} // namespace
} // namespace morvane
