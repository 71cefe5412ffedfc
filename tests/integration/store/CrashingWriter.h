#pragma once

#include <QString>

namespace morvane {

/// What the second process of the crash tests does: writes through a store without end, printing a line for
/// every write, until it is killed or kills itself. Comes back only for an unknown role.
int runCrashingWriter(const QString &role, const QString &path);

} // namespace morvane
