#pragma once

#include "support/AccessibleElement.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QVariantList>
#include <stdexcept>

namespace morvane {

/// A program did not answer a question about its accessibility tree.
class AccessibilityError : public std::runtime_error {
public:
    explicit AccessibilityError(const QString &what) : std::runtime_error(what.toStdString()) {}
};

/// A screen reader's place on the accessibility bus of a desktop. Waits serve the event loop, so that the
/// window under test may live in the same process, and have a limit, so that a frozen program fails a test
/// and does not hang it.
class AccessibilityBus : public QObject {
    Q_OBJECT
public:
    /// Starts the bus by activation. Throws AccessibilityError if there is none.
    explicit AccessibilityBus(const QString &sessionBusAddress);
    ~AccessibilityBus() override;

    QDBusConnection connection() const { return m_connection; }

    /// Tells the registry, and so every program, that this reader wants an event such as
    /// "object:announcement", and receives it. Programs hear of it a moment later.
    void registerEvent(const QString &event);
    /// Takes everything back that was registered.
    void deregisterEvents();

    /// The root of the program with this process identifier; waits for it.
    AccessibleElement application(qint64 pid);

    QDBusPendingCall ask(const AccessibleElement &element, const QString &interface, const QString &method,
                         const QVariantList &arguments = {}) const;
    QVariantList answer(const QDBusPendingCall &call) const;

Q_SIGNALS:
    /// Some program's tree, focus or text changed, as far as a registered event tells.
    void eventReceived(const QDBusMessage &event);

private Q_SLOTS:
    void receive(const QDBusMessage &event);

private:
    QString m_name;
    QDBusConnection m_connection;
    QStringList m_registered;
};

/// Reads an array of references to accessible objects.
QList<AccessibleElement> readReferences(AccessibilityBus &bus, const QVariant &array);

} // namespace morvane
