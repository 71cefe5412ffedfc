#pragma once

#include "platform/linux/desktop/AccessibilityConnection.h"
#include "platform/linux/desktop/AccessiblePeer.h"

#include <QList>
#include <QString>
#include <memory>
#include <mutex>
#include <vector>

namespace morvane {

/// Tells programs to act, each time on a line of its own. A program of GTK 3 that is told to press a button
/// reads nothing more on that line while the dialog is open that this opens: over the bus it would be silent
/// to everybody, screen readers among them. What comes on the line meanwhile, its end included, makes the
/// program hang for good with the user's next key. So a line is kept, without a word, until the dialogs are
/// closed that were not there before it. Any thread but the main one.
class AccessiblePeers {
public:
    explicit AccessiblePeers(AccessibilityConnection &bus) : m_bus(bus) {}

    /// Over the bus where the program, whose process is `pid`, has no other lines.
    AccessibilityAnswer tell(const AccessibilityCall &call, qint64 pid, QDeadlineTimer deadline);

private:
    struct Line {
        QString service;
        QList<AccessibilityReference> dialogs; ///< That were open before it.
        std::shared_ptr<AccessiblePeer> peer;
    };

    QList<AccessibilityReference> openDialogs(const QString &service, QDeadlineTimer deadline);
    /// Keeps a new line, and closes those that the program reads again.
    void keep(Line line);

    AccessibilityConnection &m_bus;
    std::mutex m_mutex;
    std::vector<Line> m_lines; ///< The newest last.
};

} // namespace morvane
