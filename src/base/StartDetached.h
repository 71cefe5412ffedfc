#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <expected>

namespace morvane {

/// Starts a program that outlives this one: in a session of its own, as nobody's child, reading and writing
/// nothing, with no descriptor of ours but `control`, which becomes its descriptor 3 if it is one. No shell
/// has a part in it. Fails with a reason for the log if it cannot be tried; that the program itself does not
/// run shows elsewhere. Blocks for milliseconds; any thread but the main one.
std::expected<void, QString> startDetached(const QString &path, const QStringList &arguments,
                                           const QList<QByteArray> &environment, int control = -1);

} // namespace morvane
