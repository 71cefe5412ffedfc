#include "UpdateTest.h"

#include "support/SampleBundle.h"
#include "support/WaitUntil.h"

#include <QElapsedTimer>
#include <QFile>
#include <csignal>
#include <iostream>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using testing::IsEmpty;

namespace morvane {

MorvaneSession &UpdateTest::prepareBundle(const QString &program)
{
    ModelScript script;
    script.turns = {ScriptedTurn::saying({"An answer about birds."})};
    MorvaneSession &morvane = prepareProgram(program, script, Hearing::announcements, u"home"_s);
    world.prepare(morvane);
    // The toolkit forgets keys that readers have not answered to when the program ends by itself.
    morvane.setVariable(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s);
    return morvane;
}

MorvaneSession &UpdateTest::startBundle()
{
    MorvaneSession &morvane = prepareBundle();
    morvane.start();
    return morvane;
}

void UpdateTest::check(MorvaneSession &morvane)
{
    ASSERT_TRUE(morvane.ear().hears(u"Morvane " MORVANE_VERSION " build 2 is available."_s));
    morvane.keyboard().press(u"Ctrl+U"_s);
    ASSERT_TRUE(morvane.program().find(available(), AccessibleRole::dialog).has(AccessibleState::visible));
}

void UpdateTest::takeUpdate(MorvaneSession &morvane)
{
    check(morvane);
    pressInSheet(morvane, available(), u"Update Now"_s);
}

void UpdateTest::takeUpdateAtOnce(MorvaneSession &morvane)
{
    // Where the program is looking just now, it only says so.
    ASSERT_TRUE(pressUntil(morvane, u"Ctrl+U"_s, [&morvane] {
        return morvane.program()
            .tree()
            .first([](const AccessibleNode &node) {
                return node.name == available() && node.role == AccessibleRole::dialog &&
                       node.has(AccessibleState::showing);
            })
            .has_value();
    }));
    pressInSheet(morvane, available(), u"Update Now"_s);
}

void UpdateTest::pressInSheet(MorvaneSession &morvane, const QString &sheet, const QString &button)
{
    const AccessibleElement card = morvane.program().find(sheet, AccessibleRole::dialog);
    const auto found = readTree(card).first([&button](const AccessibleNode &node) {
        return node.name == button && node.role == AccessibleRole::pushButton;
    });
    ASSERT_TRUE(found) << readTree(card).description().toStdString();
    found->element.press();
}

void UpdateTest::expectOldProgram(MorvaneSession &morvane, const QString &failure)
{
    EXPECT_TRUE(morvane.program().shows(failure));
    EXPECT_TRUE(morvane.ear().hears(
        u"The update could not be installed. %1 You can still download it from the website."_s.arg(failure)));
    EXPECT_TRUE(morvane.isRunning());
    EXPECT_TRUE(waitUntil([this] { return world.beside().isEmpty(); }));
    expectOldBundle();
    morvane.quit();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Message Morvane"_s));
}

void UpdateTest::expectNewBuild(MorvaneSession &morvane, const AccessibleProgram &program)
{
    ASSERT_TRUE(program.focuses(u"Message Morvane"_s));
    ASSERT_TRUE(pressUntil(morvane, u"Ctrl+U"_s, [&program] {
        return program.tree()
            .first([](const AccessibleNode &node) {
                return node.name == "You're up to date"_L1 && node.has(AccessibleState::showing);
            })
            .has_value();
    }));
    EXPECT_EQ(program.find(u"Details"_s).text(),
              u"Morvane " MORVANE_VERSION " (build 2) is the latest version."_s);
}

void UpdateTest::withRelaunched(const MorvaneSession &morvane,
                                const std::function<void(const AccessibleProgram &)> &look)
{
    const qint64 pid = world.process();
    ASSERT_GT(pid, 0);
    AccessibilityBus bus(morvane.desktop().sessionBusAddress());
    look(AccessibleProgram(bus, pid));
    EXPECT_THAT(world.beside(), IsEmpty());
    end(pid);
}

void UpdateTest::end(qint64 pid)
{
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    ::kill(static_cast<pid_t>(pid), SIGTERM);
    EXPECT_TRUE(waitUntil([process] {
        pollfd wait{process, POLLIN, 0};
        return ::poll(&wait, 1, 0) > 0;
    }));
    ::close(process);
}

void UpdateTest::layOnVolume(qint64 space)
{
    const qint64 size = world.size();
    volume.emplace(world.parent(), size + size / 8 + space); // files take whole pages
    ASSERT_TRUE(volume->isMounted());
    world.lay();
}

namespace {

constexpr qint64 anotherBundle = 1'000'000'000;

TEST_F(UpdateTest, TheNewBuildComesUpByItselfWithTheSameConversations)
{
    world.offer();
    MorvaneSession &morvane = startBundle();
    morvane.send(u"Which birds?"_s);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"An answer about birds."_s));
    ASSERT_TRUE(morvane.ear().hears(u"Conversation summarized as: Scripted title."_s));
    morvane.keyboard().type(u"half a draft"_s);
    ASSERT_TRUE(waitUntil([&] { return draft(morvane) == u"half a draft"_s; }));
    check(morvane);
    QElapsedTimer sincePress;
    sincePress.start();
    pressInSheet(morvane, available(), u"Update Now"_s);
    EXPECT_EQ(draft(morvane), u"half a draft"_s); // Control+U is no deletion here
    for (const QString &words : {u"Downloading the update."_s, u"Verifying the update."_s,
                                 u"Installing the update. Morvane will restart in a moment."_s,
                                 u"Restarting to finish the update."_s})
        EXPECT_TRUE(morvane.ear().hears(words)) << words.toStdString();
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
    const qint64 untilEnd = sincePress.elapsed();

