#pragma once

#include <QString>
#include <QStringList>
#include <chrono>
#include <optional>

namespace morvane {

/// How a short system tool ended.
struct ShellToolResult {
    int status = -1; ///< The exit status or the number of a signal; -1 if it could not be run to its end.
    QString output;  ///< What it printed, errors included; empty if that is no UTF-8.
};

/// Runs a program to its end. No limit of size, so only for short tools of the system; one that runs longer
/// than `limit`, where there is one, is killed. Blocks; any thread but the main one.
ShellToolResult runShellTool(const QString &path, const QStringList &arguments,
                             std::optional<std::chrono::milliseconds> limit = std::nullopt);

} // namespace morvane
