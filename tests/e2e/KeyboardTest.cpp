#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QJsonArray>
#include <QSet>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::IsEmpty;
using testing::IsSupersetOf;

class KeyboardTest : public MorvaneTest {
protected:
    /// The names of what has the focus after each press of Tab, once round; what has no name is told by its
    /// place in the tree.
    QStringList tabOnceRound(MorvaneSession &morvane)
    {
        QStringList names;
        QSet<QString> visited;
        auto before = morvane.program().focused();
        EXPECT_TRUE(before.has_value());
        while (before && !visited.contains(before->element.path())) {
            visited.insert(before->element.path());
            names.append(before->name.isEmpty() ? "(no name: " + before->description().trimmed() + ')'
                                                : before->name);
            before = moveFocus(morvane, u"Tab"_s);
            EXPECT_TRUE(before.has_value()) << "Tab does not leave " << names.last().toStdString();
        }
        return names;
    }
};

TEST_F(KeyboardTest, TabReachesEveryControlOfAnEmptyWindow)
{
    MorvaneSession &morvane = start({});
    ASSERT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    const QStringList names = tabOnceRound(morvane);
    EXPECT_THAT(names, IsSupersetOf({u"Message Morvane"_s, u"New conversation"_s, u"Settings"_s,
                                     u"Try asking: What can you do?"_s,
                                     u"Try asking: Search the web for the latest macOS version"_s}));
    EXPECT_THAT(names.filter(u"(no name"_s), IsEmpty());
}

TEST_F(KeyboardTest, TabReachesRowsConversationsAndTheirButtons)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    morvane.send(u"A question"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    ASSERT_TRUE(morvane.program().shows(u"Delete Scripted title"_s));
    const QStringList names = tabOnceRound(morvane);
    EXPECT_THAT(names.filter(u"(no name"_s), IsEmpty());
    EXPECT_THAT(names, IsSupersetOf({u"Message Morvane"_s, u"New conversation"_s}));
}

TEST_F(KeyboardTest, NoControlLacksAName)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    EXPECT_THAT(nameless(morvane), IsEmpty());
    morvane.send(u"A question"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    EXPECT_THAT(nameless(morvane), IsEmpty());
}

TEST_F(KeyboardTest, NothingIsSaidTwiceAndNoPaneIsLayered)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    QStringList twice;
    const auto look = [&] {
        morvane.program().tree(TreePart::whole).visit([&](const AccessibleNode &node) {
            EXPECT_NE(node.role, AccessibleRole::layeredPane);
            // The description of a field without one is its placeholder, and readers know that.
            const bool isField = node.role == AccessibleRole::text;
            if (!isField && !node.name.isEmpty() && node.has(AccessibleState::showing) &&
                node.element.description().startsWith(node.name))
                twice.append(node.name);
        });
    };
    look();
    morvane.send(u"A question"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    look();
    morvane.program().find(u"Settings"_s, AccessibleRole::pushButton).press();
    ASSERT_TRUE(morvane.program().shows(u"Morvane Settings"_s));
    look();
    EXPECT_THAT(twice, IsEmpty());
}

TEST_F(KeyboardTest, ReturnOnAnEmptyDraftDoesNothing)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    ASSERT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    morvane.keyboard().press(u"Return"_s);
    morvane.keyboard().type(u"hi"_s);
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said An answer."_s));
    EXPECT_TRUE(morvane.program().shows(u"You said hi"_s));
    EXPECT_EQ(morvane.model().requests().front().turn, 0);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"An answer."_s));
    EXPECT_EQ(morvane.storedConversations().first().value("messages"_L1).toArray().size(), 2);
}

TEST_F(KeyboardTest, TheSendButtonTellsWhyItCannotSend)
{
    MorvaneSession &morvane = start({});
    const AccessibleElement disabled =
        morvane.program().find(u"Send message. Add a message or an attachment first."_s);
    EXPECT_FALSE(disabled.has(AccessibleState::enabled));
    morvane.program().find(u"Message Morvane"_s).setText(u"Hello"_s);
    EXPECT_TRUE(morvane.program().find(u"Send message"_s).has(AccessibleState::enabled));
}

TEST_F(KeyboardTest, WordsAreFoundByKeyboardAlone)
{
    MorvaneSession &morvane = startWithAnswer("An **answer** about birds.");
    morvane.keyboard().press(u"Ctrl+F"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Find in conversation"_s));
    morvane.keyboard().type(u"birds"_s);
    EXPECT_TRUE(morvane.ear().hears(u"1 of 2. You: Which birds?"_s));
    EXPECT_TRUE(morvane.program().shows(u"1 of 2"_s));
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.ear().hears(u"2 of 2. Morvane: An answer about birds."_s));
    morvane.keyboard().press(u"Shift+Return"_s);
    EXPECT_TRUE(morvane.program().shows(u"1 of 2"_s));
    morvane.keyboard().type(u"x"_s);
    EXPECT_TRUE(morvane.ear().hears(u"No matches."_s));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    EXPECT_TRUE(morvane.program().hides(u"No matches"_s));
    EXPECT_EQ(draft(morvane), QString());
}

TEST_F(KeyboardTest, WhatIsTypedInTheConversationIsWrittenIntoTheMessage)
{
    MorvaneSession &morvane = startWithAnswer();
    ASSERT_TRUE(moveFocus(morvane, u"Shift+Tab"_s));
    morvane.keyboard().type(u"hello"_s);
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    EXPECT_TRUE(waitUntil([&] { return draft(morvane) == "hello"_L1; })) << draft(morvane).toStdString();
}

TEST_F(KeyboardTest, TheTextsSizeIsToldAndRemembered)
{
    MorvaneSession &morvane = startWithAnswer();
    morvane.keyboard().press(u"Ctrl+="_s);
    EXPECT_TRUE(morvane.ear().hears(u"Text size 110 percent."_s));
    morvane.quit();
    morvane.start();
    morvane.keyboard().press(u"Ctrl+="_s);
    EXPECT_TRUE(morvane.ear().hears(u"Text size 125 percent."_s));
    morvane.keyboard().press(u"Ctrl+0"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Text size 100 percent."_s));
}

} // namespace
} // namespace morvane
