#include "integration/update/BundleFixture.h"
#include "update/ImageFile.h"

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
};

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
