#include "BuildTree.h"
#include "UpdateTest.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The program is killed while it replaces itself, as a power failure would.
class KilledUpdateTest : public UpdateTest {
protected:
    /// A program that dies at this point (tests/tools/CrashPoint.cpp) is started, and takes the update.
    void dieAt(MorvaneSession &morvane, const QString &point)
    {
        morvane.setVariable(u"LD_PRELOAD"_s, build_tree::crashPoint());
        morvane.setVariable(u"CRASH_POINT"_s, point);
        morvane.start();
        ASSERT_TRUE(waitUntil([this] { return world.beside().isEmpty(); }));
        takeUpdateAtOnce(morvane);
        EXPECT_EQ(morvane.program().process().waitForExit(), std::nullopt);
        morvane.setVariable(u"LD_PRELOAD"_s, {});
    }

    /// What the next start comes upon is build 2, which cleans up.
    void expectNewProgramAtNextStart(MorvaneSession &morvane)
    {
        EXPECT_FALSE(world.beside().isEmpty());
        morvane.start();
        expectNewBuild(morvane, morvane.program());
        EXPECT_TRUE(waitUntil([this] { return world.beside().isEmpty(); }));
    }
};

TEST_F(KilledUpdateTest, BeforeTheBundlesAreExchangedTheOldProgramIsWhole)
{
    world.offer();
    MorvaneSession &morvane = prepareBundle();
    QStringList points{u"after mkdir 2"_s, u"after openat 3"_s, u"after pwrite 9"_s, u"before renameat2 1"_s};
    if (UpdateWorld::isTrial())
        points += {u"after mkdir 1"_s, u"before openat 1"_s, u"after pwrite 2"_s, u"before syncfs 1"_s,
                   u"after syncfs 1"_s};
    for (const QString &point : points) {
        SCOPED_TRACE(point.toStdString());
        dieAt(morvane, point); // it is the start after the last death, too
        if (HasFailure())
            return;
        EXPECT_EQ(world.beside().size(), 2); // the folder and the image of this one only
        expectOldBundle();
    }
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Message Morvane"_s));
    EXPECT_TRUE(waitUntil([this] { return world.beside().isEmpty(); }));
    expectOldBundle();
}

TEST_F(KilledUpdateTest, WhenTheBundlesHaveBeenExchangedTheNewProgramIsWhole)
{
    world.offer();
    MorvaneSession &morvane = prepareBundle();
    dieAt(morvane, u"after renameat2 1"_s);
    expectNewProgramAtNextStart(morvane);
}

TEST_F(KilledUpdateTest, BeforeTheRelaunchTheNewProgramIsWhole)
{
    world.offer();
    MorvaneSession &morvane = prepareBundle();
    dieAt(morvane, u"before access 1"_s);
    expectNewProgramAtNextStart(morvane);
}

TEST_F(KilledUpdateTest, WhenTheRelaunchIsWaitingTheNewProgramComesUpByItself)
{
    world.offer();
    MorvaneSession &morvane = startBundle();
    takeUpdateAtOnce(morvane);
    ASSERT_TRUE(morvane.ear().hears(u"Restarting to finish the update."_s));
    morvane.program().process().kill();
    withRelaunched(morvane,
                   [&morvane](const AccessibleProgram &relaunched) { expectNewBuild(morvane, relaunched); });
}

TEST_F(KilledUpdateTest, WhereThePowerFailedBetweenTwoMovesAStartBringsTheBundleBack)
{
    const QString work = world.parent() + u"/Morvane-update-01234567-89AB-CDEF-0123-456789ABCDEF"_s;
    const QString moved = work + u"/old/Morvane.app"_s;
    ASSERT_TRUE(QDir().mkpath(work + u"/old"_s));
    ASSERT_TRUE(QDir().mkpath(work + u"/stage/Morvane.app"_s));
    ASSERT_TRUE(QFile::rename(world.app(), moved));
    MorvaneSession &morvane = prepareBundle(moved + u"/Contents/MacOS/Morvane"_s);
    morvane.start();
    EXPECT_EQ(QFile::symLinkTarget(u"/proc/%1/exe"_s.arg(morvane.program().process().pid())),
              world.program());
    EXPECT_TRUE(waitUntil([this] { return world.beside().isEmpty(); }));
    expectOldBundle();
}

} // namespace
} // namespace morvane
