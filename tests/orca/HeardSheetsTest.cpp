#include "HeardTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a user hears who has to decide or to answer.
class HeardSheetsTest : public HeardTest {
protected:
    static ScriptedTurn writing(const std::string &path)
    {
        return callingTool("write_file", R"({"path":")" + path + R"(","content":"x"})");
    }
    static ScriptedTurn asking(const std::string &question)
    {
        return callingTool("ask_user", R"({"question":")" + question + R"(","options":["Red","Blue"]})");
    }
};

TEST_F(HeardSheetsTest, AnApprovalIsReadOutOnceAndTheNextOneAsANewDialog)
{
    MorvaneSession &morvane = listen(
        {writing("/nowhere/one.txt"), writing("/nowhere/two.txt"), ScriptedTurn::saying({"Then not."})});
    const auto advice =
        u"Action requires approval dialog Only allow this if you trust what it will do on your "
        "Mac. You can deny it and the assistant will continue without doing it."_s;
    send(morvane, u"Write two notes"_s);
    qsizetype denied = 0;
    for (const auto *name : {"one", "two"}) {
        const QString what = u"write a file at /nowhere/%1.txt."_s.arg(QString::fromLatin1(name));
        const QString asked =
            u"notification Morvane wants to write a file at /nowhere/%1.txt. Do you allow it?"_s.arg(
                QString::fromLatin1(name));
        const QStringList expected{advice, u"Action to approve read only text."_s, what, asked};
        ASSERT_TRUE(reader().hearsInOrder(expected));
        for (const QString &piece : expected)
            EXPECT_EQ(times(piece), 1) << piece.toStdString();
        reader().forget();
        // The next request has controls of the same names.
        ASSERT_TRUE(pressUntil(morvane, u"Escape"_s, [&] {
            return morvane.ear().heard().count(u"Action denied. The assistant will continue."_s) > denied;
        }));
        ++denied;
        ASSERT_TRUE(reader().hears(u"notification Action denied. The assistant will continue."_s));
    }
    EXPECT_TRUE(reader().hears(u"notification Then not."_s));
    EXPECT_EQ(times(u"notification Action denied. The assistant will continue."_s), 1);
}

TEST_F(HeardSheetsTest, ADestructiveRequestIsHeardAsOne)
{
    MorvaneSession &morvane = listen({callingTool("run_shell_command", R"({"command":"rm -rf /nowhere"})"),
                                      ScriptedTurn::saying({"Left alone."})});
    send(morvane, u"Clean up"_s);
    const QStringList expected{
        u"Destructive action requires approval dialog This action can delete data or be hard to undo. Only "
        "allow it if you are sure it is safe."_s,
        u"Action to approve read only text."_s,
        u"notification Morvane wants to run the command: rm -rf /nowhere. Warning: this is a destructive "
        "action that may delete data or be hard to undo. Do you allow it?"_s};
    ASSERT_TRUE(reader().hearsInOrder(expected));
    ASSERT_TRUE(pressUntil(morvane, u"Tab"_s, [&] {
        const auto focused = morvane.program().focused();
        return focused && focused->name == "Deny the action"_L1;
    }));
    ASSERT_TRUE(reader().hears(u"Deny the action push button."_s));
    morvane.keyboard().press(u"Tab"_s);
    ASSERT_TRUE(reader().hears(u"Allow this destructive action push button."_s));
    for (const QString &piece : expected)
        EXPECT_EQ(times(piece), 1) << piece.toStdString();
    reader().forget();
    ASSERT_TRUE(answer(morvane, u"Escape"_s, u"Deny the action"_s));
    EXPECT_TRUE(reader().hearsInOrder(
        {u"notification Action denied. The assistant will continue."_s, u"notification Left alone."_s}));
}

TEST_F(HeardSheetsTest, TwoQuestionsInARowAreTwoDialogs)
{
    MorvaneSession &morvane =
        listen({asking("Which colour?"), asking("Which other?"), ScriptedTurn::saying({"Painted."})});
    send(morvane, u"Paint it"_s);
    for (const auto &question : {u"Which colour?"_s, u"Which other?"_s}) {
        const QString asks = u"Morvane asks: "_s + question;
        const QStringList expected{asks + u" dialog"_s, u"Answer: Red push button."_s,
                                   u"notification "_s + asks};
        ASSERT_TRUE(reader().hearsInOrder(expected));
        for (const QString &piece : expected)
            EXPECT_EQ(times(piece), 1) << piece.toStdString();
        reader().forget();
        ASSERT_TRUE(answer(morvane, u"Return"_s, asks));
    }
    EXPECT_TRUE(reader().hears(u"notification Painted."_s));
}

TEST_F(HeardSheetsTest, CancellingIsHeard)
{
    const auto cancelled = u"notification Generation cancelled."_s;
    ScriptedTurn endless;
    endless.steps = {step::Text{"It begins"}, step::Stall{}};
    MorvaneSession &morvane = listen({endless});
    send(morvane, u"Go on"_s);
    ASSERT_TRUE(reader().hears(u"notification Morvane is responding."_s));
    reader().forget();
    // The command tells it and, a moment later, the end of the work.
    morvane.keyboard().press(u"Escape"_s);
    ASSERT_TRUE(waitUntil([&] { return times(cancelled) == 2; }));
    EXPECT_THAT(heard(), testing::ElementsAre(cancelled, cancelled));
}

} // namespace
} // namespace morvane
