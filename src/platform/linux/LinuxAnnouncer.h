#pragma once

#include "platform/Announcer.h"
#include "platform/linux/ScreenReaderWatch.h"

#include <QDeadlineTimer>
#include <QObject>
#include <deque>
#include <memory>

namespace morvane {

class AnnouncementNotice;

/// Speaks through whichever screen reader runs, in the way that it understands: the accessibility event
/// `Announcement`, or for readers that do not listen to it a notification that comes into view. Without a
/// listener nothing is sent. Main thread; needs the application object.
class LinuxAnnouncer : public QObject, public Announcer {
    Q_OBJECT
public:
    explicit LinuxAnnouncer(QObject *parent = nullptr);
    ~LinuxAnnouncer() override;

    void announce(const QString &text) override;
    /// Whether a screen reader, or what works like one, is known to listen.
    bool isHeard() const;

private:
    struct Held {
        QString text;
        QDeadlineTimer untilStale;
    };

    void deliver(const QString &text, const ScreenReaderNeeds &needs);
    void deliverHeld();
    void sendAnnouncement(const QString &text);
    void showNotice(const QString &text);

    ScreenReaderWatch m_readers;
    std::deque<Held> m_held; ///< Spoken once the registry has told who listens.
    std::deque<std::unique_ptr<AnnouncementNotice>> m_notices;
};

} // namespace morvane
