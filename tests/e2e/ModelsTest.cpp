#include "LocalModelTest.h"

#include "support/WaitUntil.h"

#include <QJsonArray>
#include <csignal>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a user does with local models later.
class ModelsTest : public LocalModelTest {
protected:
    /// The first of the recommended models that can be downloaded; which they are depends on this computer.
    static QString modelOnOffer(MorvaneSession &morvane)
    {
        QString name;
        morvane.program().find(
            [&name](const AccessibleNode &node) {
                if (node.role != AccessibleRole::pushButton || !node.name.startsWith("Download "_L1))
                    return false;
                name = node.name.sliced(9);
                return true;
            },
            u"that downloads a model"_s);
        return name;
    }
    bool isPullingOver() const
    {
        const auto process = static_cast<pid_t>(world->runtime.known(u"pulling"_s).trimmed().toLongLong());
        return process > 1 && waitUntil([process] { return ::kill(process, 0) != 0; });
    }
    /// A user whose model is being downloaded and stays at 42 percent until "pull-holds" is forgotten.
    MorvaneSession &startDownloading()
    {
        MorvaneSession &morvane = user();
        world->haveProgram("");
        world->runtime.tell(u"pull-holds"_s, "42");
        morvane.start();
        EXPECT_TRUE(morvane.program().shows(u"Download progress 42%"_s));
        return morvane;
    }
    MorvaneSession &startWithWaitingMessage()
    {
        MorvaneSession &morvane = startDownloading();
        morvane.send(u"Good morning"_s);
        EXPECT_TRUE(morvane.hasStatus(u"Waiting for the local model setup to finish…"_s));
        return morvane;
    }
    QString modelInSettings(const MorvaneSession &morvane) const
    {
        for (const QByteArray &line : morvane.settingsText().split('\n'))
            if (line.startsWith("model="))
                return QString::fromUtf8(line.sliced(6));
        return {};
    }
};

TEST_F(ModelsTest, ASecondModelIsDownloadedUsedAndDeleted)
{
    MorvaneSession &morvane = user();
    world->haveProgram("qwen2.5:latest\n");
    morvane.start();
    ASSERT_TRUE(morvane.program().shows(u"Local model is ready — no limits, nothing leaves this Mac."_s));
    openSettings(morvane);
    const QString second = modelOnOffer(morvane);
    morvane.program().find(u"Download "_s + second).press();
    EXPECT_TRUE(morvane.ear().hears(u"Downloading the %1 model. This may take a few minutes."_s.arg(second)));
    EXPECT_TRUE(morvane.ear().hears(u"The %1 model is installed and now active."_s.arg(second)));
    EXPECT_TRUE(morvane.program().shows(second + u" is active"_s));
    EXPECT_TRUE(waitUntil([&] { return modelInSettings(morvane) == second; }));
    closeSettings(morvane);
    morvane.send(u"Good morning"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said Good morning to you."_s));
    EXPECT_EQ(world->runtime.chats().constFirst().value("model"_L1).toString(), second);
    openSettings(morvane);
    morvane.program().find(u"Delete the %1 model from this Mac"_s.arg(second)).press();
    morvane.program().find(u"Delete"_s, AccessibleRole::pushButton).press();
    EXPECT_TRUE(morvane.ear().hears(u"The %1 model was deleted."_s.arg(second)));
    EXPECT_TRUE(morvane.program().shows(u"Download "_s + second));
    EXPECT_TRUE(waitUntil([&] { return modelInSettings(morvane) == "qwen2.5"_L1; }));
    EXPECT_EQ(world->runtime.known(u"models"_s), "qwen2.5:latest\n");
}

TEST_F(ModelsTest, AnotherProviderEndsTheSetupAndTheMessageThatWaits)
{
    MorvaneSession &morvane = startWithWaitingMessage();
    openSettings(morvane);
    morvane.program().find(u"Groq"_s).act(u"Toggle"_s);
    EXPECT_TRUE(morvane.storesLastMessage(
        u"errorMessage"_s, u"Switched to another provider before the local model finished downloading."_s));
    EXPECT_TRUE(isPullingOver());
    EXPECT_TRUE(morvane.program().hides(text(cancelSetup)));
    EXPECT_EQ(world->runtime.known(u"models"_s), "");
}

TEST_F(ModelsTest, EscapeTakesBackAMessageThatWaitsAndLeavesTheSetup)
{
    MorvaneSession &morvane = startWithWaitingMessage();
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Generation cancelled."_s));
    EXPECT_TRUE(morvane.program().shows(text(cancelSetup)));
    world->runtime.forget(u"pull-holds"_s);
    EXPECT_TRUE(becomesReady(morvane));
    morvane.send(u"Good evening"_s);
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Good morning to you."_s));
    EXPECT_EQ(world->runtime.chats()
                  .constFirst()
                  .value("messages"_L1)
                  .toArray()
                  .last()
                  .toObject()
                  .value("content"_L1),
              u"Good evening"_s);
}

TEST_F(ModelsTest, ACancelledDownloadOfAModelGoesOnWhereItWas)
{
    MorvaneSession &morvane = startDownloading();
    morvane.program().find(text(cancelSetup)).press(); // in the banner
    EXPECT_TRUE(isPullingOver());
    EXPECT_EQ(world->runtime.known(u"partial"_s), "42");
    ASSERT_TRUE(morvane.program().hides(text(cancelSetup)));
    world->runtime.tell(u"pull-holds"_s, "60");
    morvane.program().find(text(install)).press(); // in the welcome's card
    ASSERT_TRUE(morvane.program().shows(u"Download progress 60%"_s));
    world->runtime.forget(u"pull-holds"_s);
    EXPECT_TRUE(becomesReady(morvane));
    EXPECT_EQ(world->runtime.known(u"models"_s), "qwen2.5:latest\n");
}

TEST_F(ModelsTest, AFailedDownloadKeepsTheMessageAndTellsWhy)
{
    MorvaneSession &morvane = user();
    world->haveProgram("");
    world->runtime.tell(u"fails"_s, "Error: pull model manifest: no such host\n");
    morvane.start();
    const auto reason = u"The qwen2.5 model download failed. Error: pull model manifest: no such host"_s;
    ASSERT_TRUE(morvane.ear().hears(u"Local model setup failed. "_s + reason));
    morvane.send(u"Good morning"_s);
    EXPECT_TRUE(morvane.storesLastMessage(u"errorMessage"_s, reason));
    EXPECT_TRUE(morvane.hasStatus(u"Local model not ready"_s));
    EXPECT_EQ(morvane.activity().filter(u"Local model setup failed: "_s + reason).size(), 2)
        << "at the start, and for the message";
}

} // namespace
} // namespace morvane
