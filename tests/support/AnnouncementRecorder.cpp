#include "support/AnnouncementRecorder.h"

#include "support/WaitUntil.h"

#include <QDBusVariant>

using namespace Qt::StringLiterals;

namespace morvane {

AnnouncementRecorder::AnnouncementRecorder(AccessibilityBus &bus, Hearing hearing)
    : m_bus(bus), m_hearing(hearing)
{
    connect(&bus, &AccessibilityBus::eventReceived, this, &AnnouncementRecorder::receive);
    bus.registerEvent(hearing == Hearing::announcements ? u"object:announcement"_s
                                                        : u"object:state-changed:showing"_s);
}

void AnnouncementRecorder::receive(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (m_hearing == Hearing::announcements && message.member() == "Announcement"_L1) {
        m_events.append(arguments.value(3).value<QDBusVariant>().variant().toString());
    } else if (m_hearing == Hearing::notifications && message.member() == "StateChanged"_L1 &&
               arguments.value(0).toString() == "showing"_L1 && arguments.value(1).toInt() == 1) {
        const AccessibleElement source(m_bus, message.service(), message.path());
        m_events.append(Notification{m_bus.ask(source, u"org.a11y.atspi.Accessible"_s, u"GetRole"_s),
                                     m_bus.ask(source, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                               {u"org.a11y.atspi.Accessible"_s, u"Name"_s})});
    }
}

QStringList AnnouncementRecorder::heard() const
{
    QStringList texts;
    for (const Event &event : m_events) {
        if (const auto *text = std::get_if<QString>(&event)) {
            texts.append(*text);
            continue;
        }
        const auto &notification = std::get<Notification>(event);
        if (!notification.name.isFinished() || !notification.role.isFinished())
            break;
        if (notification.role.isError() || notification.name.isError()) {
            texts.append(u"(gone)"_s);
        } else if (AccessibleRole(notification.role.reply().arguments().value(0).toUInt()) ==
                   AccessibleRole::notification) {
            texts.append(
                notification.name.reply().arguments().value(0).value<QDBusVariant>().variant().toString());
        }
    }
    return texts;
}

bool AnnouncementRecorder::hears(const QString &text) const
{
    return waitUntil([&] { return heard().contains(text); });
}

bool AnnouncementRecorder::hearsCount(qsizetype count) const
{
    return waitUntil([&] { return heard().size() >= count; });
}

} // namespace morvane
