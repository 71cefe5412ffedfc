#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

/// How a short system tool ended.
struct ShellToolResult {
    int status = -1; ///< The exit status or the number of a signal; -1 if it could not be started.
    QString output;  ///< What it printed, errors included; empty if that is no UTF-8.
};

/// Runs a program to its end. No limit of time or size, so only for short tools of the system. Blocks; any
/// thread but the main one.
ShellToolResult runShellTool(const QString &path, const QStringList &arguments);

} // namespace morvane
