#include "integration/update/BundleFixture.h"
#include "support/FileSteps.h"
#include "support/RenameFaults.h"
#include "support/SmallVolume.h"
#include "support/WaitUntil.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

using Kind = SampleArchive::Kind;

const auto notOpened = u"The downloaded update could not be opened."_s;
const auto withoutApp = u"The downloaded update did not contain the app."_s;
const auto incomplete = u"Could not install the update: the copied app is incomplete"_s;

class BundleInstallationTest : public BundleTest {
protected:
    /// An installation fails with these words, and all is as it was.
    void expectFailure(const QString &image, const QString &words)
    {
        const Result result = install(image);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().toStdString(), words.toStdString());
        EXPECT_EQ(version(), "old");
        EXPECT_EQ(beside().join(u", "_s).toStdString(), "");
    }
    QByteArray noise(qsizetype size) const
    {
        QByteArray bytes(size, 0);
        quint32 state = 7;
        for (char &byte : bytes)
            byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
        return bytes;
    }
};

TEST_F(BundleInstallationTest, TheNewBundleTakesTheOldOnesPlace)
{
    ASSERT_TRUE(install(write(sampleBundleImage())));
    EXPECT_EQ(version(), "new");
    EXPECT_EQ(contentOf(app() + u"/Contents/MacOS/link"_s), "new library");
}

TEST_F(BundleInstallationTest, TheNewBundleIsOnTheDiskBeforeItTakesThePlace)
{
    QList<FileSteps::Step> taken;
    {
        const FileSteps steps;
        ASSERT_TRUE(install(write(sampleBundleImage())));
        taken = steps.all();
    }
    const auto place = [&taken](FileSteps::Step::Kind kind, const QString &folder) {
        struct stat status{};
        EXPECT_EQ(::stat(folder.toUtf8().constData(), &status), 0);
        return std::find_if(taken.begin(), taken.end(), [&](const FileSteps::Step &step) {
            return step.kind == kind && step.inode == status.st_ino;
        });
    };
    const auto unpacked = place(FileSteps::Step::Kind::volumeSynced, parent() + u'/' + beside().value(0));
    const auto moved = place(FileSteps::Step::Kind::synced, parent());
    EXPECT_LT(unpacked, moved);
    EXPECT_LT(moved, taken.end());
}

TEST_F(BundleInstallationTest, ANewBundleThatDoesNotReachTheDiskDoesNotTakeThePlace)
{
    const FileSteps steps(EIO);
    expectFailure(write(sampleBundleImage()), u"Input/output error."_s);
}

TEST_F(BundleInstallationTest, ItsFolderIsTheUsersAlone)
{
    BundleInstallation installation(bundle());
    ASSERT_TRUE(installation.prepare());
    EXPECT_EQ(permissionBits(parent() + u'/' + beside().value(0)), 0700U);
}

TEST_F(BundleInstallationTest, TheBundleKeepsItsName)
{
    ASSERT_TRUE(QFile::rename(app(), parent() + u"/My Morvane.app"_s));
    BundleInstallation installation({parent() + u"/My Morvane.app"_s, parent()});
    ASSERT_TRUE(installation.prepare());
    ASSERT_TRUE(installation.stage(write(sampleBundleImage())));
    ASSERT_TRUE(installation.swap());
    EXPECT_EQ(contentOf(parent() + u"/My Morvane.app/Contents/MacOS/Morvane"_s), "new");
}

TEST_F(BundleInstallationTest, TheOldBundlesRelauncherIsToldWhatToStartAndWhatToRemove)
{
    BundleInstallation installation(bundle());
    ASSERT_TRUE(installation.prepare());
    ASSERT_TRUE(installation.stage(write(sampleBundleImage())));
    ASSERT_TRUE(installation.swap());
    ASSERT_TRUE(installation.scheduleRelaunch({"PATH=/usr/bin:/bin"}));
    ASSERT_TRUE(waitUntil([this] { return home.read(u"relaunched"_s).count('\n') == 2; }));
    EXPECT_EQ(home.read(u"relaunched"_s).split('\n').value(0), app().toUtf8());
    EXPECT_EQ(home.read(u"relaunched"_s).split('\n').value(1),
              (parent() + u'/' + beside().value(0)).toUtf8());
}

