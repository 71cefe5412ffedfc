#include "net/TransportError.h"
#include "support/AppFixture.h"
#include "update/UpdateCheckerError.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

using Occasion = UpdateModel::Occasion;

constexpr auto unreachable =
    "Could not reach the update server. Check your internet connection and try again.";

class UpdateModelTest : public AppFixture {
protected:
    UpdateModelTest() { announcer.spoken.clear(); }

    UpdateModel &checker() { return model->updates(); }
    void check(Occasion occasion) { runTask(scheduler, checker().checkForUpdates(occasion)); }
    void offer(const QString &version, qint64 build) { updates.manifest = sampleUpdate(version, build); }
    void requireUpdate()
    {
        offer(u"1.3"_s, 7);
        updates.manifest.required = true;
        check(Occasion::programStart);
        announcer.spoken.clear();
    }
    void failWith(const std::exception_ptr &failure) { updates.checkFailure = failure; }
    template <class Alert> const Alert *alert()
    {
        return checker().alert() ? std::get_if<Alert>(&checker().alert()->content) : nullptr;
    }
    QString status() const { return model->status().statusText(); }
    QString dismissed() const { return settings->value(u"dismissedUpdateVersion"_s).toString(); }
};

TEST_F(UpdateModelTest, AQuietCheckTellsOfAnUpdateWithoutAnAlert)
{
    offer(u"1.2"_s, 6);
    check(Occasion::programStart);
    EXPECT_EQ(checker().availableUpdate(), updates.manifest);
    EXPECT_EQ(status(), u"Morvane 1.2 build 6 is available"_s);
    EXPECT_EQ(lastStep().text, u"Morvane 1.2 build 6 is available to download."_s);
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::info);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Morvane 1.2 build 6 is available."_s));
    EXPECT_FALSE(checker().alert());
    EXPECT_TRUE(checker().showsUpdateBanner());
    EXPECT_FALSE(checker().isUpdateRequired());
    EXPECT_FALSE(checker().isCheckingUpdate());
}

TEST_F(UpdateModelTest, AManifestOfTheSameVersionInOtherWordsIsNoUpdate)
{
    offer(u"1.2.0"_s, 6);
    check(Occasion::programStart);
    EXPECT_FALSE(checker().availableUpdate());
    EXPECT_THAT(announcer.spoken, IsEmpty());
}

TEST_F(UpdateModelTest, ANewerVersionIsFoundByItsNumbers)
{
    updates.running = {u"1.9"_s, 5};
    offer(u"1.10"_s, 1);
    check(Occasion::programStart);
    EXPECT_TRUE(checker().availableUpdate());
}

TEST_F(UpdateModelTest, TheUserIsShownWhatIsAvailable)
{
    offer(u"1.3"_s, 7);
    checker().startCheck();
    settle();
    ASSERT_NE(alert<UpdateAlert::Available>(), nullptr);
    EXPECT_EQ(alert<UpdateAlert::Available>()->update, updates.manifest);
}

TEST_F(UpdateModelTest, TheUserIsToldThatThereIsNothingNew)
{
    check(Occasion::user);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"You are up to date. Morvane 1.2 is the latest version."_s));
    ASSERT_NE(alert<UpdateAlert::UpToDate>(), nullptr);
    EXPECT_EQ(alert<UpdateAlert::UpToDate>()->version, updates.running);
    EXPECT_EQ(status(), u"Ready"_s);
}

TEST_F(UpdateModelTest, AQuietCheckThatFindsNothingSaysNothing)
{
    model->status().setStatusText(u"Something"_s);
    check(Occasion::programStart);
    EXPECT_THAT(announcer.spoken, IsEmpty());
    EXPECT_FALSE(checker().alert());
    EXPECT_EQ(status(), u"Ready"_s);
}

TEST_F(UpdateModelTest, ASecondCheckMeanwhileIsOnlyAnnouncedToTheUser)
{
    updates.checkTime = 10s;
    checker().startCheck();
    settle();
    EXPECT_TRUE(checker().isCheckingUpdate());
    check(Occasion::programStart);
    EXPECT_THAT(announcer.spoken, IsEmpty());
    check(Occasion::user);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Already checking for updates."_s));
    EXPECT_EQ(updates.checks, 1);
    clock.advance(10s);
    settle();
    EXPECT_FALSE(checker().isCheckingUpdate());
}

TEST_F(UpdateModelTest, TheAgentKeepsItsStatusLine)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    const QString before = status();
    offer(u"1.3"_s, 7);
    check(Occasion::user);
    EXPECT_EQ(status(), before);
    offer(u"1.2"_s, 5);
    check(Occasion::user);
    EXPECT_EQ(status(), before);
}

