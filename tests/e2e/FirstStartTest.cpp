#include "AccessibleEventCount.h"
#include "LocalModelTest.h"

#include "support/SmallVolume.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Not;

namespace morvane {
namespace {

/// What a user meets who has never started the program.
class FirstStartTest : public LocalModelTest {
protected:
    /// Presses a button of the greeting; the banner below it has one of the same name.
    static void pressInGreeting(MorvaneSession &morvane, const QString &name)
    {
        std::optional<AccessibleNode> button;
        ASSERT_TRUE(waitUntil([&] {
            const auto greeting = morvane.program().tree().first([](const AccessibleNode &node) {
                return node.role == AccessibleRole::dialog && node.name == "Welcome to Morvane"_L1;
            });
            button = greeting ? greeting->first([&name](const AccessibleNode &node) {
                return node.name == name && node.has(AccessibleState::enabled) &&
                       node.has(AccessibleState::showing);
            })
                              : std::nullopt;
            return button.has_value();
        }));
        button->element.press();
    }
    /// The names of what Tab comes by, beginning with what has the focus, until it is there again.
    static QStringList tabStops(MorvaneSession &morvane)
    {
        QStringList names;
        for (int i = 0; i < 20; ++i) {
            const auto focused = morvane.program().focused();
            const QString name = focused ? focused->name : QString();
            if (!names.isEmpty() && name == names.constFirst())
                break;
            names.append(name);
            EXPECT_TRUE(pressUntil(morvane, u"Tab"_s, [&] {
                const auto now = morvane.program().focused();
                return now && now->name != name;
            })) << name.toStdString();
        }
        return names;
    }
};

TEST_F(FirstStartTest, FromNothingToTheAnswerOfAMessageThatWaited)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->runtime.tell(u"pull-holds"_s, "42");
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Welcome to Morvane"_s));
    EXPECT_TRUE(morvane.ear().hears(text(opening)));
    ASSERT_TRUE(morvane.program().shows(u"Download progress 42%"_s));
    EXPECT_TRUE(morvane.program().shows(u"42%"_s));
    morvane.program().find(text(skip)).press();
    EXPECT_TRUE(morvane.ear().hears(u"Skipped local model setup. Open Settings to choose a provider."_s));
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    // With a Return alone, so soon after the answer, the greeting would take it for a second answer.
    morvane.keyboard().type(u"Good morning"_s);
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.hasStatus(u"Waiting for the local model setup to finish…"_s));
    EXPECT_TRUE(morvane.ear().hears(u"Waiting for the local model setup before sending."_s));
    EXPECT_TRUE(morvane.program().shows(u"Stop generating"_s));
    world->runtime.forget(u"pull-holds"_s);
    EXPECT_TRUE(morvane.ear().hears(text(ready)));
    EXPECT_TRUE(morvane.ear().hears(u"Good morning to you."_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Good morning to you."_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Good morning to you."_s));
    EXPECT_THAT(world->runtime.calls(), ElementsAre(u"serve"_s, u"list"_s, u"pull qwen2.5"_s, u"list"_s));
    ASSERT_FALSE(world->runtime.chats().isEmpty());
    EXPECT_EQ(world->runtime.chats().constFirst().value("model"_L1).toString(), u"qwen2.5"_s);
}

TEST_F(FirstStartTest, TheKeyboardBeginsWhenTheModelIsReady)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->runtime.tell(u"pull-holds"_s, "42");
    morvane.start();
    ASSERT_TRUE(morvane.program().shows(u"Download progress 42%"_s));
    EXPECT_TRUE(morvane.program().shows(u"Get started. Wait until the local model is ready."_s));
    EXPECT_THAT(tabStops(morvane), ElementsAre(text(skip), text(cancelSetup)));
    world->runtime.forget(u"pull-holds"_s);
    ASSERT_TRUE(morvane.program().focuses(text(getStarted)));
    ASSERT_TRUE(pressUntil(morvane, u"Return"_s, [&] {
        const auto focused = morvane.program().focused();
        return focused && focused->name == "Message Morvane"_L1;
    }));
    EXPECT_TRUE(morvane.ear().hears(u"Let's get started. Ask me anything."_s));
    EXPECT_TRUE(morvane.program().hides(u"Welcome to Morvane"_s));
    morvane.keyboard().press(u"End"_s); // Return alone may be another press of the button
    morvane.send(u"Good morning"_s);
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Good morning to you."_s));
    morvane.quit();
    morvane.start();
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    EXPECT_FALSE(morvane.program().tree(TreePart::whole).first([](const AccessibleNode &node) {
        return node.name == "Welcome to Morvane"_L1;
    }));
}

