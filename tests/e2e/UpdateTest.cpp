#include "MorvaneTest.h"
#include "UpdateWorld.h"

#include "support/WaitUntil.h"

#include <QTemporaryDir>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using testing::IsEmpty;

namespace morvane {
namespace {

const auto available = u"Morvane " MORVANE_VERSION " (build 2) is available"_s;

/// The whole road of an update: two builds of the program, an update host on this computer, and a user who
/// presses what they are offered.
class UpdateTest : public MorvaneTest {
protected:
    MorvaneSession &startBundle()
    {
        ModelScript script;
        script.turns = {ScriptedTurn::saying({"An answer about birds."})};
        MorvaneSession &morvane = prepareProgram(world.program(), script, Hearing::announcements, u"home"_s);
        world.prepare(morvane);
        // The toolkit forgets keys that readers have not answered to when the program ends by itself.
        morvane.setVariable(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
        morvane.start();
        return morvane;
    }

    /// The user looks for updates when the program itself has done so, which tells the same.
    static void check(MorvaneSession &morvane)
    {
        ASSERT_TRUE(morvane.ear().hears(u"Morvane " MORVANE_VERSION " build 2 is available."_s));
        morvane.keyboard().press(u"Ctrl+U"_s);
        ASSERT_TRUE(morvane.program().find(available, AccessibleRole::dialog).has(AccessibleState::visible));
    }
    /// And takes what there is.
    static void takeUpdate(MorvaneSession &morvane)
    {
        check(morvane);
        pressInSheet(morvane, available, u"Update Now"_s);
    }
    static void pressInSheet(MorvaneSession &morvane, const QString &sheet, const QString &button)
    {
        const AccessibleElement card = morvane.program().find(sheet, AccessibleRole::dialog);
        const auto found = readTree(card).first([&button](const AccessibleNode &node) {
            return node.name == button && node.role == AccessibleRole::pushButton &&
                   node.has(AccessibleState::visible);
        });
        ASSERT_TRUE(found) << readTree(card).description().toStdString();
        found->element.press();
    }

    /// The program goes on, the old one, and its bundle with nothing beside it.
    void expectOldProgram(MorvaneSession &morvane, const QString &failure)
    {
        EXPECT_TRUE(morvane.program().shows(failure));
        EXPECT_TRUE(morvane.program().shows(u"Status. Update failed"_s));
        EXPECT_TRUE(morvane.isRunning());
        EXPECT_TRUE(waitUntil([this] { return world.beside().isEmpty(); }));
        morvane.quit();
        morvane.start();
        EXPECT_TRUE(morvane.program().shows(u"Message Morvane"_s));
    }

    /// Ends the program that came in the place of the one that was started here.
    static void end(qint64 pid)
    {
        const int process = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
        ::kill(static_cast<pid_t>(pid), SIGTERM);
        EXPECT_TRUE(waitUntil([process] {
            pollfd wait{process, POLLIN, 0};
            return ::poll(&wait, 1, 0) > 0;
        }));
        ::close(process);
    }

    QTemporaryDir folder;
    UpdateWorld world{folder.path()};
};

TEST_F(UpdateTest, TheNewBuildComesUpByItselfWithTheSameConversations)
{
    world.offer();
    MorvaneSession &morvane = startBundle();
    morvane.send(u"Which birds?"_s);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"An answer about birds."_s));
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    morvane.keyboard().type(u"half a draft"_s);
    ASSERT_TRUE(waitUntil([&] { return draft(morvane) == u"half a draft"_s; }));
    takeUpdate(morvane);
    EXPECT_EQ(draft(morvane), u"half a draft"_s); // Control+U is no deletion here
    for (const QString &words : {u"Downloading the update."_s, u"Verifying the update."_s,
                                 u"Installing the update. Morvane will restart in a moment."_s,
                                 u"Restarting to finish the update."_s})
        EXPECT_TRUE(morvane.ear().hears(words)) << words.toStdString();
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);

    const qint64 pid = world.process();
    ASSERT_GT(pid, 0);
    AccessibilityBus bus(morvane.desktop().sessionBusAddress());
    {
        const AccessibleProgram relaunched(bus, pid);
        EXPECT_TRUE(relaunched.shows(
            [](const AccessibleNode &node) { return node.name.contains("An answer about birds."_L1); }));
        relaunched.focuses(u"Message Morvane"_s);
        morvane.keyboard().press(u"Ctrl+U"_s);
        EXPECT_TRUE(relaunched.shows(u"You're up to date"_s));
        EXPECT_EQ(relaunched.find(u"Details"_s).text(),
                  u"Morvane " MORVANE_VERSION " (build 2) is the latest version."_s);
    }
    EXPECT_THAT(world.beside(), IsEmpty());
    end(pid);
}

TEST_F(UpdateTest, AnImageOfAnotherHashIsNotInstalled)
{
    world.offerWithWrongHash();
    MorvaneSession &morvane = startBundle();
    takeUpdate(morvane);
    expectOldProgram(morvane,
                     u"The downloaded update did not pass its security check. Please download it from the "
                     "website instead."_s);
}

TEST_F(UpdateTest, ADownloadThatBreaksOffLeavesTheOldProgram)
{
    world.offer();
    MorvaneSession &morvane = startBundle();
    check(morvane);
    world.host.setFaults({{DownloadServer::Fault::Kind::cutOff, 100'000}});
    pressInSheet(morvane, available, u"Update Now"_s);
    expectOldProgram(morvane, u"The download failed: The connection was lost."_s);
}

TEST_F(UpdateTest, ARequiredUpdateHoldsTheProgramUntilItIsInstalled)
{
    world.offer(R"(, "required": true)");
    MorvaneSession &morvane = startBundle();
    pressInSheet(morvane, u"Update required: Morvane " MORVANE_VERSION " (build 2)"_s,
                 u"Download in Browser"_s);
    ASSERT_TRUE(morvane.program().shows(u"Required update sheet"_s));
    EXPECT_TRUE(morvane.ear().hears(u"This update is required to continue. Please update now."_s));
    ASSERT_TRUE(morvane.program().focuses(u"Update Morvane to " MORVANE_VERSION " build 2 now."_s));
    morvane.keyboard().press(u"Escape"_s);
    morvane.keyboard().press(u"Ctrl+N"_s);
    pressInSheet(morvane, u"Required update sheet"_s,
                 u"Update Morvane to " MORVANE_VERSION " build 2 now."_s);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
    const qint64 pid = world.process();
    ASSERT_GT(pid, 0);
    AccessibilityBus bus(morvane.desktop().sessionBusAddress());
    EXPECT_TRUE(AccessibleProgram(bus, pid).shows(u"Message Morvane"_s));
    end(pid);
}

} // namespace
} // namespace morvane
