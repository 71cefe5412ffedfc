#pragma once

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QList>
#include <QString>
#include <QVariantList>
#include <mutex>
#include <optional>

namespace morvane {

/// One question to an object on the accessibility bus.
struct AccessibilityCall {
    QString service;
    QString path;
    QString interface;
    QString method;
    QVariantList arguments = {};
};

/// Another program's object by its address on the bus.
struct AccessibilityReference {
    QString service;
    QString path;

    bool operator==(const AccessibilityReference &) const = default;
};

/// How one question ended.
struct AccessibilityAnswer {
    enum class Kind {
        answered,
        failed, ///< With an error, or there was nobody to ask.
        late,
        ended, ///< Who was asked went before answering, as a program does whose button says "Quit".
    };
    Kind kind = Kind::late;
    QVariantList values;
};

/// The program's place on the accessibility bus, taken with the first question. Any thread but the main one.
class AccessibilityConnection {
public:
    AccessibilityConnection();
    ~AccessibilityConnection();

    /// Says on the session bus that somebody wants to know, so that programs build their trees.
    void announceInterest();

    /// Sends all questions and waits for the answers until `deadline`.
    QList<AccessibilityAnswer> ask(const QList<AccessibilityCall> &calls, QDeadlineTimer deadline);
    AccessibilityAnswer ask(const AccessibilityCall &call, QDeadlineTimer deadline);

private:
    std::optional<QDBusConnection> connection(QDeadlineTimer deadline);

    std::mutex m_mutex;
    const QString m_name;
    bool m_isConnected = false;
    bool m_isInterested = false;
};

/// Sends all questions over an open connection and waits for the answers until `deadline`.
QList<AccessibilityAnswer> askOver(const QDBusConnection &connection, const QList<AccessibilityCall> &calls,
                                   QDeadlineTimer deadline);

/// The question for a property.
AccessibilityCall propertyCall(const AccessibilityReference &object, const QString &interface,
                               const QString &property);
QVariant propertyOf(const AccessibilityAnswer &answer);

/// Reads an array of references to accessible objects, at most `limit`.
QList<AccessibilityReference> referencesOf(const AccessibilityAnswer &answer, qsizetype limit);

} // namespace morvane
