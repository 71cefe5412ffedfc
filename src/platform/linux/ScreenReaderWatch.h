#pragma once

#include <QAccessible>
#include <QDBusConnection>
#include <QObject>
#include <QTimer>
#include <optional>

class QDBusPendingCallWatcher;

namespace morvane {

/// Which kinds of speech the running assistive programs would hear.
struct ScreenReaderNeeds {
    bool announcements = false; ///< Someone listens to the event `Announcement`.
    bool notifications = false; ///< Someone follows what comes into view, but not announcements.

    bool operator==(const ScreenReaderNeeds &) const = default;
};

/// Follows the accessibility registry's list of listeners without ever waiting for it. Main thread.
class ScreenReaderWatch : public QObject, private QAccessible::ActivationObserver {
    Q_OBJECT
public:
    explicit ScreenReaderWatch(QObject *parent = nullptr);
    ~ScreenReaderWatch() override;

    /// Nothing until the accessibility bus is there and the registry has answered once.
    const std::optional<ScreenReaderNeeds> &needs() const { return m_needs; }

    /// Qt's own connection to the accessibility bus: events must come from the name that owns the tree.
    static QDBusConnection bus();

Q_SIGNALS:
    void needsChanged();

private Q_SLOTS:
    void listenersChanged();
    void busLost();

private:
    void accessibilityActiveChanged(bool active) override;
    void connectToRegistry();
    void askRegistry();
    void takeAnswer(QDBusPendingCallWatcher *call);
    void setNeeds(std::optional<ScreenReaderNeeds> needs);

    std::optional<ScreenReaderNeeds> m_needs;
    QTimer m_askSoon;
    bool m_isConnected = false;
};

} // namespace morvane
