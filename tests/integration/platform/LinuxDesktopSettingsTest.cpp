#include "platform/linux/LinuxDesktopSettings.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Pane = DesktopSettings::Pane;

TEST(LinuxDesktopSettingsTest, EachDesktopHasItsOwnSettings)
{
    EXPECT_EQ(LinuxDesktopSettings::command(u"ubuntu:GNOME"_s, Pane::accessibility),
              (QStringList{u"gnome-control-center"_s, u"universal-access"_s}));
    EXPECT_EQ(LinuxDesktopSettings::command(u"KDE"_s, Pane::notifications),
              (QStringList{u"systemsettings5"_s, u"kcm_notifications"_s}));
    EXPECT_EQ(LinuxDesktopSettings::command(u"XFCE"_s, Pane::notifications),
              QStringList{u"xfce4-notifyd-config"_s});
}

TEST(LinuxDesktopSettingsTest, ADesktopThatIsNotKnownHasNone)
{
    EXPECT_EQ(LinuxDesktopSettings::command(u"i3"_s, Pane::privacy), QStringList());
    EXPECT_EQ(LinuxDesktopSettings::command({}, Pane::allFiles), QStringList());
}

TEST(LinuxDesktopSettingsTest, ADesktopWhoseSettingsAreNotInstalledOpensNothing)
{
    const QByteArray before = qgetenv("XDG_CURRENT_DESKTOP");
    const QByteArray path = qgetenv("PATH");
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
    qputenv("PATH", "/no/such/folder");
    EXPECT_FALSE(LinuxDesktopSettings().open(Pane::notifications));
    qputenv("PATH", path);
    before.isEmpty() ? qunsetenv("XDG_CURRENT_DESKTOP") : qputenv("XDG_CURRENT_DESKTOP", before);
}

} // namespace
} // namespace morvane
