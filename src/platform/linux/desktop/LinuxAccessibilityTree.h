#pragma once

#include "platform/AccessibilityTree.h"
#include "platform/linux/desktop/AccessibilityConnection.h"
#include "platform/linux/desktop/AccessibleWindow.h"
#include "platform/linux/desktop/ActionCarrier.h"

#include <chrono>

namespace morvane {

/// The elements of other programs over the accessibility bus. Many questions are on their way at once, so
/// that a window of hundreds of elements is read in a few ways to the program and back.
class LinuxAccessibilityTree final : public AccessibilityTree {
public:
    /// `carrier` is the path of morvane-action-carrier, `lookLimit` how long a program may take to tell what
    /// lies at a place, and whether it lives.
    explicit LinuxAccessibilityTree(const QString &carrier,
                                    std::chrono::milliseconds lookLimit = std::chrono::milliseconds(300))
        : m_lookLimit(lookLimit), m_carrier(m_bus, carrier)
    {
    }

    void enable() override { m_bus.announceInterest(); }
    std::optional<ScreenElement> application(qint64 pid, QDeadlineTimer deadline) override;
    QList<QList<ScreenElement>> children(const QList<ScreenElement> &parents, QDeadlineTimer deadline,
                                         const std::stop_token &stop) override;
    std::optional<ScreenElement> elementAt(QPointF point, const std::stop_token &stop) override;
    std::optional<ScreenElement> current(const ScreenElement &element, const std::stop_token &stop) override;
    bool isCovered(const ScreenElement &element, const std::stop_token &stop) override;
    bool isOwn(const ScreenElement &element) const override;
    Outcome press(const ScreenElement &element, const std::stop_token &stop) override;
    Outcome setValue(const ScreenElement &element, const QString &text, const std::stop_token &stop) override;

private:
    /// An element that is to be read, and its window.
    struct Wanted {
        AccessibilityReference reference;
        std::shared_ptr<const AccessibleWindow> window; ///< Null for a window itself.
        qint64 pid = 0;
        bool isGtk4 = false;
    };

    QList<ScreenElement> read(const QList<Wanted> &wanted, QDeadlineTimer deadline,
                              const std::stop_token &stop);
    /// Of what may open a dialog. Nothing if `stop` came before.
    std::optional<AccessibilityAnswer> askToAct(const ScreenElement &element, const QString &interface,
                                                const QString &method, const QVariantList &arguments,
                                                const std::stop_token &stop);
    /// Of a request that the program may have done without answering it.
    Outcome outcomeUnsaid(const AccessibilityReference &object);

    const std::chrono::milliseconds m_lookLimit;
    AccessibilityConnection m_bus;
    ActionCarrier m_carrier;
};

} // namespace morvane
