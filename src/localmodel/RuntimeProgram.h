#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace morvane {

/// Where the runtime's program may lie, in the order in which it is looked for. `dataFolder` is Morvane's
/// own, which holds the copy that Morvane installs.
QStringList binaryCandidates(const QString &dataFolder);

/// The first of the candidates that can be run, or the first of all if none can.
QString binaryPath(const QStringList &candidates);

/// Whether a file is there that can be run.
bool isExecutableFile(const QString &path);

/// The environment in which the program asks the server at `serverBase`, wherever the user's own environment
/// would send it.
QList<QByteArray> runtimeEnvironment(const QString &serverBase);

/// The same for the server itself, with room for the agent's first request: the program's own default cuts
/// the front off it without a word.
QList<QByteArray> serverEnvironment(const QString &serverBase);

} // namespace morvane
