#include "HeardTest.h"
#include "UpdateWorld.h"

#include "support/SmallVolume.h"
#include "support/WaitUntil.h"

#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <csignal>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

using testing::ElementsAreArray;
using testing::UnorderedElementsAreArray;

namespace morvane {
namespace {

const auto field = u"Message Morvane text."_s;
const auto fieldHint = u"Type your message, then press Return to send it."_s;
const auto details = u"Details read only text."_s;
const auto installing = u"notification Installing the update. Morvane will restart in a moment."_s;

/// What a user hears of an update, and that none of it comes twice.
class HeardUpdateTest : public HeardTest {
protected:
    /// The bundle is started beside an update host that has build 2, and has told of it.
    MorvaneSession &listenToBundle(const QString &told, const QByteArray &additions = {})
    {
        world.offer(additions);
        MorvaneSession &morvane = prepareProgram(world.program(), {}, Hearing::notifications, u"home"_s);
        world.prepare(morvane);
        listenTo(morvane);
        EXPECT_TRUE(reader().hears(fieldHint));
        EXPECT_TRUE(reader().hears(told));
        return morvane;
    }
    /// The first key in a sheet, which takes none before the user has paused.
    static bool goTo(MorvaneSession &morvane, const QString &control)
    {
        return pressUntil(morvane, u"Tab"_s, [&] {
            const auto focused = morvane.program().focused();
            return focused && focused->name == control;
        });
    }
    /// What the bar tells depends on the pieces that the image comes in: taken out, each heard once.
    static QStringList withoutProgress(QStringList pieces)
    {
        static const QRegularExpression progress(
            u"^notification Downloading the update, \\d+ percent done\\.$|^\\d+ percent\\.$"_s);
        const QStringList told = pieces.filter(progress);
        EXPECT_EQ(QSet<QString>(told.begin(), told.end()).size(), told.size());
        pieces.removeIf([](const QString &piece) { return progress.match(piece).hasMatch(); });
        return pieces;
    }

