#pragma once

#include <QAccessible>
#include <QDBusVirtualObject>
#include <QPointer>

namespace morvane {

class AssistiveCommands;

/// Stands on the accessibility bus in front of the toolkit: what assistive technology asks for goes on to it,
/// but for changes, of which `commands` decides first. The toolkit itself heeds no window that lies below a
/// question, takes a text of any length in one go, and waits for the program that owns the clipboard. Main
/// thread.
class AccessibilityGate : public QDBusVirtualObject, private QAccessible::ActivationObserver {
    Q_OBJECT
public:
    /// `commands` must outlive the gate. It closes by itself once the bus is there.
    explicit AccessibilityGate(AssistiveCommands &commands);
    ~AccessibilityGate() override;

    /// Whether it stands there.
    bool isClosed() const { return m_toolkit != nullptr; }

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void accessibilityActiveChanged(bool active) override;
    void close();
    bool take(QAccessibleInterface &element, const QDBusMessage &message);

    AssistiveCommands &m_commands;
    QPointer<QDBusVirtualObject> m_toolkit; ///< That stands behind it.
};

} // namespace morvane
