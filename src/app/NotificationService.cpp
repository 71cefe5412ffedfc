#include "app/NotificationService.h"

#include "async/Scheduler.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "platform/Announcer.h"
#include "platform/SoundPlayer.h"
#include "tools/reminders/ReminderStore.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype errorLength = 160;

QString errorBody(const QString &response)
{
    const QString body = firstCharacters(trimmed(response), errorLength);
    return body.isEmpty() ? u"Something went wrong."_s : body;
}

} // namespace

NotificationService::NotificationService(Scheduler &scheduler, NotificationCenter &center,
                                         SoundPlayer &sounds, Announcer &announcer, ReminderStore &reminders)
    : m_scheduler(scheduler), m_center(center), m_sounds(sounds), m_announcer(announcer),
      m_reminders(reminders)
{
}

void NotificationService::configure()
{
    if (m_configured)
        return;
    m_configured = true;
    m_center.setDelegate([this](NotificationRequest request) { return willPresent(std::move(request)); });
    m_scheduler.spawn(askForPermission());
}

Task<void> NotificationService::askForPermission()
{
    co_await m_center.requestAuthorization();
}

Task<bool> NotificationService::requestAuthorization()
{
    const NotificationAuthorization status = co_await m_center.authorizationStatus();
    if (status == NotificationAuthorization::notDetermined)
        co_return co_await m_center.requestAuthorization();
    co_return status == NotificationAuthorization::authorized ||
        status == NotificationAuthorization::provisional;
}

Task<NotificationAuthorization> NotificationService::authorizationStatus()
{
    return m_center.authorizationStatus();
}

void NotificationService::notify(const QString &response, Outcome outcome)
{
    const bool isError = outcome == Outcome::error;
    m_center.add({.identifier = uuidText(newUuid()),
                  .title = isError ? u"Morvane — error"_s : u"Response ready"_s,
                  .body = isError ? errorBody(response) : QString(),
                  .sound = {},
                  .delay = {}});
    m_sounds.play(isError ? u"MorvaneError"_s : doneSound.toString());
}

void NotificationService::playSound(const QString &name)
{
    m_sounds.play(name);
}

void NotificationService::removePending(const QString &id)
{
    m_center.removePending(id);
}

Task<NotificationCenter::Presentation> NotificationService::willPresent(NotificationRequest request)
{
    if (request.title == reminderTitle) {
        const auto id = uuidFromText(request.identifier);
        if (id && !co_await m_reminders.consumeIfPending(*id))
            co_return NotificationCenter::Presentation::none;
        m_announcer.announce(request.body);
    }
    co_return NotificationCenter::Presentation::banner;
}

} // namespace morvane
