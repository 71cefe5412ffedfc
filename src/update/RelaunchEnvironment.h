#pragma once

#include <QByteArray>
#include <QList>

namespace morvane {

/// The environment for the program that takes the place of this one: `environment` without what would lead it
/// to libraries and plugins of the old one, or use its start a second time. "NAME=value" each.
QList<QByteArray> relaunchEnvironment(QList<QByteArray> environment);

} // namespace morvane
