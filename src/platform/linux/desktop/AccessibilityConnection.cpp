#include "platform/linux/desktop/AccessibilityConnection.h"

#include "platform/linux/desktop/AnsweringBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QUuid>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr std::chrono::milliseconds longestIntroduction{500};

const auto busService = u"org.a11y.Bus"_s;
const auto busPath = u"/org/a11y/bus"_s;
const auto propertiesInterface = u"org.freedesktop.DBus.Properties"_s;

QDBusMessage message(const AccessibilityCall &call)
{
    QDBusMessage text = QDBusMessage::createMethodCall(call.service, call.path, call.interface, call.method);
    text.setArguments(call.arguments);
    return text;
}

int remaining(QDeadlineTimer deadline)
{
    return int(std::clamp<qint64>(deadline.remainingTime(), 1, 60000));
}

} // namespace

AccessibilityConnection::AccessibilityConnection()
    : m_name(u"screen-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

AccessibilityConnection::~AccessibilityConnection()
{
    QDBusConnection::disconnectFromBus(m_name);
}

void AccessibilityConnection::announceInterest()
{
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_isInterested, true))
            return;
    }
    const AccessibilityCall call{
        busService,
        busPath,
        propertiesInterface,
        u"Set"_s,
        {u"org.a11y.Status"_s, u"IsEnabled"_s, QVariant::fromValue(QDBusVariant(true))}};
    QDBusConnection::sessionBus()
        .asyncCall(message(call), int(longestIntroduction.count()))
        .waitForFinished();
}

std::optional<QDBusConnection> AccessibilityConnection::connection(QDeadlineTimer deadline)
{
    const std::lock_guard lock(m_mutex);
    if (m_isConnected) {
        QDBusConnection known(m_name);
        if (known.isConnected())
            return known;
        QDBusConnection::disconnectFromBus(m_name);
        m_isConnected = false;
    }
    QDBusPendingReply<QString> address = QDBusConnection::sessionBus().asyncCall(
        message({busService, busPath, busService, u"GetAddress"_s}), remaining(deadline));
    address.waitForFinished();
    if (address.isError() || !isAnswering(address.value(), deadline))
        return std::nullopt;
    QDBusConnection opened = QDBusConnection::connectToBus(address.value(), m_name);
    m_isConnected = opened.isConnected();
    return m_isConnected ? std::optional(opened) : std::nullopt;
}

QList<AccessibilityAnswer> AccessibilityConnection::ask(const QList<AccessibilityCall> &calls,
                                                        QDeadlineTimer deadline)
{
    const auto bus = deadline.hasExpired() ? std::nullopt : connection(deadline);
    return bus ? askOver(*bus, calls, deadline) : QList<AccessibilityAnswer>(calls.size());
}

AccessibilityAnswer AccessibilityConnection::ask(const AccessibilityCall &call, QDeadlineTimer deadline)
{
    return ask(QList{call}, deadline).first();
}

QList<AccessibilityAnswer> askOver(const QDBusConnection &connection, const QList<AccessibilityCall> &calls,
                                   QDeadlineTimer deadline)
{
    QList<AccessibilityAnswer> answers(calls.size());
    QList<QDBusPendingCall> pending;
    pending.reserve(calls.size());
    for (const AccessibilityCall &call : calls)
        pending.append(connection.asyncCall(message(call), remaining(deadline)));
    for (qsizetype at = 0; at < pending.size(); ++at) {
        pending[at].waitForFinished();
        const QDBusMessage reply = pending.at(at).reply();
        if (reply.type() == QDBusMessage::ReplyMessage) {
            answers[at] = {AccessibilityAnswer::Kind::answered, reply.arguments()};
        } else {
            const auto type = QDBusError(reply).type();
            const bool isLate =
                type == QDBusError::NoReply || type == QDBusError::Timeout || type == QDBusError::TimedOut;
            answers[at].kind = isLate ? AccessibilityAnswer::Kind::late : AccessibilityAnswer::Kind::failed;
        }
    }
    return answers;
}

AccessibilityCall propertyCall(const AccessibilityReference &object, const QString &interface,
                               const QString &property)
{
    return {object.service, object.path, propertiesInterface, u"Get"_s, {interface, property}};
}

QVariant propertyOf(const AccessibilityAnswer &answer)
{
    return answer.values.value(0).value<QDBusVariant>().variant();
}

QList<AccessibilityReference> referencesOf(const AccessibilityAnswer &answer, qsizetype limit)
{
    QList<AccessibilityReference> references;
    const QVariant value = answer.values.value(0);
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return references;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != "a(so)"_L1)
        return references;
    argument.beginArray();
    while (!argument.atEnd()) {
        AccessibilityReference reference;
        QDBusObjectPath path;
        argument.beginStructure();
        argument >> reference.service >> path;
        argument.endStructure();
        reference.path = path.path();
        if (references.size() < limit)
            references.append(reference);
    }
    argument.endArray();
    return references;
}

} // namespace morvane
