#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QJsonArray>
#include <QSet>
#include <gmock/gmock.h>

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
            morvane.keyboard().press(QStringLiteral("Tab"));
            std::optional<AccessibleNode> after;
            EXPECT_TRUE(waitUntil([&] {
                after = morvane.program().focused();
                return after && after->element.path() != before->element.path();
            })) << "Tab does not leave "
                << names.last().toStdString();
            if (after && after->element.path() == before->element.path()) {
                break;
            }
            before = after;
        }
        return names;
    }

    /// Everything that can take the focus or be pressed but has no name.
    static QStringList nameless(const AccessibleNode &tree)
    {
        QStringList found;
        tree.visit([&](const AccessibleNode &node) {
            const bool isControl =
                node.role == AccessibleRole::pushButton || node.role == AccessibleRole::checkBox ||
                node.role == AccessibleRole::comboBox || node.role == AccessibleRole::entry ||
                node.role == AccessibleRole::listItem || node.role == AccessibleRole::menuItem ||
                node.has(AccessibleState::focusable);
            if (isControl && node.has(AccessibleState::showing) && node.name.isEmpty()) {
                found.append(node.description().trimmed());
            }
        });
        return found;
    }
};

TEST_F(KeyboardTest, TabReachesEveryControlOfAnEmptyWindow)
{
    MorvaneSession &morvane = start({});
    ASSERT_TRUE(morvane.program().focuses(QStringLiteral("Message Morvane")));
    const QStringList names = tabOnceRound(morvane);
    EXPECT_THAT(names,
                IsSupersetOf({QStringLiteral("Message Morvane"), QStringLiteral("New conversation"),
                              QStringLiteral("Settings"), QStringLiteral("Try asking: What can you do?"),
                              QStringLiteral("Try asking: Search the web for the latest macOS version")}));
    EXPECT_THAT(names.filter(QStringLiteral("(no name")), IsEmpty());
}

TEST_F(KeyboardTest, TabReachesRowsConversationsAndTheirButtons)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    morvane.send(QStringLiteral("A question"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Conversation summarized as: Scripted title.")));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Delete Scripted title")));
    const QStringList names = tabOnceRound(morvane);
    EXPECT_THAT(names.filter(QStringLiteral("(no name")), IsEmpty());
    EXPECT_THAT(names, IsSupersetOf({QStringLiteral("Message Morvane"), QStringLiteral("New conversation")}));
}

TEST_F(KeyboardTest, NoControlLacksAName)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    EXPECT_THAT(nameless(morvane.program().tree()), IsEmpty());
    morvane.send(QStringLiteral("A question"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Conversation summarized as: Scripted title.")));
    EXPECT_THAT(nameless(morvane.program().tree()), IsEmpty());
}

TEST_F(KeyboardTest, ReturnOnAnEmptyDraftDoesNothing)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    ASSERT_TRUE(morvane.program().focuses(QStringLiteral("Message Morvane")));
    morvane.keyboard().press(QStringLiteral("Return"));
    morvane.keyboard().type(QStringLiteral("hi"));
    morvane.keyboard().press(QStringLiteral("Return"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Morvane said An answer.")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("You said hi")));
    EXPECT_EQ(morvane.model().requests().front().turn, 0);
    EXPECT_EQ(morvane.storedConversations().first().value(QLatin1String("messages")).toArray().size(), 2);
}

TEST_F(KeyboardTest, TheSendButtonTellsWhyItCannotSend)
{
    MorvaneSession &morvane = start({});
    const AccessibleElement disabled =
        morvane.program().find(QStringLiteral("Send message. Add a message or an attachment first."));
    EXPECT_FALSE(disabled.has(AccessibleState::enabled));
    morvane.program().find(QStringLiteral("Message Morvane")).setText(QStringLiteral("Hello"));
    EXPECT_TRUE(morvane.program().find(QStringLiteral("Send message")).has(AccessibleState::enabled));
}

} // namespace
} // namespace morvane
