#include "base/InstalledFiles.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(InstalledFilesTest, TheTreeIsFoundByTheProgramsOwnPlace)
{
    const QString root = QFileInfo(QCoreApplication::applicationDirPath()).path();
    const InstalledFiles files = InstalledFiles::aroundProgram();
    EXPECT_EQ(files.helper(u"morvane-reminder"_s), root + u"/libexec/morvane/morvane-reminder"_s);
    EXPECT_EQ(files.sounds(), root + u"/share/morvane/sounds"_s);
    EXPECT_EQ(files.help(), root + u"/share/morvane/help/index.html"_s);
    EXPECT_TRUE(QFileInfo::exists(files.help()));
    EXPECT_EQ(files.libraryData(u"poppler"_s), root + u"/share/morvane/poppler"_s);
}

TEST(InstalledFilesTest, AHelperLiesOneFolderDeeper)
{
    const QString above = QFileInfo(QFileInfo(QCoreApplication::applicationDirPath()).path()).path();
    EXPECT_EQ(InstalledFiles::aroundHelper().sounds(), above + u"/share/morvane/sounds"_s);
}

TEST(InstalledFilesTest, ATreeCanLieAnywhere)
{
    EXPECT_EQ(InstalledFiles(u"/my programs/Morvane.app/Contents"_s).helper(u"helper"_s),
              u"/my programs/Morvane.app/Contents/libexec/morvane/helper"_s);
}

} // namespace
} // namespace morvane