    QTemporaryDir folder;
    UpdateWorld world{folder.path()};
    const QString isAvailable = u"notification Morvane " MORVANE_VERSION " build 2 is available."_s;
};

TEST_F(HeardUpdateTest, TheBannerIsReachedByKeyboardAndDismissed)
{
    MorvaneSession &morvane = listenToBundle(isAvailable);
    EXPECT_EQ(times(isAvailable), 1);
    reader().forget();
    const QString reminder = u"Dismiss this reminder."_s;
    for (const auto &last :
         {u"Adds images, PDFs, or text files to your next message."_s,
          u"Try asking: Search the web for the latest macOS version push button."_s,
          u"Try asking: Find my Downloads folder and summarize it push button."_s,
          u"Try asking: Check my Mac's storage push button."_s,
          u"Try asking: What can you do? push button."_s, reminder, u"Update Now push button."_s})
        ASSERT_TRUE(moves(morvane, u"Shift+Tab"_s, last)) << last.toStdString();
    for (const QString &piece : heard())
        EXPECT_EQ(times(piece), 1) << piece.toStdString();
    ASSERT_TRUE(moves(morvane, u"Tab"_s, reminder));
    reader().forget();
    const auto dismissed = u"notification Update reminder dismissed."_s;
    ASSERT_TRUE(moves(morvane, u"Space"_s, dismissed));
    ASSERT_TRUE(reader().hears(fieldHint));
    EXPECT_THAT(heard(), UnorderedElementsAreArray({dismissed, field, fieldHint}));
}

TEST_F(HeardUpdateTest, TheAlertAndAnInstallationThatFailsAreHeard)
{
    // On a volume where it can only fail, so that the program stays while the reader asks for its words.
    const SmallVolume volume(world.parent(), 1'000'000'000);
    ASSERT_TRUE(volume.isMounted());
    world.lay();
    ASSERT_EQ(::mount(nullptr, world.parent().toUtf8().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
              0);
    MorvaneSession &morvane = listenToBundle(isAvailable);
    reader().forget();
    ASSERT_TRUE(moves(morvane, u"Ctrl+U"_s, isAvailable));
    ASSERT_TRUE(goTo(morvane, u"Later"_s));
    for (const auto &button : {u"Download in Browser push button."_s, u"Update Now push button."_s})
        ASSERT_TRUE(moves(morvane, u"Tab"_s, button)) << button.toStdString();
    EXPECT_THAT(heard(), ElementsAreArray({u"Morvane " MORVANE_VERSION " (build 2) is available dialog"_s,
                                           details, u"Opens large conversations at once."_s, isAvailable,
                                           u"Later push button."_s, u"Download in Browser push button."_s,
                                           u"Update Now push button."_s}));
    reader().forget();
    const QString failed =
        u"notification The update could not be installed. Morvane does not have permission to replace "
        "itself in %1. You can still download it from the website."_s.arg(world.parent());
    ASSERT_TRUE(moves(morvane, u"Return"_s, failed));
    EXPECT_THAT(withoutProgress(heard()),
                ElementsAreArray({field, fieldHint, u"notification Downloading the update."_s,
                                  u"notification Verifying the update."_s, installing, failed}));
}

TEST_F(HeardUpdateTest, TheRelaunchedProgramIsHeardOnce)
{
    MorvaneSession &morvane = listenToBundle(isAvailable);
    ASSERT_TRUE(moves(morvane, u"Ctrl+U"_s, isAvailable));
    reader().forget();
    ASSERT_TRUE(answer(morvane, u"Return"_s, u"Morvane " MORVANE_VERSION " (build 2) is available"_s));
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
    const qint64 pid = world.process();
    ASSERT_GT(pid, 0);
    EXPECT_TRUE(waitUntil([this] { return times(fieldHint) == 2; }));
    QStringList pieces = withoutProgress(heard());
    // The program ends 0.8 seconds after its last words: on a busy machine the reader asks for them too late,
    // and says that there was something.
    const auto restarting = u"notification Restarting to finish the update."_s;
    EXPECT_LE(pieces.count(installing), 1);
    EXPECT_LE(pieces.count(restarting), 1);
    pieces.removeIf([](const QString &piece) { return piece.startsWith("notification"_L1); });
    EXPECT_THAT(pieces, ElementsAreArray({field, fieldHint, u"Morvane frame."_s, field, fieldHint}));
    ::kill(static_cast<pid_t>(pid), SIGTERM);
    EXPECT_TRUE(waitUntil([pid] { return ::kill(static_cast<pid_t>(pid), 0) != 0; }));
}

TEST_F(HeardUpdateTest, ARequiredUpdateIsHeardAndItsSheetFollowsTheAlert)
{
    const auto required =
        u"notification This update is required to continue. Please update Morvane to " MORVANE_VERSION
        " build 2 now."_s;
    MorvaneSession &morvane = listenToBundle(required, R"(, "required": true)");
    ASSERT_TRUE(goTo(morvane, u"Download in Browser"_s));
    ASSERT_TRUE(reader().hears(u"Download in Browser push button."_s));
    // Of the details, the line that the caret is in.
    QStringList pieces = heard();
    EXPECT_EQ(pieces.removeIf([](const QString &piece) {
        return piece.startsWith("This update is required to continue."_L1);
    }),
              1);
    EXPECT_THAT(pieces, ElementsAreArray({u"Screen reader on."_s, u"Morvane frame."_s, field, fieldHint,
                                          u"Update required: Morvane " MORVANE_VERSION " (build 2) dialog"_s,
                                          details, required, u"Download in Browser push button."_s}));
    reader().forget();
    const QStringList expected{
        u"Required update sheet dialog Required update: Morvane " MORVANE_VERSION
        " build 2. The app is paused until you update — connect to the internet if offline."_s,
        u"Update Morvane to " MORVANE_VERSION " build 2 now. push button."_s,
        u"notification Opening the download for Morvane " MORVANE_VERSION "."_s,
        u"notification This update is required to continue. Please update now."_s};
    morvane.keyboard().press(u"Return"_s);
    for (const QString &piece : expected)
        ASSERT_TRUE(reader().hears(piece)) << piece.toStdString();
    const auto website = u"Download the update from the website"_s;
    ASSERT_TRUE(goTo(morvane, website));
    ASSERT_TRUE(reader().hears(website + u" push button."_s));
    EXPECT_THAT(heard(), UnorderedElementsAreArray(expected + QStringList{website + u" push button."_s}));
}

} // namespace
} // namespace morvane
