#include "HeardTest.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a user hears of a model that works with the desktop.
using HeardDesktopTest = HeardTest;

/// Waits before its answer: a reader that has much to read at once says some of it out of turn.
ScriptedTurn held(ScriptedTurn turn)
{
    turn.steps.insert(turn.steps.begin(), step::Stall{});
    return turn;
}

TEST_F(HeardDesktopTest, EachActOnTheDesktopIsHeardOnceInWordsBeforeItIsDone)
{
    MorvaneSession &morvane = listen({held(callingTool("capture_screen", "{}")),
                                      held(callingTool("mouse_move", R"({"x":600,"y":400})")),
                                      held(callingTool("clipboard_set", R"({"text":"amber"})")),
                                      held(callingTool("press_key", R"({"key":"command+v"})")),
                                      held(callingTool("ax_type", R"({"index":3,"text":"a lantern"})")),
                                      held(ScriptedTurn::saying({"That is all."}))});
    send(morvane, u"Work with the screen"_s);
    const QStringList expected{u"notification Morvane is responding."_s,
                               u"notification Assistant is running: look at the screen."_s,
                               u"notification Assistant is running: use the mouse_move tool."_s,
                               u"notification Assistant is running: use the clipboard_set tool."_s,
                               u"notification Assistant is running: press command+v."_s,
                               u"notification Assistant is running: type \"a lantern\" into element [3]."_s,
                               u"notification That is all."_s};
    for (const QString &piece : expected) {
        ASSERT_TRUE(reader().hears(piece)) << piece.toStdString();
        morvane.model().release();
    }
    ASSERT_TRUE(reader().hearsInOrder(expected));
    for (const QString &piece : expected)
        EXPECT_EQ(times(piece), 1) << piece.toStdString();
}

} // namespace
} // namespace morvane
