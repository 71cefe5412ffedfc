#include "MorvaneTest.h"

#include <QFile>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

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
        QFile file(morvane.home() + u"/note.txt"_s);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

TEST_F(SubagentTest, ItsApprovalItsChipAndItsReportAreShownAndHeard)
{
    MorvaneSession &morvane =
        start({launching("IMPLEMENTER"), writing(), ScriptedTurn::saying({"The note is written."}),
               ScriptedTurn::saying({"All done."})});
    morvane.send(u"Have a note written"_s);
    ASSERT_TRUE(morvane.ear().hears(u"A subagent wants to write a file at ~/note.txt. Do you allow it?"_s));
    EXPECT_TRUE(morvane.program().shows(
        [](const AccessibleNode &node) { return node.name.contains(u"Implementer is working…"); }));
    morvane.program().find(u"Allow the action"_s).press();
    // A subagent's report streams into the same message as the answer that follows it.
    ASSERT_TRUE(morvane.ear().hears(u"The note is written.All done."_s));

    EXPECT_EQ(written(morvane), u"from the subagent"_s);
    EXPECT_EQ(lastResult(morvane), u"The note is written."_s);
    EXPECT_THAT(morvane.ear().heard(), Contains(u"A implementer subagent is working on this."_s));
    EXPECT_THAT(morvane.ear().heard(), Contains(u"The implementer subagent finished."_s));
    EXPECT_EQ(morvane.activity().filter(u"Subagent is waiting for approval to "_s).size(), 1);
    EXPECT_EQ(morvane.activity().filter(u"Implementer subagent finished."_s).size(), 1);
}

TEST_F(SubagentTest, ADeniedWriteIsATextForTheSubagentOnly)
{
    MorvaneSession &morvane =
        start({launching("general"), writing(), ScriptedTurn::saying({"I was not allowed to."}),
               ScriptedTurn::saying({"Nothing was written."})});
    morvane.send(u"Have a note written"_s);
    morvane.program().find(u"Deny the action"_s).press();
    ASSERT_TRUE(morvane.ear().hears(u"I was not allowed to.Nothing was written."_s));
    EXPECT_EQ(written(morvane), QString());
    EXPECT_EQ(lastResult(morvane), u"I was not allowed to."_s);
    EXPECT_THAT(morvane.ear().heard(), Contains(u"Action denied. The subagent will continue."_s));
}

} // namespace
} // namespace morvane
