#pragma once

#include <QByteArray>
#include <QList>

namespace morvane {

/// The environment of a shell command: the given one ("NAME=value" each) with the folders in front of PATH in
/// which users' own programs are installed, where it does not hold them yet.
QList<QByteArray> shellEnvironment(QList<QByteArray> environment);

} // namespace morvane
