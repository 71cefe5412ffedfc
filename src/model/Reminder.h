#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QUuid>

namespace morvane {

/// What the user is to be told, and when.
struct Reminder {
    QUuid id;
    QString message;
    double fireDate = 0; ///< Seconds since 2001-01-01T00:00:00Z.

    bool operator==(const Reminder &) const = default;
};

// The stored form: a JSON array of objects whose keys are the field names; identifiers are upper-case text,
// dates are numbers. Any thread.

QByteArray remindersToJson(const QList<Reminder> &reminders);

/// The empty list for anything that is no such array: one record that lacks a key, or has another type under
/// it, spoils the list. Unknown keys are ignored.
QList<Reminder> remindersFromJson(QByteArrayView json);

} // namespace morvane