TEST_F(BundleInstallationTest, TheOldBundleStaysUntilItIsNotUsedAnyMore)
{
    {
        BundleInstallation installation(bundle());
        ASSERT_TRUE(installation.prepare());
        ASSERT_TRUE(installation.stage(write(sampleBundleImage())));
        ASSERT_TRUE(installation.swap());
        EXPECT_TRUE(installation.hasMovedOldApp());
        removeUpdateRemains(bundle(), home.path());
        EXPECT_EQ(beside().size(), 1); // locked, since its program runs
    }
    ASSERT_EQ(beside().size(), 1);
    EXPECT_EQ(
        contentOf(parent() + u'/' + beside().constFirst() + u"/stage/Morvane.app/Contents/MacOS/Morvane"_s),
        "old");
    removeUpdateRemains(bundle(), home.path());
    EXPECT_THAT(beside(), IsEmpty());
    EXPECT_EQ(version(), "new");
}

TEST_F(BundleInstallationTest, ARelauncherThatIsMissingLeavesTheNewBundleInItsPlace)
{
    ASSERT_TRUE(QFile::remove(relauncher()));
    BundleInstallation installation(bundle());
    ASSERT_TRUE(installation.prepare());
    ASSERT_TRUE(installation.stage(write(sampleBundleImage())));
    ASSERT_TRUE(installation.swap());
    const Result result = installation.scheduleRelaunch({});
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), u"No such file or directory."_s);
    EXPECT_EQ(version(), "new");
}

TEST_F(BundleInstallationTest, WhatIsNoBundleCannotReplaceItself)
{
    BundleInstallation installation({{}, u"/usr/bin"_s});
    EXPECT_EQ(installation.prepare().error(),
              u"Morvane does not have permission to replace itself in /usr/bin."_s);
}

TEST_F(BundleInstallationTest, AReadOnlyVolumeStopsItWithNothingTouched)
{
    std::filesystem::remove_all(parent().toStdString());
    QDir().mkpath(parent());
    const SmallVolume volume(parent(), 10'000'000);
    ASSERT_TRUE(volume.isMounted());
    layOldBundle();
    ASSERT_EQ(::mount(nullptr, parent().toUtf8().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    expectFailure(write(sampleBundleImage()),
                  u"Morvane does not have permission to replace itself in %1."_s.arg(parent()));
}

TEST_F(BundleInstallationTest, AFullDiskLeavesTheOldBundle)
{
    std::filesystem::remove_all(parent().toStdString());
    QDir().mkpath(parent());
    const SmallVolume volume(parent(), 1'000'000);
    ASSERT_TRUE(volume.isMounted());
    layOldBundle();
    SampleArchive image = sampleBundleImage();
    image.file("Morvane.app/Contents/large", noise(2'000'000));
    expectFailure(write(image), u"No space left on device."_s);
}

TEST_F(BundleInstallationTest, ABundleThatCannotBeMovedStays)
{
    // What something is mounted on is not moved.
    const SmallVolume volume(app(), 1'000'000);
    ASSERT_TRUE(volume.isMounted());
    layOldBundle();
    expectFailure(write(sampleBundleImage()), u"Could not move the current app: Device or resource busy."_s);
}

TEST_F(BundleInstallationTest, ABundleThatIsGoneIsNotMoved)
{
    const QString image = write(sampleBundleImage());
    ASSERT_TRUE(QFile::rename(app(), home.path(u"moved.app"_s)));
    const Result result = install(image);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), u"Could not move the current app: No such file or directory."_s);
    EXPECT_THAT(beside(), IsEmpty());
}

TEST_F(BundleInstallationTest, WhereNothingCanBeExchangedTheBundlesMoveOneAfterTheOther)
{
    for (const int lacking : {EINVAL, ENOSYS}) {
        const RenameFaults faults({lacking});
        ASSERT_TRUE(install(write(sampleBundleImage())));
        EXPECT_EQ(version(), "new");
        removeUpdateRemains(bundle(), home.path());
        EXPECT_THAT(beside(), IsEmpty());
        std::filesystem::remove_all(app().toStdString());
        layOldBundle();
    }
}

TEST_F(BundleInstallationTest, WhereTheFirstMoveFailsTheOldBundleStays)
{
    const RenameFaults faults({EINVAL, EBUSY});
    expectFailure(write(sampleBundleImage()), u"Could not move the current app: Device or resource busy."_s);
}

TEST_F(BundleInstallationTest, WhereTheSecondMoveFailsTheOldBundleComesBack)
{
    const RenameFaults faults({EINVAL, 0, EIO});
    expectFailure(write(sampleBundleImage()), u"Could not install the update: Input/output error."_s);
}

