#include "base/FileDescriptor.h"
#include "integration/update/BundleFixture.h"
#include "update/ImageFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace morvane {
namespace {

const auto someId = u"01234567-89AB-CDEF-0123-456789ABCDEF"_s;

class UpdateRemainsTest : public BundleTest {
protected:
    QString downloads() const { return home.path(u"temporary"_s); }
    void clean() { removeUpdateRemains(bundle(), downloads()); }
    QStringList downloaded() const
    {
        return QDir(downloads())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    void write(const QString &relative) { home.write(relative, "x"); }

    QString work() const { return parent() + u"/Morvane-update-"_s + someId; }
    /// As where the power failed when the old bundle had been moved away.
    void losePlace()
    {
        ASSERT_TRUE(QDir().mkpath(work() + u"/old"_s));
        ASSERT_TRUE(QFile::rename(app(), work() + u"/old/Morvane.app"_s));
        home.write(
            u"it's my programs/Morvane-update-%1/stage/Morvane.app/Contents/MacOS/Morvane"_s.arg(someId),
            "new");
        home.write(
            u"it's my programs/Morvane-update-%1/stage/Morvane.app/Contents/MacOS/library"_s.arg(someId),
            "new library");
    }
    QString programIn(const QString &folder) const
    {
        return work() + u'/' + folder + u"/Morvane.app/Contents/MacOS/Morvane"_s;
    }
    QString program() const { return app() + u"/Contents/MacOS/Morvane"_s; }
};

TEST_F(UpdateRemainsTest, ABundleThatLostItsPlaceReturnsWhenItIsStarted)
{
    for (const auto &[folder, expected] : {std::pair(u"old"_s, "old"), std::pair(u"stage"_s, "new")}) {
        losePlace();
        EXPECT_EQ(returnToPlace(programIn(folder)), program());
        EXPECT_EQ(version(), expected);
        clean();
        EXPECT_THAT(beside(), IsEmpty());
        EXPECT_EQ(version(), expected);
    }
}

TEST_F(UpdateRemainsTest, TheOnlyBundleOfAPlaceIsNotRemovedByAnother)
{
    losePlace();
    removeUpdateRemains({parent() + u"/Another.app"_s, parent()}, downloads());
    EXPECT_EQ(version(), "old");
    EXPECT_THAT(beside(), IsEmpty());
}

TEST_F(UpdateRemainsTest, APlaceThatIsTakenIsLeftAlone)
{
    losePlace();
    layOldBundle();
    EXPECT_EQ(returnToPlace(programIn(u"stage"_s)), QString());
    EXPECT_EQ(version(), "old");
    EXPECT_TRUE(QFile::exists(programIn(u"stage"_s)));
}

TEST_F(UpdateRemainsTest, WhatIsStartedWhileAnUpdateIsMadeStaysWhereItIs)
{
    losePlace();
    const FileDescriptor update(::open(work().toUtf8().constData(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(update.get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(returnToPlace(programIn(u"stage"_s)), QString());
    EXPECT_FALSE(QFile::exists(app()));
}

TEST_F(UpdateRemainsTest, AProgramThatLiesElsewhereHasNoPlaceToReturnTo)
{
    ASSERT_TRUE(QDir().mkpath(home.path(u"notes/old/Mine.app"_s)));
    ASSERT_TRUE(QDir().mkpath(home.path(u"notes/stage"_s)));
    ASSERT_TRUE(QFile::rename(app(), home.path(u"notes/stage/Morvane.app"_s)));
    EXPECT_EQ(returnToPlace(home.path(u"notes/stage/Morvane.app/Contents/MacOS/Morvane"_s)), QString());
    EXPECT_EQ(returnToPlace(u"/usr/bin/morvane"_s), QString());
    EXPECT_FALSE(QFile::exists(home.path(u"Mine.app"_s)));
}

TEST_F(UpdateRemainsTest, WhatACrashLeftIsRemoved)
{
    write(u"it's my programs/Morvane-update-%1/stage/Morvane.app/x"_s.arg(someId));
    write(u"temporary/Morvane-%1.tar.zst"_s.arg(someId));
    clean();
    EXPECT_THAT(beside(), IsEmpty());
    EXPECT_THAT(downloaded(), IsEmpty());
    EXPECT_EQ(version(), "old");
}

TEST_F(UpdateRemainsTest, WhatIsWorkedOnStays)
{
    QDir().mkpath(downloads());
    BundleInstallation installation(bundle());
    ASSERT_TRUE(installation.prepare());
    const ImageFile image(downloads());
    clean();
    EXPECT_EQ(beside().size(), 1);
    EXPECT_EQ(downloaded().size(), 1);
}

TEST_F(UpdateRemainsTest, WhatIsCalledOtherwiseStays)
{
    write(u"it's my programs/Morvane-update-notes/x"_s);
    write(u"it's my programs/Morvane-update-%1 copy/x"_s.arg(someId));
    write(u"it's my programs/Morvane-update-%1.txt"_s.arg(someId));
    write(u"temporary/Morvane-1.0.tar.zst"_s);
    QDir().mkpath(downloads() + u"/Morvane-%1.tar.zst"_s.arg(someId));
    clean();
    EXPECT_EQ(beside().size(), 3);
    EXPECT_EQ(downloaded().size(), 2);
}

TEST_F(UpdateRemainsTest, LinksAreNotFollowed)
{
    write(u"precious/file"_s);
    QFile::link(home.path(u"precious"_s), parent() + u"/Morvane-update-"_s + someId);
    clean();
    EXPECT_EQ(home.read(u"precious/file"_s), "x");
    EXPECT_THAT(beside(), UnorderedElementsAre(u"Morvane-update-"_s + someId));
}

TEST_F(UpdateRemainsTest, WhatBelongsToAnotherUserStays)
{
    write(u"temporary/Morvane-%1.tar.zst"_s.arg(someId));
    ASSERT_EQ(
        ::chown((downloads() + u"/Morvane-%1.tar.zst"_s.arg(someId)).toUtf8().constData(), 65534, 65534), 0);
    clean();
    EXPECT_EQ(downloaded().size(), 1);
}

TEST_F(UpdateRemainsTest, WithoutABundleNothingBesideTheProgramIsTouched)
{
    write(u"it's my programs/Morvane-update-%1/x"_s.arg(someId));
    removeUpdateRemains({{}, parent()}, downloads());
    EXPECT_EQ(beside().size(), 1);
}

} // namespace
} // namespace morvane
