#pragma once

#include "support/AccessibilityBus.h"

#include <QDBusPendingCall>
#include <QObject>
#include <QStringList>
#include <variant>

namespace morvane {

/// Listens like a screen reader and keeps what it would say, in order.
class AnnouncementRecorder : public QObject {
    Q_OBJECT
public:
    /// What the reader understands: today's announcements, or only notifications that come into view, as
    /// older readers do.
    enum class Hearing { announcements, notifications };

    /// Registers with the registry; `bus` must outlive the recorder.
    AnnouncementRecorder(AccessibilityBus &bus, Hearing hearing);

    /// Everything heard so far. An older reader asks for a notification's text after it was told of it; a
    /// text that is gone by then is heard as "(gone)".
    QStringList heard() const;
    /// Whether `text` is heard, now or soon.
    bool hears(const QString &text) const;
    /// Whether this many are heard, now or soon.
    bool hearsCount(qsizetype count) const;
    void forget() { m_events.clear(); }

private:
    struct Notification {
        QDBusPendingCall role;
        QDBusPendingCall name;
    };
    using Event = std::variant<QString, Notification>;

    void receive(const QDBusMessage &message);

    AccessibilityBus &m_bus;
    const Hearing m_hearing;
    QList<Event> m_events;
};

} // namespace morvane