TEST_F(FirstStartTest, TheDownloadIsStoppedAndGoesOnWhereItWas)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->holdDownload();
    morvane.start();
    morvane.program().find(text(cancelSetup)); // before anything has come
    ASSERT_TRUE(downloads(morvane));
    pressInGreeting(morvane, text(cancelSetup));
    ASSERT_TRUE(
        morvane.program().shows(u"This downloads a small model (about 5 GB) that runs fully on your Mac."_s));
    EXPECT_TRUE(morvane.hasStatus(u"Local model not ready"_s));
    EXPECT_EQ(world->site.requests().size(), 1);
    pressInGreeting(morvane, text(install));
    EXPECT_TRUE(becomesReady(morvane));
    EXPECT_EQ(world->site.requests().size(), 2);
    EXPECT_GT(world->lastRangeStart(), 0);
}

TEST_F(FirstStartTest, AProgramThatWasKilledInMidDownloadGoesOnWithIt)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->holdDownload();
    morvane.start();
    ASSERT_TRUE(downloads(morvane));
    morvane.program().process().kill();
    morvane.ear().forget();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Welcome to Morvane"_s)) << "nothing was begun or skipped";
    EXPECT_TRUE(becomesReady(morvane));
    EXPECT_EQ(world->site.requests().size(), 2);
    EXPECT_GT(world->lastRangeStart(), 0);
}

TEST_F(FirstStartTest, AProgramThatEndedInMidDownloadGoesOnWithIt)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->holdDownload();
    morvane.start();
    ASSERT_TRUE(downloads(morvane));
    morvane.program().find(text(skip)).press();
    ASSERT_TRUE(morvane.program().hides(u"Welcome to Morvane"_s));
    morvane.quit();
    morvane.ear().forget();
    morvane.start();
    EXPECT_TRUE(becomesReady(morvane));
    EXPECT_GT(world->lastRangeStart(), 0);
}

TEST_F(FirstStartTest, WithoutANetworkThereIsAReasonAndAWayOn)
{
    MorvaneSession &morvane = newcomer();
    world->cutTheNetwork();
    morvane.start();
    const auto reason = u"Ollama could not be downloaded. The server could not be reached."_s;
    EXPECT_TRUE(morvane.ear().hears(u"Local model setup failed. "_s + reason));
    EXPECT_TRUE(morvane.program().shows(u"Local model error: "_s + reason));
    morvane.program().find(text(skip)).press();
    ASSERT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    morvane.quit();
    morvane.ear().forget();
    morvane.start();
    EXPECT_TRUE(morvane.ear().hears(u"Local model setup failed. "_s + reason));
    EXPECT_THAT(morvane.ear().heard(), Not(Contains(text(opening)))) << "one sentence, not two";
    EXPECT_TRUE(morvane.program().shows(u"Connect a free AI provider"_s));
}

TEST_F(FirstStartTest, ARuntimeThatIsThereIsUsed)
{
    MorvaneSession &morvane = newcomer();
    world->haveProgram("qwen2.5:latest\n");
    morvane.start();
    EXPECT_TRUE(morvane.program().focuses(text(getStarted)));
    EXPECT_TRUE(world->site.requests().isEmpty());
    const QStringList calls = world->runtime.calls();
    ASSERT_GE(calls.size(), 2);
    EXPECT_EQ(calls.first(), u"serve"_s);
    // Its server may come up while the start still asks for one, and then tells its models once more.
    EXPECT_THAT(calls.sliced(1), Each(u"list"_s));
}

TEST_F(FirstStartTest, ASmallDiskIsToldBeforeAnyDownload)
{
    MorvaneSession &morvane = newcomer();
    const SmallVolume volume(morvane.home(), 64 * 1024 * 1024);
    ASSERT_TRUE(volume.isMounted());
    world->offerRuntime();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows([](const AccessibleNode &node) {
        return node.name.startsWith(
            "Local model error: Not enough free disk space to install Ollama. You need about 1.4 GB free, "
            "but only "_L1);
    }));
    EXPECT_TRUE(world->site.requests().isEmpty());
    morvane.quit();
}

TEST_F(FirstStartTest, AStepOfTheDownloadTellsReadersLittle)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->runtime.tell(u"pull-holds"_s, "42");
    morvane.start();
    ASSERT_TRUE(morvane.program().shows(u"Download progress 42%"_s));
    morvane.program().find(text(skip)).press();
    ASSERT_TRUE(morvane.program().hides(u"Welcome to Morvane"_s));
    AccessibleEventCount events(morvane);
    events.begin();
    world->runtime.tell(u"pull-holds"_s, "43");
    ASSERT_TRUE(morvane.program().shows(u"Download progress 43%"_s));
    const QStringList told = events.sinceBegin();
    // What has changed: the lines of the card and of the banner, and both bars by name and value.
    EXPECT_LE(told.size(), 6) << told.join(u'\n').toStdString();
}

TEST_F(FirstStartTest, NoControlOfTheGreetingLacksAName)
{
    MorvaneSession &morvane = newcomer();
    world->offerRuntime();
    world->runtime.tell(u"pull-holds"_s, "42");
    morvane.start();
    ASSERT_TRUE(morvane.program().shows(u"Download progress 42%"_s));
    EXPECT_THAT(nameless(morvane), testing::IsEmpty());
}

} // namespace
} // namespace morvane
