#include "platform/linux/ScreenReaderWatch.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QHash>
#include <chrono>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

/// Name and interface of the registry.
constexpr QLatin1String registry("org.a11y.atspi.Registry");
constexpr QLatin1String registryPath("/org/a11y/atspi/registry");

/// A starting screen reader registers some forty events in a row; they are read with one question.
constexpr auto settlingTime = 20ms;

/// The registry hands out "Object:StateChanged:Showing" for what was registered as
/// "object:state-changed:showing"; both become "object:statechanged:showing".
QString normalized(QString event)
{
    event = event.toLower().remove(u'-');
    while (event.endsWith(u':'))
        event.chop(1);
    return event;
}

/// A registration without its last parts covers every event below it.
bool covers(const QString &registered, QStringView event)
{
    return registered.isEmpty() || event == registered ||
           (event.startsWith(registered) && event.at(registered.size()) == u':');
}

struct Listener {
    bool announcements = false;
    bool showing = false;
};

ScreenReaderNeeds needsOf(const QHash<QString, Listener> &listeners)
{
    ScreenReaderNeeds needs;
    for (const Listener &listener : listeners) {
        needs.announcements |= listener.announcements;
        needs.notifications |= listener.showing && !listener.announcements;
    }
    return needs;
}

} // namespace

ScreenReaderWatch::ScreenReaderWatch(QObject *parent) : QObject(parent)
{
    m_askSoon.setSingleShot(true);
    m_askSoon.setInterval(settlingTime);
    connect(&m_askSoon, &QTimer::timeout, this, &ScreenReaderWatch::askRegistry);
    QAccessible::installActivationObserver(this);
    if (QAccessible::isActive())
        connectToRegistry();
}

ScreenReaderWatch::~ScreenReaderWatch()
{
    QAccessible::removeActivationObserver(this);
}

QDBusConnection ScreenReaderWatch::bus()
{
    return QDBusConnection(u"a11y"_s);
}

void ScreenReaderWatch::accessibilityActiveChanged(bool active)
{
    if (active && !m_isConnected)
        connectToRegistry();
}

void ScreenReaderWatch::connectToRegistry()
{
    QDBusConnection connection = bus();
    if (!connection.isConnected())
        return;
    m_isConnected = true;
    for (const auto *signal : {"EventListenerRegistered", "EventListenerDeregistered"}) {
        connection.connect(registry, registryPath, registry, QString::fromLatin1(signal), this,
                           SLOT(listenersChanged()));
    }
    connection.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                       u"Disconnected"_s, this, SLOT(busLost()));
    askRegistry();
}

void ScreenReaderWatch::listenersChanged()
{
    if (!m_askSoon.isActive())
        m_askSoon.start();
}

void ScreenReaderWatch::busLost()
{
    m_isConnected = false;
    setNeeds(std::nullopt);
}

void ScreenReaderWatch::askRegistry()
{
    const QDBusMessage question =
        QDBusMessage::createMethodCall(registry, registryPath, registry, u"GetRegisteredEvents"_s);
    auto *call = new QDBusPendingCallWatcher(bus().asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &ScreenReaderWatch::takeAnswer);
}

void ScreenReaderWatch::takeAnswer(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    const QDBusMessage answer = call->reply();
    if (answer.type() != QDBusMessage::ReplyMessage || !answer.signature().startsWith("a(ss"_L1)) {
        setNeeds(ScreenReaderNeeds{});
        return;
    }
    QHash<QString, Listener> listeners;
    const auto registrations = answer.arguments().constFirst().value<QDBusArgument>();
    registrations.beginArray();
    while (!registrations.atEnd()) {
        QString name;
        QString event;
        registrations.beginStructure();
        registrations >> name >> event;
        registrations.endStructure();
        const QString registered = normalized(event);
        Listener &listener = listeners[name];
        listener.announcements |= covers(registered, u"object:announcement");
        listener.showing |= covers(registered, u"object:statechanged:showing");
    }
    registrations.endArray();
    setNeeds(needsOf(listeners));
}

void ScreenReaderWatch::setNeeds(std::optional<ScreenReaderNeeds> needs)
{
    if (m_needs != needs) {
        m_needs = needs;
        Q_EMIT needsChanged();
    }
}

} // namespace morvane
