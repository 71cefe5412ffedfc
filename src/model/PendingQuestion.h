#pragma once

#include <QString>
#include <QStringList>
#include <QUuid>

namespace morvane {

/// A question of the model to the user, shown as a sheet until it is answered.
struct PendingQuestion {
    QUuid id;
    QString question;
    QStringList options;

    bool operator==(const PendingQuestion &) const = default;
};

} // namespace morvane