TEST_F(UpdateModelTest, WhetherTheAgentWorksIsNotedWhenTheCheckBegins)
{
    updates.checkTime = 10s;
    offer(u"1.3"_s, 7);
    checker().startCheck();
    settle();
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    clock.advance(10s);
    settle();
    EXPECT_EQ(status(), u"Morvane 1.3 build 7 is available"_s);
}

TEST_F(UpdateModelTest, ARequiredUpdateTakesTheStatusLineAndAlertsEvenAtTheStart)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    announcer.spoken.clear();
    offer(u"1.3"_s, 7);
    updates.manifest.required = true;
    check(Occasion::programStart);
    EXPECT_EQ(status(), u"Update required: 1.3 build 7"_s);
    EXPECT_EQ(lastStep().text, u"Required update: Morvane 1.3 build 7."_s);
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::error);
    EXPECT_THAT(announcer.spoken,
                ElementsAre(u"This update is required to continue. Please update Morvane to 1.3 "
                            "build 7 now."_s));
    EXPECT_NE(alert<UpdateAlert::Required>(), nullptr);
    EXPECT_TRUE(checker().isUpdateRequired());
}

TEST_F(UpdateModelTest, ARequiredUpdateLetsNoMessageThrough)
{
    requireUpdate();
    model->status().setStatusText(u"Something"_s);
    EXPECT_FALSE(model->send(u"hi"_s, {}));
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_THAT(service.requests(), IsEmpty());
    EXPECT_EQ(status(), u"Update required: 1.3 build 7"_s);
    EXPECT_THAT(announcer.spoken,
                ElementsAre(u"This update is required to continue. Please update Morvane to 1.3 "
                            "build 7 now."_s));
}

TEST_F(UpdateModelTest, AVersionMustUpdateWhereTheListNamesItWhateverTheFlagSays)
{
    offer(u"1.3"_s, 7);
    updates.manifest.requiredVersions = {updates.running.version};
    check(Occasion::programStart);
    EXPECT_TRUE(checker().isUpdateRequired());
    EXPECT_FALSE(model->send(u"hi"_s, {}));
    updates.manifest.requiredVersions = {u"1.1"_s};
    updates.manifest.required = true;
    check(Occasion::programStart);
    EXPECT_FALSE(checker().isUpdateRequired());
    EXPECT_TRUE(checker().availableUpdate());
}

TEST_F(UpdateModelTest, AnOlderManifestThatRequiresClearsWhatWasKnown)
{
    requireUpdate();
    offer(u"1.1"_s, 99);
    updates.manifest.required = true;
    check(Occasion::programStart);
    EXPECT_FALSE(checker().availableUpdate());
    EXPECT_FALSE(checker().isUpdateRequired());
    EXPECT_FALSE(checker().showsUpdateBanner());
}

TEST_F(UpdateModelTest, AFailedQuietCheckIsSilent)
{
    model->status().setStatusText(u"Something"_s);
    failWith(std::make_exception_ptr(UpdateCheckerError::badResponse()));
    check(Occasion::programStart);
    EXPECT_EQ(status(), u"Something"_s);
    EXPECT_THAT(announcer.spoken, IsEmpty());
    EXPECT_FALSE(checker().alert());
    EXPECT_THAT(activityTexts(), IsEmpty());
    EXPECT_FALSE(checker().isCheckingUpdate());
}

TEST_F(UpdateModelTest, TheUserIsToldWhyACheckFailed)
{
    failWith(std::make_exception_ptr(UpdateCheckerError::badResponse()));
    check(Occasion::user);
    const QString text = u"Couldn't check for updates. "_s + QString::fromLatin1(unreachable);
    EXPECT_THAT(announcer.spoken, ElementsAre(text));
    EXPECT_THAT(activityTexts(), ElementsAre(text));
    EXPECT_EQ(lastStep().kind, ActivityStep::Kind::error);
    EXPECT_FALSE(checker().isCheckingUpdate());
    ASSERT_NE(alert<UpdateAlert::CheckFailed>(), nullptr);
    EXPECT_EQ(alert<UpdateAlert::CheckFailed>()->reason, QString::fromLatin1(unreachable));
    checker().downloadFromAlert(); // there is nothing to open
    EXPECT_FALSE(checker().alert());
    EXPECT_THAT(urls.opened, IsEmpty());
}

