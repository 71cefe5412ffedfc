#include "base/DataFolders.h"

#include "support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(DataFoldersTest, FollowTheXdgVariables)
{
    const TemporaryHome home;
    qputenv("XDG_DATA_HOME", home.path("data").toUtf8());
    qputenv("XDG_CONFIG_HOME", home.path("config").toUtf8());
    EXPECT_EQ(dataFolder(), home.path("data/Morvane"));
    EXPECT_EQ(settingsFile(), home.path("config/Morvane/Morvane.conf"));
}

TEST(DataFoldersTest, DefaultToTheHomeFolder)
{
    const TemporaryHome home;
    for (const QByteArray &value : {QByteArray(), QByteArray("relative/path")}) {
        qputenv("XDG_DATA_HOME", value);
        qputenv("XDG_CONFIG_HOME", value);
        EXPECT_EQ(dataFolder(), home.path(".local/share/Morvane"));
        EXPECT_EQ(settingsFile(), home.path(".config/Morvane/Morvane.conf"));
    }
}

} // namespace
} // namespace morvane
