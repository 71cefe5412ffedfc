#include "support/AppFixture.h"

#include <QFile>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace morvane {
namespace {

using Phase = UpdateInstallPhase;

class UpdateInstallationTest : public AppFixture {
protected:
    UpdateInstallationTest()
    {
        updates.manifest = sampleUpdate();
        runTask(scheduler, model->updates().checkForUpdates(UpdateModel::Occasion::programStart));
        announcer.spoken.clear();
    }

    void install() { model->updates().installUpdateNow(); }
    template <class State> const State *phase() const
    {
        return std::get_if<State>(&model->updates().updateInstallPhase().state);
    }
    QString failure() const { return phase<Phase::Failed>() ? phase<Phase::Failed>()->text : QString(); }
};

TEST_F(UpdateInstallationTest, AnUpdateIsInstalledWithTheWordsOfEachStep)
{
    install();
    settle();
    EXPECT_THAT(updates.downloads, ElementsAre(updates.manifest.cacheBustedDownloadURL()));
    EXPECT_THAT(updates.installed, ElementsAre(updates.lastImage));
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Downloading the update."_s, u"Verifying the update."_s,
                                              u"Installing the update. Morvane will restart in a moment."_s,
                                              u"Restarting to finish the update."_s));
    EXPECT_FALSE(QFile::exists(updates.lastImage));
    EXPECT_EQ(updates.terminations, 0);
    clock.advance(799ms);
    settle();
    EXPECT_EQ(updates.terminations, 0);
    clock.advance(1ms);
    settle();
    EXPECT_EQ(updates.terminations, 1);
}

TEST_F(UpdateInstallationTest, ThePhasesFollowEachOther)
{
    QList<std::size_t> phases{model->updates().updateInstallPhase().state.index()};
    QObject::connect(&model->updates(), &UpdateModel::updateInstallPhaseChanged,
                     [&] { phases.append(model->updates().updateInstallPhase().state.index()); });
    install();
    settle();
    EXPECT_THAT(phases, ElementsAre(0, 1, 2, 3)); // idle, downloading, verifying, installing
}

TEST_F(UpdateInstallationTest, AFailureIsToldWhenTheImageIsGone)
{
    updates.installFailure = u"The downloaded update could not be opened."_s;
    bool wasThere = true;
    QObject::connect(&model->updates(), &UpdateModel::updateInstallPhaseChanged, [&] {
        if (phase<Phase::Failed>())
            wasThere = QFile::exists(updates.lastImage);
    });
    install();
    settle();
    EXPECT_NE(failure(), QString());
    EXPECT_FALSE(wasThere);
}

TEST_F(UpdateInstallationTest, MoreThanTheWholeIsTheWhole)
{
    updates.steps = {1.5};
    install();
    settle();
    EXPECT_THAT(announcer.spoken, Contains(u"Downloading the update, 100 percent done."_s));
}

TEST_F(UpdateInstallationTest, WithoutAnUpdateNothingHappens)
{
    updates.manifest = sampleUpdate(u"1.2"_s, 5);
    runTask(scheduler, model->updates().checkForUpdates(UpdateModel::Occasion::programStart));
    install();
    settle();
    EXPECT_NE(phase<Phase::Idle>(), nullptr);
    EXPECT_THAT(updates.downloads, IsEmpty());
}

TEST_F(UpdateInstallationTest, APressDuringTheDownloadDoesNothing)
{
    updates.downloadTime = 10s;
    install();
    settle();
    EXPECT_NE(phase<Phase::Downloading>(), nullptr);
    install();
    settle();
    EXPECT_EQ(updates.downloads.size(), 1);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Downloading the update."_s));
}

TEST_F(UpdateInstallationTest, AFailureIsToldAndTryingAgainDoesNothing)
{
    updates.downloadFailure = u"The download failed: The connection was lost."_s;
    install();
    settle();
    EXPECT_EQ(failure(), updates.downloadFailure);
    EXPECT_EQ(model->status().statusText(), u"Update failed"_s);
    EXPECT_THAT(announcer.spoken,
                ElementsAre(u"Downloading the update."_s,
                            u"The update could not be installed. The download failed: The "
                            "connection was lost. You can still download it from the website."_s));
    updates.downloadFailure.clear();
    install();
    settle();
    EXPECT_EQ(updates.downloads.size(), 1);
    EXPECT_NE(failure(), QString());
    EXPECT_EQ(updates.terminations, 0);
}

TEST_F(UpdateInstallationTest, AnImageOfAnotherHashIsDeletedAndNotInstalled)
{
    updates.genuine = false;
    install();
    settle();
    EXPECT_EQ(failure(),
              u"The downloaded update did not pass its security check. Please download it from the website "
              "instead."_s);
    EXPECT_FALSE(updates.lastImage.isEmpty());
    EXPECT_FALSE(QFile::exists(updates.lastImage));
    EXPECT_THAT(updates.installed, IsEmpty());
}

TEST_F(UpdateInstallationTest, AFailedInstallationDeletesTheImageAndDoesNotEndTheProgram)
{
    updates.installFailure = u"The downloaded update could not be opened."_s;
    install();
    settle();
    clock.advance(10s);
    settle();
    EXPECT_EQ(failure(), updates.installFailure);
    EXPECT_FALSE(QFile::exists(updates.lastImage));
    EXPECT_EQ(updates.terminations, 0);
}

TEST_F(UpdateInstallationTest, QuartersAreSpokenOnceEach)
{
    updates.steps = {0.0, 0.001, 0.2499, 0.25, 0.2501, 0.4, 0.5, 0.76, 1.0, 1.0};
    install();
    settle();
    announcer.spoken.removeIf([](const QString &text) { return !text.contains(u"percent"_s); });
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Downloading the update, 0 percent done."_s,
                                              u"Downloading the update, 25 percent done."_s,
                                              u"Downloading the update, 50 percent done."_s,
                                              u"Downloading the update, 100 percent done."_s));
}

TEST_F(UpdateInstallationTest, QuartersAreSilentWhereProgressIs)
{
    settings->setAnnounceResponses(false);
    updates.steps = {0.25, 0.5};
    install();
    settle();
    EXPECT_THAT(announcer.spoken, Not(Contains(u"Downloading the update, 25 percent done."_s)));
    EXPECT_THAT(announcer.spoken, Contains(u"Downloading the update."_s));
}

TEST_F(UpdateInstallationTest, TheWindowsHearOfWholePercents)
{
    int changes = 0;
    updates.downloadTime = 10s;
    install();
    settle();
    QObject::connect(&model->updates(), &UpdateModel::updateInstallPhaseChanged, [&changes] { ++changes; });
    for (int i = 0; i <= 1000; ++i)
        updates.progress(i / 1000.0);
    EXPECT_EQ(changes, 101);
    ASSERT_NE(phase<Phase::Downloading>(), nullptr);
    EXPECT_DOUBLE_EQ(phase<Phase::Downloading>()->fraction, 1.0);
}

TEST_F(UpdateInstallationTest, AnotherConversationDoesNotEndTheDownload)
{
    updates.downloadTime = 10s;
    install();
    settle();
    model->newConversation();
    model->cancel();
    clock.advance(10s);
    settle();
    EXPECT_EQ(updates.installed.size(), 1);
}

} // namespace
} // namespace morvane
