#pragma once

#include "async/Task.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <optional>

namespace morvane {

/// A program to be run to its end.
struct ProgramOrder {
    QString path;
    QStringList arguments;
    QList<QByteArray> environment; ///< "NAME=value" each.
    /// Gets what it prints, errors included, as it comes. Main thread.
    std::function<void(QByteArrayView)> onOutput;
    std::optional<std::chrono::seconds> limit;
};

/// Runs a program until it has ended and closed its output; gives its exit status, or the signal that ended
/// it. Throws InstallError with the system's reason if it cannot be started, and in words after the limit. A
/// program that is cancelled or takes too long is asked to end, and killed two seconds later. Main thread;
/// blocks nowhere.
Task<int> runProgram(ProgramOrder order);

} // namespace morvane