TEST_F(BundleInstallationTest, AnOldBundleThatCannotComeBackIsNotRemoved)
{
    {
        const RenameFaults faults({EINVAL, 0, EIO, EIO});
        EXPECT_EQ(install(write(sampleBundleImage())).error(),
                  u"Could not install the update: Input/output error."_s);
    }
    ASSERT_EQ(beside().size(), 1);
    EXPECT_EQ(
        contentOf(parent() + u'/' + beside().constFirst() + u"/old/Morvane.app/Contents/MacOS/Morvane"_s),
        "old");
}

TEST_F(BundleInstallationTest, WhatIsNoImageIsNotOpened)
{
    const QByteArray image = sampleBundleImage().bytes();
    expectFailure(write(QByteArray()), notOpened);
    expectFailure(write(QByteArray("<html>404 Not Found</html>")), notOpened);
    for (const qsizetype size : {image.size() / 4, image.size() / 2, image.size() - 5})
        expectFailure(write(image.first(size)), notOpened);
    QByteArray damaged = image;
    damaged[damaged.size() / 2] = static_cast<char>(damaged.at(damaged.size() / 2) ^ 0x55);
    expectFailure(write(damaged), notOpened);
}

TEST_F(BundleInstallationTest, AHostileImageIsNotOpened)
{
    for (const auto &[harm, image] : hostileBundleImages()) {
        SCOPED_TRACE(harm.toStdString());
        expectFailure(write(image), notOpened);
    }
    EXPECT_FALSE(QFile::exists(home.path(u"morvane-outside"_s)));
    EXPECT_FALSE(QFile::exists(u"/tmp/morvane-outside"_s));
}

TEST_F(BundleInstallationTest, AnImageOfMoreThanAnyDiskHoldsIsNotOpened)
{
    // A file that is nothing but a gap takes no space in the image.
    QByteArray header(512, 0);
    const auto put = [&header](qsizetype place, const QByteArray &text) {
        header.replace(place, text.size(), text);
    };
    put(0, "Morvane.app/gap");
    put(100, "0000644");
    put(124, "00000000000");
    put(148, "        ");
    put(156, "S");
    put(257, "ustar  ");
    put(386, QByteArray::number(20'000'000'001, 8).rightJustified(12, '0'));
    put(398, "000000000000");
    put(483, QByteArray::number(20'000'000'001, 8).rightJustified(12, '0'));
    unsigned sum = 0;
    for (const char byte : std::as_const(header))
        sum += static_cast<unsigned char>(byte);
    put(148, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
    expectFailure(write(header + sampleBundleImage().bytes(SampleArchive::Compression::none)), notOpened);
}

TEST_F(BundleInstallationTest, AnImageOfMoreFilesThanAnyBundleHasIsNotOpened)
{
    SampleArchive image = sampleBundleImage();
    for (int i = 0; i < 200'000; ++i)
        image.add(Kind::folder, "Morvane.app");
    expectFailure(write(image), notOpened);
}

TEST_F(BundleInstallationTest, AnImageWithoutTheAppIsTold)
{
    expectFailure(write(SampleArchive().file("Other.app/Contents/MacOS/Morvane", "new", 0755)), withoutApp);
    expectFailure(write(SampleArchive().file("Morvane.app", "new", 0755)), withoutApp);
    expectFailure(write(SampleArchive()
                            .file("real/Contents/MacOS/Morvane", "new", 0755)
                            .add(Kind::symbolicLink, "Morvane.app", "real")),
                  withoutApp);
}

TEST_F(BundleInstallationTest, AnAppWithoutItsProgramIsIncomplete)
{
    expectFailure(write(SampleArchive().file("Morvane.app/Contents/MacOS/library", "new")), incomplete);
    expectFailure(write(SampleArchive().file("Morvane.app/Contents/MacOS/Morvane", "new", 0644)), incomplete);
    expectFailure(write(SampleArchive().add(Kind::folder, "Morvane.app/Contents/MacOS/Morvane")), incomplete);
    expectFailure(write(SampleArchive()
                            .file("Morvane.app/Contents/MacOS/real", "new", 0755)
                            .add(Kind::symbolicLink, "Morvane.app/Contents/MacOS/Morvane", "real")),
                  incomplete);
}

TEST_F(BundleInstallationTest, RestsOfEarlierTriesBlockNoLaterOne)
{
    QDir().mkpath(parent() + u"/Morvane-update-00000000-0000-0000-0000-000000000000/stage/Morvane.app"_s);
    ASSERT_TRUE(install(write(sampleBundleImage())));
    EXPECT_EQ(version(), "new");
}

} // namespace
} // namespace morvane
