#include "MorvaneTest.h"

#include <QFile>
#include <gmock/gmock.h>

namespace morvane {
namespace {

using testing::Contains;

/// A piece of work that the model hands to a subagent.
class SubagentTest : public MorvaneTest {
protected:
    static ScriptedTurn launching(const std::string &role)
    {
        return callingTool("task", R"({"description":"Write the note","subagent":")" + role + R"("})");
    }
    static ScriptedTurn writing()
    {
        return callingTool("write_file", R"({"path":"~/note.txt","content":"from the subagent"})");
    }
    static QString written(const MorvaneSession &morvane)
    {
        QFile file(morvane.home() + QStringLiteral("/note.txt"));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

TEST_F(SubagentTest, ItsApprovalItsChipAndItsReportAreShownAndHeard)
{
    MorvaneSession &morvane =
        start({launching("IMPLEMENTER"), writing(), ScriptedTurn::saying({"The note is written."}),
               ScriptedTurn::saying({"All done."})});
    morvane.send(QStringLiteral("Have a note written"));
    ASSERT_TRUE(morvane.ear().hears(
        QStringLiteral("A subagent wants to write a file at ~/note.txt. Do you allow it?")));
    EXPECT_TRUE(morvane.program().shows(
        [](const AccessibleNode &node) { return node.name.contains(u"Implementer is working…"); }));
    morvane.program().find(QStringLiteral("Allow the action")).press();
    // A subagent's report streams into the same message as the answer that follows it.
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("The note is written.All done.")));

    EXPECT_EQ(written(morvane), QStringLiteral("from the subagent"));
    EXPECT_EQ(lastResult(morvane), QStringLiteral("The note is written."));
    EXPECT_THAT(morvane.ear().heard(),
                Contains(QStringLiteral("A implementer subagent is working on this.")));
    EXPECT_THAT(morvane.ear().heard(), Contains(QStringLiteral("The implementer subagent finished.")));
    EXPECT_EQ(morvane.activity().filter(QStringLiteral("Subagent is waiting for approval to ")).size(), 1);
    EXPECT_EQ(morvane.activity().filter(QStringLiteral("Implementer subagent finished.")).size(), 1);
}

TEST_F(SubagentTest, ADeniedWriteIsATextForTheSubagentOnly)
{
    MorvaneSession &morvane =
        start({launching("general"), writing(), ScriptedTurn::saying({"I was not allowed to."}),
               ScriptedTurn::saying({"Nothing was written."})});
    morvane.send(QStringLiteral("Have a note written"));
    morvane.program().find(QStringLiteral("Deny the action")).press();
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("I was not allowed to.Nothing was written.")));
    EXPECT_EQ(written(morvane), QString());
    EXPECT_EQ(lastResult(morvane), QStringLiteral("I was not allowed to."));
    EXPECT_THAT(morvane.ear().heard(),
                Contains(QStringLiteral("Action denied. The subagent will continue.")));
}

} // namespace
} // namespace morvane
