#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace morvane {

/// A notification daemon on a test's session bus that shows nothing and remembers what it was asked.
class FakeNotificationDaemon : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    /// How it answers: as it should, with values of wrong types, with errors, or never.
    enum class Manner { honest, wrongTypes, errors, silent };

    struct Shown {
        uint number = 0;   ///< What it answered.
        uint replaces = 0; ///< What it was asked to put it in the place of; 0 for none.
        QString program;
        QString title;
        QString body;
        QStringList actions;
        QVariantMap hints;
    };

    /// Serves on a connection of its own, in the place of another of these that does already. Throws
    /// std::runtime_error if it cannot.
    explicit FakeNotificationDaemon(const QString &busAddress,
                                    QStringList capabilities = {QStringLiteral("body"),
                                                                QStringLiteral("actions"),
                                                                QStringLiteral("body-markup")},
                                    Manner manner = Manner::honest);
    ~FakeNotificationDaemon() override;

    const QList<Shown> &shown() const { return m_shown; }
    int timesAskedForCapabilities() const { return m_timesAsked; }

    /// The user clicks the banner; numbers begin with 1 in the order in which they were shown, but for one
    /// that takes the place of another.
    void choose(uint id, const QString &token = {}, const QString &action = QStringLiteral("default"));
    void close(uint id);
    /// Shows what it is asked to from now on, but does not say so before it is told to go on.
    void holdAnswers() { m_holdsAnswers = true; }
    void goOn();

public Q_SLOTS:
    QStringList GetCapabilities();
    uint Notify(const QString &program, uint replaces, const QString &icon, const QString &title,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int timeout);

Q_SIGNALS:
    void ActionInvoked(uint id, const QString &action);
    void ActivationToken(uint id, const QString &token);
    void NotificationClosed(uint id, uint reason);

private:
    void misbehave();

    QDBusConnection m_bus;
    QStringList m_capabilities;
    Manner m_manner;
    QList<Shown> m_shown;
    int m_timesAsked = 0;
    bool m_holdsAnswers = false;
    QList<QDBusMessage> m_heldAnswers;
};

} // namespace morvane
