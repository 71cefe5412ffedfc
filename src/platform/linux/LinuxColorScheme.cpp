#include "platform/linux/LinuxColorScheme.h"

#include "platform/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;
const QString settingGroup = u"org.freedesktop.appearance"_s;
const QString settingKey = u"color-scheme"_s;

/// Old portals wrap the value in one variant more.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

LinuxColorScheme::LinuxColorScheme(QObject *parent) : ColorScheme(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(service, path, interface, u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto call = QDBusMessage::createMethodCall(service, path, interface, u"Read"_s);
    call.setArguments({settingGroup, settingKey});
    auto *reply = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
        reply->deleteLater();
        const QDBusPendingReply<QDBusVariant> answer = *reply;
        if (answer.isError())
            qCInfo(platformLog) << "the desktop does not tell its colour scheme:" << answer.error().name();
        else
            take(answer.value().variant());
    });
}

void LinuxColorScheme::settingChanged(const QString &group, const QString &key, const QDBusVariant &value)
{
    if (group == settingGroup && key == settingKey)
        take(value.variant());
}

void LinuxColorScheme::take(const QVariant &value)
{
    const uint number = unwrapped(value).toUInt();
    const Preference preference = number == 1   ? Preference::dark
                                  : number == 2 ? Preference::light
                                                : Preference::none;
    if (preference == m_preference)
        return;
    m_preference = preference;
    Q_EMIT preferenceChanged();
}

} // namespace morvane
