#pragma once

#include "support/MorvaneSession.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace morvane {

/// Base of the tests of the whole program. Each test gets an empty home on the desktop that they share; one
/// that fails leaves a picture of the screen, the accessibility tree, the announcements and the logs in
/// build/…/evidence/{test}.
class MorvaneTest : public testing::Test {
public:
    static void startDesktop();
    static void endDesktop();

protected:
    using Hearing = AnnouncementRecorder::Hearing;

    /// Starts the program beside a model that answers with these turns, one after the other.
    MorvaneSession &start(std::vector<ScriptedTurn> turns);
    /// The same, not started yet.
    MorvaneSession &prepare(std::vector<ScriptedTurn> turns, Hearing hearing = Hearing::announcements);
    /// The same beside a model that answers with a whole script.
    MorvaneSession &prepareScript(ModelScript script, Hearing hearing = Hearing::announcements);

    /// The same with another program and a home that is called so.
    MorvaneSession &prepareProgram(const QString &program, ModelScript script, Hearing hearing,
                                   const QString &homeName);

    void TearDown() override;

    /// A session that Control+Q ends. Without the search for leaks: the toolkit asks readers about each key
    /// and drops those that it still waits for when the program ends.
    MorvaneSession &startToBeEndedByKey();

    /// Presses a key until it has done what it should: a sheet takes no keys before the user has paused for a
    /// moment.
    static bool pressUntil(MorvaneSession &morvane, const QString &key, const std::function<bool()> &isDone);

    /// Presses a key that moves the focus: what has it then, or nothing if nothing else came to have it.
    static std::optional<AccessibleNode> moveFocus(MorvaneSession &morvane, const QString &key);

    /// Starts the program and has a question about birds answered.
    MorvaneSession &startWithAnswer(const std::string &answer = "An answer about birds.");
    /// What stands in the field for the message.
    static QString draft(MorvaneSession &morvane);

    /// Waits until the settings take keys.
    static void openSettings(MorvaneSession &morvane);
    static void closeSettings(MorvaneSession &morvane);

    /// What is on show and can take the focus or be pressed, or tells of progress, but has no name.
    static QStringList nameless(MorvaneSession &morvane);

    /// What the model was told last: the result of a tool call, as long as nothing follows it.
    static QString lastResult(MorvaneSession &morvane);

private:
    static std::unique_ptr<PrivateDesktop> s_desktop;
    std::unique_ptr<MorvaneSession> m_session;
};

/// A turn that calls one tool with arguments given as JSON.
ScriptedTurn callingTool(const std::string &name, const std::string &arguments);

} // namespace morvane
