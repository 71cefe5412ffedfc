#pragma once

#include "platform/linux/desktop/AccessibilityConnection.h"

#include <memory>

namespace morvane {

/// A line to one program's elements beside the accessibility bus. One thread.
class AccessiblePeer {
public:
    /// A new line; nothing where the program has none, or tells one that does not lead to the process `pid`.
    static std::unique_ptr<AccessiblePeer> open(AccessibilityConnection &bus, const QString &service,
                                                qint64 pid, QDeadlineTimer deadline);
    ~AccessiblePeer();

    /// Whether the program is still there.
    bool isOpen() const;
    AccessiblePeer(const AccessiblePeer &) = delete;
    AccessiblePeer &operator=(const AccessiblePeer &) = delete;

    /// Whose service `call` names makes no difference.
    AccessibilityAnswer ask(AccessibilityCall call, QDeadlineTimer deadline);

private:
    explicit AccessiblePeer(QString name) : m_name(std::move(name)) {}

    const QString m_name;
};

} // namespace morvane
