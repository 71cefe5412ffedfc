#include "platform/linux/notifications/AutostartEntry.h"

#include "base/FileIdentity.h"
#include "support/TemporaryHome.h"

#include <QFileInfo>
#include <gtest/gtest.h>

namespace morvane {
namespace {

class AutostartEntryTest : public testing::Test {
protected:
    TemporaryHome home;
    const QString path = home.path(".config/autostart/morvane-reminder.desktop");
    const AutostartEntry entry{home.path(".config"), "/opt/morvane/bin/morvane-reminder"};
};

TEST_F(AutostartEntryTest, StartsTheHelperAtLogin)
{
    entry.ensure();
    const QByteArray text = home.read(".config/autostart/morvane-reminder.desktop");
    EXPECT_TRUE(text.startsWith("[Desktop Entry]\nType=Application\n")) << text.toStdString();
    EXPECT_TRUE(text.contains("\nTryExec=/opt/morvane/bin/morvane-reminder\n"));
    EXPECT_TRUE(text.contains("\nExec=\"/opt/morvane/bin/morvane-reminder\" rearm\n"));
    EXPECT_EQ(permissionBits(path), 0600U);
}

TEST_F(AutostartEntryTest, AFolderOfTheDesktopKeepsItsPermissions)
{
    home.write(".config/autostart/other.desktop", "");
    const unsigned before = permissionBits(home.path(".config/autostart"));
    entry.ensure();
    EXPECT_EQ(permissionBits(home.path(".config/autostart")), before);
    entry.remove();
    EXPECT_TRUE(QFileInfo::exists(home.path(".config/autostart/other.desktop")));
}

TEST_F(AutostartEntryTest, AnEntryThatIsRightIsNotWrittenAgain)
{
    entry.ensure();
    const auto before = FileIdentity::ofPath(path);
    entry.ensure();
    EXPECT_EQ(FileIdentity::ofPath(path), before);
    AutostartEntry(home.path(".config"), "/elsewhere/morvane-reminder").ensure();
    EXPECT_TRUE(home.read(".config/autostart/morvane-reminder.desktop").contains("/elsewhere/"));
}

TEST_F(AutostartEntryTest, OddCharactersOfAPathAreQuoted)
{
    AutostartEntry(home.path(".config"), "/a b/100%/$x/\"q\"/b\\s").ensure();
    const QByteArray text = home.read(".config/autostart/morvane-reminder.desktop");
    EXPECT_TRUE(text.contains(R"(Exec="/a b/100%%/\\$x/\\"q\\"/b\\\\s" rearm)")) << text.toStdString();
    EXPECT_TRUE(text.contains(R"(TryExec=/a b/100%/$x/"q"/b\\s)"
                              "\n"))
        << text.toStdString();
}

TEST_F(AutostartEntryTest, RemovingWhatIsNotThereIsNoFault)
{
    entry.remove();
    entry.ensure();
    entry.remove();
    EXPECT_FALSE(QFileInfo::exists(path));
}

} // namespace
} // namespace morvane
