#pragma once

#include <QDeadlineTimer>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <memory>
#include <optional>
#include <stop_token>

namespace morvane {

/// Which element of which program is meant; only the tree that gave it understands it.
struct LiveElement {
    virtual ~LiveElement() = default;
};

/// One element of a program's window as it was when it was read. What the program does not tell is absent.
struct ScreenElement {
    QString role; ///< By the system's names, such as "AXButton".
    bool pressable = false;
    std::optional<QRectF> frame; ///< As told in ScreenCapture.h.
    std::optional<QString> title;
    std::optional<QString> description;
    std::optional<QString> value; ///< Texts only.
    bool mayHaveChildren = false;
    std::shared_ptr<const LiveElement> element;
};

/// The elements of other programs' windows. Any thread; calls block until the program answers, with a limit
/// each. `stop` ends the waiting for the display, by DisplaySilent.
class AccessibilityTree {
public:
    enum class Outcome {
        done,
        refused, ///< The element is there and cannot do it.
        gone,    ///< The program has ended, or the element is hidden by now or has become another.
        stopped, ///< `stop` came before the element was told, and it was not.
    };

    virtual ~AccessibilityTree() = default;

    /// Asks programs to build their trees, as some do only when told.
    virtual void enable() = 0;

    /// The root of a program's elements; nothing if it does not answer in time.
    virtual std::optional<ScreenElement> application(qint64 pid, QDeadlineTimer deadline) = 0;

    /// The children of each of `parents`, in the same order. Asked for together, since each question takes a
    /// way to the program and back. A parent that does not answer in time has none.
    virtual QList<QList<ScreenElement>> children(const QList<ScreenElement> &parents, QDeadlineTimer deadline,
                                                 const std::stop_token &stop) = 0;

    /// What lies at a point of the screen.
    virtual std::optional<ScreenElement> elementAt(QPointF point, const std::stop_token &stop) = 0;

    /// The same element as it is now; nothing if it is gone or no longer shown.
    virtual std::optional<ScreenElement> current(const ScreenElement &element,
                                                 const std::stop_token &stop) = 0;

    /// Whether a click at the middle of an element, which is `current`, would reach another window.
    virtual bool isCovered(const ScreenElement &element, const std::stop_token &stop) = 0;

    /// Whether an element is in a window of this program's own. Asks nobody.
    virtual bool isOwn(const ScreenElement &element) const = 0;

    virtual Outcome press(const ScreenElement &element, const std::stop_token &stop) = 0;
    virtual Outcome setValue(const ScreenElement &element, const QString &text,
                             const std::stop_token &stop) = 0;
};

} // namespace morvane