    withRelaunched(morvane, [&](const AccessibleProgram &relaunched) {
        ASSERT_TRUE(relaunched.focuses(u"Message Morvane"_s));
        std::cout << "from the press to the end of the old program: " << untilEnd
                  << " ms, to the new window: " << sincePress.elapsed() << " ms\n";
        EXPECT_TRUE(relaunched.shows(
            [](const AccessibleNode &node) { return node.name.contains("An answer about birds."_L1); }));
        expectNewBuild(morvane, relaunched);
    });
}

TEST_F(UpdateTest, AnImageOfAnotherHashIsNotInstalled)
{
    world.offerWithWrongHash();
    MorvaneSession &morvane = startBundle();
    takeUpdate(morvane);
    EXPECT_TRUE(morvane.program().shows(u"Status. Update failed"_s));
    expectOldProgram(morvane,
                     u"The downloaded update did not pass its security check. Please download it from the "
                     "website instead."_s);
}

TEST_F(UpdateTest, ADownloadThatBreaksOffLeavesTheOldProgram)
{
    world.offer();
    MorvaneSession &morvane = startBundle();
    check(morvane); // the fault is for the image, not for another look at the manifest
    world.host.setFaults({{DownloadServer::Fault::Kind::cutOff, 100'000}});
    pressInSheet(morvane, available(), u"Update Now"_s);
    expectOldProgram(morvane, u"The download failed: The connection was lost."_s);
}

TEST_F(UpdateTest, AReadOnlyFolderLeavesTheOldProgram)
{
    layOnVolume(anotherBundle);
    ASSERT_EQ(::mount(nullptr, world.parent().toUtf8().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
              0);
    world.offer();
    MorvaneSession &morvane = startBundle();
    takeUpdateAtOnce(morvane);
    expectOldProgram(morvane,
                     u"Morvane does not have permission to replace itself in %1."_s.arg(world.parent()));
}

TEST_F(UpdateTest, AFullDiskLeavesTheOldProgram)
{
    layOnVolume(1'000'000);
    world.offer();
    MorvaneSession &morvane = startBundle();
    takeUpdateAtOnce(morvane);
    expectOldProgram(morvane, u"No space left on device."_s);
}

TEST_F(UpdateTest, WhereTheDownloadHasNoSpaceTheOldProgramStays)
{
    world.offer();
    volume.emplace(world.downloads(), 1'000'000);
    ASSERT_TRUE(volume->isMounted());
    MorvaneSession &morvane = startBundle();
    takeUpdateAtOnce(morvane);
    expectOldProgram(morvane, u"Could not save the downloaded update."_s);
}

TEST_F(UpdateTest, HostileImagesLeaveTheOldProgram)
{
    auto images = hostileBundleImages();
    if (!UpdateWorld::isTrial())
        images.resize(2); // BundleInstallationTest tries all of them
    MorvaneSession &morvane = prepareBundle();
    for (const auto &[harm, image] : images) {
        SCOPED_TRACE(harm.toStdString());
        world.offerImage(image.bytes());
        morvane.quit();
        morvane.ear().forget();
        morvane.start();
        takeUpdateAtOnce(morvane);
        expectOldProgram(morvane, u"The downloaded update could not be opened."_s);
    }
    EXPECT_FALSE(QFile::exists(u"/tmp/morvane-outside"_s));
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
    withRelaunched(morvane, [](const AccessibleProgram &relaunched) {
        EXPECT_TRUE(relaunched.shows(u"Message Morvane"_s));
    });
}

} // namespace
} // namespace morvane
