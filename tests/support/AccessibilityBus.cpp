#include "support/AccessibilityBus.h"

#include "support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const auto registryService = u"org.a11y.atspi.Registry"_s;
const auto registryPath = u"/org/a11y/atspi/registry"_s;
const auto rootPath = u"/org/a11y/atspi/accessible/root"_s;
const auto accessibleInterface = u"org.a11y.atspi.Accessible"_s;

QDBusConnection connectToAccessibilityBus(const QString &sessionBusAddress, const QString &name)
{
    const QString sessionName = name + u"-session"_s;
    QDBusConnection session = QDBusConnection::connectToBus(sessionBusAddress, sessionName);
    const QDBusReply<QString> address = session.call(QDBusMessage::createMethodCall(
        u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s));
    QDBusConnection::disconnectFromBus(sessionName);
    if (!address.isValid())
        throw AccessibilityError(u"no accessibility bus: "_s + address.error().message());
    return QDBusConnection::connectToBus(address.value(), name);
}

} // namespace

AccessibilityBus::AccessibilityBus(const QString &sessionBusAddress)
    : m_name(u"reader-"_s + QUuid::createUuid().toString()),
      m_connection(connectToAccessibilityBus(sessionBusAddress, m_name))
{
    if (!m_connection.isConnected()) {
        throw AccessibilityError(u"cannot join the accessibility bus: "_s +
                                 m_connection.lastError().message());
    }
    for (const auto *interface : {"Object", "Focus", "Window"}) {
        m_connection.connect(QString(), QString(),
                             u"org.a11y.atspi.Event."_s + QString::fromLatin1(interface), QString(), this,
                             SLOT(receive(QDBusMessage)));
    }
}

AccessibilityBus::~AccessibilityBus()
{
    QDBusConnection::disconnectFromBus(m_name);
}

void AccessibilityBus::receive(const QDBusMessage &event)
{
    Q_EMIT eventReceived(event);
}

void AccessibilityBus::registerEvent(const QString &event)
{
    auto call =
        QDBusMessage::createMethodCall(registryService, registryPath, registryService, u"RegisterEvent"_s);
    call << event << QStringList() << QString();
    answer(m_connection.asyncCall(call));
    m_registered.append(event);
}

void AccessibilityBus::deregisterEvents()
{
    for (const QString &event : std::exchange(m_registered, {})) {
        auto call = QDBusMessage::createMethodCall(registryService, registryPath, registryService,
                                                   u"DeregisterEvent"_s);
        call << event;
        answer(m_connection.asyncCall(call));
    }
}

AccessibleElement AccessibilityBus::application(qint64 pid)
{
    const AccessibleElement desktop(*this, registryService, rootPath);
    std::optional<AccessibleElement> found;
    waitUntil([&] {
        for (const AccessibleElement &program : desktop.children()) {
            const QDBusReply<uint> owner = m_connection.interface()->servicePid(program.service());
            if (owner.isValid() && owner.value() == pid)
                found = program;
        }
        return found.has_value();
    });
    if (!found)
        throw AccessibilityError(u"no accessible program with process identifier %1"_s.arg(pid));
    return *found;
}

QDBusPendingCall AccessibilityBus::ask(const AccessibleElement &element, const QString &interface,
                                       const QString &method, const QVariantList &arguments) const
{
    auto call = QDBusMessage::createMethodCall(element.service(), element.path(), interface, method);
    call.setArguments(arguments);
    return m_connection.asyncCall(call);
}

QVariantList AccessibilityBus::answer(const QDBusPendingCall &call) const
{
    // Of many that are asked at once most have answered before it is their turn.
    if (!call.isFinished()) {
        const QDBusPendingCallWatcher watcher(call); // turns the event loop when it comes
        if (!waitUntil([&] { return call.isFinished(); }))
            throw AccessibilityError(u"no answer in time"_s);
    }
    if (call.isError())
        throw AccessibilityError(call.error().name() + u": "_s + call.error().message());
    return call.reply().arguments();
}

QList<AccessibleElement> readReferences(AccessibilityBus &bus, const QVariant &array)
{
    QList<AccessibleElement> elements;
    const auto references = array.value<QDBusArgument>();
    references.beginArray();
    while (!references.atEnd()) {
        QString service;
        QDBusObjectPath path;
        references.beginStructure();
        references >> service >> path;
        references.endStructure();
        elements.append(AccessibleElement(bus, service, path.path()));
    }
    references.endArray();
    return elements;
}

} // namespace morvane
