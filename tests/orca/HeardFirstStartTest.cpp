#include "BuildTree.h"
#include "HeardTest.h"
#include "RuntimeWorld.h"

#include <QRegularExpression>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using testing::ElementsAreArray;

namespace morvane {
namespace {

/// What a newcomer hears, from the first start to the first answer.
class HeardFirstStartTest : public HeardTest {
protected:
    void TearDown() override
    {
        HeardTest::TearDown();
        m_world.reset();
    }

    MorvaneSession &newcomer()
    {
        MorvaneSession &morvane =
            prepareProgram(build_tree::morvaneOnLoopback(), {}, Hearing::notifications, u"it's a home"_s);
        morvane.forgetSettings();
        m_world = std::make_unique<RuntimeWorld>(morvane);
        m_world->offerRuntime();
        m_world->runtime.tell(u"pull-holds"_s, "42");
        return morvane;
    }
    void letTheModelCome() { m_world->runtime.forget(u"pull-holds"_s); }

private:
    std::unique_ptr<RuntimeWorld> m_world;
};

TEST_F(HeardFirstStartTest, TheRoadToTheFirstAnswerIsHeardAsDocumented)
{
    MorvaneSession &morvane = newcomer();
    listenTo(morvane);
    const auto settingUp =
        u"notification Setting up the local model. This is a one-time download of a few gigabytes."_s;
    ASSERT_TRUE(reader().hears(settingUp));
    ASSERT_TRUE(morvane.program().shows(u"Download progress 42%"_s));
    // The setup may be ahead of a reader that still reads out the greeting.
    ASSERT_TRUE(reader().hears(
        u"Skip local model setup. You can choose a provider in Settings later. push button."_s));
    ASSERT_TRUE(pressUntil(morvane, u"Tab"_s, [&] {
        const auto focused = morvane.program().focused();
        return focused && focused->name == "Cancel the local model setup"_L1;
    }));
    ASSERT_TRUE(reader().hears(u"Cancel the local model setup push button."_s));
    letTheModelCome();
    ASSERT_TRUE(reader().hears(u"notification The local model is ready. You can start chatting."_s));
    ASSERT_TRUE(answer(morvane, u"Return"_s, u"Get started with the local model"_s));
    ASSERT_TRUE(reader().hears(u"notification Let's get started. Ask me anything."_s));
    send(morvane, u"Good morning"_s);
    // Right after the answer Return may have been taken for another press of it.
    ASSERT_TRUE(pressUntil(morvane, u"Return"_s, [&] { return draft(morvane).isEmpty(); }));
    ASSERT_TRUE(reader().hears(u"notification Good morning to you."_s));
    QStringList pieces = heard();
    // The reader tells the bar's value now and then, and what the test writes into the field.
    static const QRegularExpression percent(u"^\\d+ percent\\.$"_s);
    pieces.removeIf(
        [](const QString &piece) { return percent.match(piece).hasMatch() || piece == "Good morning"_L1; });
    // The window and the runtime begin at the same time: this comes before or after the greeting, and once.
    QStringList documented = documentedIn(u"first-run.md"_s);
    EXPECT_EQ(documented.removeAll(settingUp), 1);
    EXPECT_EQ(pieces.removeAll(settingUp), 1);
    EXPECT_THAT(pieces, ElementsAreArray(documented));
}

} // namespace
} // namespace morvane