TEST_F(UpdateModelTest, AFailureWithARequiredUpdateOnRecordAsksForAConnection)
{
    requireUpdate();
    checker().closeAlert();
    failWith(std::make_exception_ptr(TransportError(TransportError::Kind::notConnectedToInternet)));
    check(Occasion::programStart);
    EXPECT_EQ(status(), u"Update required: 1.3 build 7 — connect to update"_s);
    EXPECT_THAT(announcer.spoken,
                ElementsAre(u"This update is required to continue. Connect to the internet and "
                            "update Morvane to 1.3 build 7 now."_s));
    EXPECT_FALSE(checker().alert());
    check(Occasion::user);
    EXPECT_NE(alert<UpdateAlert::Required>(), nullptr);
    EXPECT_TRUE(checker().isUpdateRequired());
}

TEST_F(UpdateModelTest, AFailureWithARequiredUpdateLeavesTheAgentsStatusLine)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    requireUpdate();
    model->status().setStatusText(u"The agent's"_s);
    failWith(std::make_exception_ptr(UpdateCheckerError::badResponse()));
    check(Occasion::user);
    EXPECT_EQ(status(), u"The agent's"_s);
    EXPECT_NE(alert<UpdateAlert::Required>(), nullptr);
}

TEST_F(UpdateModelTest, ADismissedUpdateStaysDismissedAndTheNextBuildReturns)
{
    offer(u"1.3"_s, 7);
    check(Occasion::programStart);
    announcer.spoken.clear();
    checker().dismissUpdateBanner();
    EXPECT_FALSE(checker().showsUpdateBanner());
    EXPECT_EQ(dismissed(), u"1.3|7"_s);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Update reminder dismissed."_s));
    check(Occasion::programStart);
    EXPECT_FALSE(checker().showsUpdateBanner());
    offer(u"1.3"_s, 8);
    check(Occasion::programStart);
    EXPECT_TRUE(checker().showsUpdateBanner());
}

TEST_F(UpdateModelTest, ARequiredUpdateCannotBeDismissed)
{
    requireUpdate();
    checker().dismissUpdateBanner();
    EXPECT_TRUE(checker().showsUpdateBanner());
    EXPECT_EQ(dismissed(), QString());
    EXPECT_THAT(announcer.spoken,
                ElementsAre(u"This update is required to continue. Please update Morvane now."_s));
    // What was dismissed while it was not required does not hide it either.
    settings->setValue(u"dismissedUpdateVersion"_s, u"1.3|7"_s);
    EXPECT_TRUE(checker().showsUpdateBanner());
}

TEST_F(UpdateModelTest, TheDownloadOpensInTheBrowser)
{
    offer(u"1.3"_s, 7);
    check(Occasion::user);
    announcer.spoken.clear();
    checker().downloadFromAlert();
    EXPECT_FALSE(checker().alert());
    EXPECT_THAT(urls.opened, ElementsAre(updates.manifest.url()));
    EXPECT_EQ(lastStep().text, u"Opening the Morvane 1.3 download."_s);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Opening the download for Morvane 1.3."_s));
}

TEST_F(UpdateModelTest, ARequiredUpdateRemindsAfterTheBrowserWasOpened)
{
    requireUpdate();
    checker().downloadFromAlert();
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Opening the download for Morvane 1.3."_s,
                                              u"This update is required to continue. Please update now."_s));
    EXPECT_TRUE(checker().isUpdateRequired());
}

TEST_F(UpdateModelTest, AnAlertIsClosedWhenTheUpdateBegins)
{
    offer(u"1.3"_s, 7);
    check(Occasion::user);
    checker().installFromAlert();
    settle();
    EXPECT_FALSE(checker().alert());
    EXPECT_EQ(updates.downloads.size(), 1);
}

TEST_F(UpdateModelTest, TheWindowsHearOfADismissal)
{
    offer(u"1.3"_s, 7);
    check(Occasion::programStart);
    int changes = 0;
    QObject::connect(&checker(), &UpdateModel::changed, [&changes] { ++changes; });
    checker().dismissUpdateBanner();
    EXPECT_EQ(changes, 1);
}

TEST_F(UpdateModelTest, AnAlertIsClosedByLaterWithoutAnythingElse)
{
    offer(u"1.3"_s, 7);
    check(Occasion::user);
    checker().closeAlert();
    EXPECT_FALSE(checker().alert());
    EXPECT_THAT(updates.downloads, IsEmpty());
    EXPECT_THAT(urls.opened, IsEmpty());
}

TEST_F(UpdateModelTest, ARequiredStateIsGoneWithTheProgram)
{
    requireUpdate();
    start();
    EXPECT_FALSE(checker().isUpdateRequired());
}

} // namespace
} // namespace morvane
