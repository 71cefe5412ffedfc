#include "app/PermissionsModel.h"

#include "app/Log.h"
#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "async/Sleep.h"
#include "async/StopOnCancel.h"
#include "platform/Announcer.h"
#include "platform/DisplaySilent.h"
#include "platform/InputEvents.h"
#include "platform/ScreenCapture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The user reads the desktop's question first.
constexpr std::chrono::milliseconds firstLook{1500};
constexpr std::chrono::milliseconds secondLook{5000};

QString praise(PermissionsModel::Permission permission)
{
    switch (permission) {
    case PermissionsModel::Permission::screenRecording:
        return u"Screen Recording is configured."_s;
    case PermissionsModel::Permission::accessibility:
        return u"Accessibility is configured."_s;
    case PermissionsModel::Permission::notifications:
        return u"Notifications are configured."_s;
    }
    Q_UNREACHABLE();
}

} // namespace

PermissionsModel::PermissionsModel(Scheduler &scheduler, Announcer &announcer,
                                   std::shared_ptr<ScreenCapture> screen, std::shared_ptr<InputEvents> input,
                                   NotificationCenter &notifications, DesktopSettings &settings,
                                   QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_announcer(announcer), m_screen(std::move(screen)),
      m_input(std::move(input)), m_notifications(notifications), m_settings(settings)
{
}

void PermissionsModel::set(Permission permission, bool isConfigured)
{
    bool &state = m_configured[std::size_t(permission)];
    if (state == isConfigured)
        return;
    state = isConfigured;
    Q_EMIT changed();
    if (isConfigured)
        m_announcer.announce(praise(permission));
}

Task<std::optional<PermissionsModel::Flags>>
PermissionsModel::readFlags(std::shared_ptr<ScreenCapture> screen, std::shared_ptr<InputEvents> input)
{
    const TaskContext context = co_await currentContext();
    const StopOnCancel stop(*context.cancellation);
    co_return co_await runOffMain([screen, input, token = stop.token()]() -> std::optional<Flags> {
        try {
            return Flags{.screenRecording = screen->isGranted(token),
                         .accessibility = input->isTrusted(token)};
        } catch (const DisplaySilent &) {
            qCWarning(appLog) << "the display does not tell what is permitted";
            return std::nullopt;
        }
    });
}

void PermissionsModel::take(const std::optional<Flags> &flags)
{
    if (!flags)
        return;
    set(Permission::screenRecording, flags->screenRecording);
    set(Permission::accessibility, flags->accessibility);
}

void PermissionsModel::refresh()
{
    if (m_checking)
        return;
    m_checking = true;
    m_scheduler.spawn(check(this));
}

Task<void> PermissionsModel::check(QPointer<PermissionsModel> self)
{
    const auto flags = co_await readFlags(self->m_screen, self->m_input);
    if (!self)
        co_return;
    self->take(flags);
    self->m_checking = false;
    co_await askForNotificationStatus(self, &self->m_notifications);
}

Task<void> PermissionsModel::askForNotificationStatus(QPointer<PermissionsModel> self,
                                                      NotificationCenter *notifications)
{
    const NotificationAuthorization status = co_await notifications->authorizationStatus();
    if (self)
        self->set(Permission::notifications, status == NotificationAuthorization::authorized ||
                                                 status == NotificationAuthorization::provisional);
}

void PermissionsModel::request(Permission permission)
{
    switch (permission) {
    case Permission::screenRecording:
        m_screen->requestAccess();
        break;
    case Permission::accessibility:
        m_input->requestTrust();
        break;
    case Permission::notifications:
        m_scheduler.spawn(requestNotifications(this, &m_notifications));
        return;
    }
    pollStatus(firstLook);
    pollStatus(secondLook);
}

Task<void> PermissionsModel::requestNotifications(QPointer<PermissionsModel> self,
                                                  NotificationCenter *notifications)
{
    const bool isAllowed = co_await notifications->requestAuthorization();
    if (!self)
        co_return;
    if (!isAllowed) {
        self->m_announcer.announce(
            u"Notifications are turned off in System Settings. Choose Settings next to Notifications to open "
            "the Notifications settings and allow Morvane."_s);
    } else if (self->isConfigured(Permission::notifications)) {
        self->m_announcer.announce(praise(Permission::notifications));
    } else {
        self->set(Permission::notifications, true);
    }
}

void PermissionsModel::pollStatus(std::chrono::milliseconds after)
{
    m_scheduler.spawn(poll(this, after));
}

Task<void> PermissionsModel::poll(QPointer<PermissionsModel> self, std::chrono::milliseconds after)
{
    co_await sleepFor(after);
    if (!self)
        co_return;
    const auto flags = co_await readFlags(self->m_screen, self->m_input);
    if (self)
        self->take(flags);
}

DesktopSettings::Pane PermissionsModel::securityPaneFor(const QString &row)
{
    if (row == "Screen Recording"_L1)
        return DesktopSettings::Pane::screenCapture;
    if (row == "Accessibility"_L1)
        return DesktopSettings::Pane::accessibility;
    if (row == "Full Disk Access"_L1)
        return DesktopSettings::Pane::allFiles;
    if (row == "Notifications"_L1)
        return DesktopSettings::Pane::notifications;
    return DesktopSettings::Pane::privacy;
}

void PermissionsModel::openSettingsFor(const QString &row)
{
    if (m_settings.open(securityPaneFor(row)))
        return;
    m_announcer.announce(u"This desktop has no settings for this that Morvane knows."_s);
    Q_EMIT settingsUnknown();
}

} // namespace morvane
