#include "app/Status.h"

#include "platform/Announcer.h"
#include "store/SettingsStore.h"

namespace morvane {

Status::Status(Announcer &announcer, const SettingsStore &settings, QObject *parent)
    : QObject(parent), m_announcer(announcer), m_settings(settings)
{
}

void Status::setStatusText(const QString &text)
{
    if (m_statusText == text)
        return;
    m_statusText = text;
    Q_EMIT statusTextChanged();
}

void Status::announce(const QString &text)
{
    m_announcer.announce(text);
}

void Status::announceProgress(const QString &text)
{
    if (m_settings.announceResponses())
        m_announcer.announce(text);
}

} // namespace morvane
