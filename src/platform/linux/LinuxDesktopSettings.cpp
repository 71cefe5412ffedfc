#include "platform/linux/LinuxDesktopSettings.h"

#include <QProcess>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString gnomePanel(DesktopSettings::Pane pane)
{
    switch (pane) {
    case DesktopSettings::Pane::accessibility:
        return u"universal-access"_s;
    case DesktopSettings::Pane::notifications:
        return u"notifications"_s;
    case DesktopSettings::Pane::screenCapture:
    case DesktopSettings::Pane::allFiles:
    case DesktopSettings::Pane::privacy:
        return u"privacy"_s;
    }
    Q_UNREACHABLE();
}

QString plasmaModule(DesktopSettings::Pane pane)
{
    switch (pane) {
    case DesktopSettings::Pane::accessibility:
        return u"kcm_access"_s;
    case DesktopSettings::Pane::notifications:
        return u"kcm_notifications"_s;
    case DesktopSettings::Pane::screenCapture:
    case DesktopSettings::Pane::allFiles:
    case DesktopSettings::Pane::privacy:
        return u"kcm_feedback"_s;
    }
    Q_UNREACHABLE();
}

QStringList xfceCommand(DesktopSettings::Pane pane)
{
    switch (pane) {
    case DesktopSettings::Pane::accessibility:
        return {u"xfce4-accessibility-settings"_s};
    case DesktopSettings::Pane::notifications:
        return {u"xfce4-notifyd-config"_s};
    case DesktopSettings::Pane::screenCapture:
    case DesktopSettings::Pane::allFiles:
    case DesktopSettings::Pane::privacy:
        return {u"xfce4-settings-manager"_s};
    }
    Q_UNREACHABLE();
}

} // namespace

QStringList LinuxDesktopSettings::command(const QString &desktop, Pane pane)
{
    const QStringList names = desktop.split(u':');
    if (names.contains("GNOME"_L1, Qt::CaseInsensitive))
        return {u"gnome-control-center"_s, gnomePanel(pane)};
    if (names.contains("KDE"_L1, Qt::CaseInsensitive))
        return {u"systemsettings5"_s, plasmaModule(pane)};
    if (names.contains("XFCE"_L1, Qt::CaseInsensitive))
        return xfceCommand(pane);
    return {};
}

bool LinuxDesktopSettings::open(Pane pane)
{
    QStringList words = command(qEnvironmentVariable("XDG_CURRENT_DESKTOP"), pane);
    if (words.isEmpty())
        return false;
    const QString program = QStandardPaths::findExecutable(words.takeFirst());
    return !program.isEmpty() && QProcess::startDetached(program, words);
}

} // namespace morvane
