#include "support/FakeNotificationDaemon.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QUuid>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;

} // namespace

FakeNotificationDaemon::FakeNotificationDaemon(const QString &busAddress, QStringList capabilities,
                                               Manner manner)
    : m_bus(QDBusConnection::connectToBus(busAddress, QUuid::createUuid().toString())),
      m_capabilities(std::move(capabilities)), m_manner(manner)
{
    if (!m_bus.registerObject(path, this,
                              QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) ||
        m_bus.interface()->registerService(service, QDBusConnectionInterface::ReplaceExistingService,
                                           QDBusConnectionInterface::AllowReplacement) !=
            QDBusConnectionInterface::ServiceRegistered)
        throw std::runtime_error("no notification daemon: " + m_bus.lastError().message().toStdString());
}

FakeNotificationDaemon::~FakeNotificationDaemon()
{
    m_bus.unregisterService(service);
    m_bus.unregisterObject(path);
    QDBusConnection::disconnectFromBus(m_bus.name());
}

QStringList FakeNotificationDaemon::GetCapabilities()
{
    ++m_timesAsked;
    misbehave();
    return m_capabilities;
}

uint FakeNotificationDaemon::Notify(const QString &program, uint replaces, const QString &,
                                    const QString &title, const QString &body, const QStringList &actions,
                                    const QVariantMap &hints, int)
{
    misbehave();
    const uint number = replaces != 0 ? replaces : static_cast<uint>(m_shown.size()) + 1;
    m_shown.append({number, replaces, program, title, body, actions, hints});
    if (m_holdsAnswers) {
        setDelayedReply(true);
        m_heldAnswers.append(message().createReply(number));
    }
    return number;
}

void FakeNotificationDaemon::goOn()
{
    m_holdsAnswers = false;
    for (const QDBusMessage &answer : std::exchange(m_heldAnswers, {}))
        m_bus.send(answer);
}

void FakeNotificationDaemon::misbehave()
{
    switch (m_manner) {
    case Manner::honest:
        return;
    case Manner::wrongTypes:
        setDelayedReply(true);
        connection().send(message().createReply({QVariantMap{{u"a"_s, -1}}, 0.5}));
        return;
    case Manner::errors:
        sendErrorReply(QDBusError::InternalError, u"broken"_s);
        return;
    case Manner::silent:
        setDelayedReply(true);
        return;
    }
}

void FakeNotificationDaemon::choose(uint id, const QString &token, const QString &action)
{
    if (!token.isEmpty())
        Q_EMIT ActivationToken(id, token);
    Q_EMIT ActionInvoked(id, action);
}

void FakeNotificationDaemon::close(uint id)
{
    Q_EMIT NotificationClosed(id, 2);
}

} // namespace morvane
