#include "update/relauncher/Relaunch.h"
#include "update/RelaunchEnvironment.h"
#include "update/RunningBundle.h"
#include "update/UpdateHost.h"

#include <QStringList>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using testing::ElementsAre;

namespace morvane {
namespace {

class RelaunchTest : public testing::Test {
protected:
    int run()
    {
        return relaunch({
            .oldProcessEnds =
                [this](std::chrono::milliseconds limit) {
                    steps.append(u"wait %1"_s.arg(limit.count()));
                    return oldEnds;
                },
            .sleep =
                [this](std::chrono::milliseconds time) { steps.append(u"sleep %1"_s.arg(time.count())); },
            .removeOldBundle = [this] { steps.append(u"remove"_s); },
            .startNewProgram =
                [this] {
                    steps.append(u"start"_s);
                    ++starts;
                },
            .newProgramRuns = [this](std::chrono::milliseconds) { return starts >= startThatWorks; },
        });
    }

    bool oldEnds = true;
    int startThatWorks = 1;
    int starts = 0;
    QStringList steps;
};

TEST_F(RelaunchTest, TheOldBundleGoesBeforeTheNewProgramIsStarted)
{
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(steps, ElementsAre(u"wait 120000"_s, u"sleep 1000"_s, u"remove"_s, u"start"_s));
}

TEST_F(RelaunchTest, AnOldProcessThatDoesNotEndLeavesEverythingAndStartsNothing)
{
    oldEnds = false;
    EXPECT_EQ(run(), 1);
    EXPECT_THAT(steps, ElementsAre(u"wait 120000"_s));
}

TEST_F(RelaunchTest, AProgramThatEndsAtOnceIsStartedThreeTimesAtMost)
{
    startThatWorks = 2;
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(starts, 2);
    starts = 0;
    steps.clear();
    startThatWorks = 9;
    EXPECT_EQ(run(), 0);
    EXPECT_THAT(steps, ElementsAre(u"wait 120000"_s, u"sleep 1000"_s, u"remove"_s, u"start"_s,
                                   u"sleep 2000"_s, u"start"_s, u"sleep 2000"_s, u"start"_s));
}

TEST(RelaunchEnvironmentTest, NothingOfTheOldStartReachesTheNewProgram)
{
    EXPECT_THAT(relaunchEnvironment({"HOME=/home/me", "LD_LIBRARY_PATH=/old", "QT_PLUGIN_PATH=/old/plugins",
                                     "DESKTOP_STARTUP_ID=x", "XDG_ACTIVATION_TOKEN=y",
                                     "PATH=/home/me/bin:/usr/bin", "LD_LIBRARY_PATHS=mine"}),
                ElementsAre("HOME=/home/me", "PATH=/home/me/bin:/usr/bin", "LD_LIBRARY_PATHS=mine"));
}

TEST(RelaunchEnvironmentTest, NothingLeadsTheNewProgramToFilesOfTheOldOne)
{
    EXPECT_THAT(relaunchEnvironment({"LD_PRELOAD=/old/a.so", "QT_QPA_PLATFORM_PLUGIN_PATH=/old",
                                     "QTWEBENGINEPROCESS_PATH=/old", "QTWEBENGINE_RESOURCES_PATH=/old",
                                     "QTWEBENGINE_LOCALES_PATH=/old", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
                                     "QT_SCALE_FACTOR=2"}),
                ElementsAre("QT_SCALE_FACTOR=2"));
}

TEST(RunningBundleTest, ABundleIsKnownByWhereItsProgramLies)
{
    EXPECT_EQ(RunningBundle::ofProgram(u"/opt/My Programs/Morvane 2.app/Contents/MacOS/Morvane"_s),
              (RunningBundle{u"/opt/My Programs/Morvane 2.app"_s, u"/opt/My Programs"_s}));
}

TEST(RunningBundleTest, AProgramThatLiesElsewhereHasNone)
{
    EXPECT_EQ(RunningBundle::ofProgram(u"/usr/bin/morvane"_s), (RunningBundle{{}, u"/usr/bin"_s}));
    EXPECT_EQ(RunningBundle::ofProgram(u"/opt/Morvane/Contents/MacOS/Morvane"_s),
              (RunningBundle{{}, u"/opt/Morvane/Contents/MacOS"_s}));
}

TEST(UpdateHostTest, ImagesComeEncryptedOrFromTheHostItself)
{
    const UpdateHost release{u"https://updates.example"_s, u"https://updates.example"_s, {}};
    EXPECT_EQ(release.manifestURL(), QUrl(u"https://updates.example/downloads/latest.json"_s));
    EXPECT_TRUE(release.allows(QUrl(u"https://elsewhere.example/image"_s)));
    EXPECT_FALSE(release.allows(QUrl(u"http://updates.example/image"_s)));
    EXPECT_FALSE(release.isUnusual());
    const UpdateHost test{u"http://127.0.0.1:8080"_s, u"https://updates.example"_s, {}};
    EXPECT_TRUE(test.allows(QUrl(u"http://127.0.0.1:8080/image"_s)));
    EXPECT_FALSE(test.allows(QUrl(u"http://127.0.0.1:8081/image"_s)));
    EXPECT_FALSE(test.allows(QUrl(u"http://127.0.0.1.example:8080/image"_s)));
    EXPECT_TRUE(test.isUnusual());
}

} // namespace
} // namespace morvane
