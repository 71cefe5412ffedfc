#pragma once

#include <QList>
#include <sys/types.h>

namespace morvane {

/// The processes of the engine that show pages, all of them started by this one.
QList<pid_t> pageProcesses();

} // namespace morvane
