#pragma once

#include <QDeadlineTimer>
#include <QString>

namespace morvane {

/// Whether who listens at the address of a bus, such as "unix:path=/run/user/1000/bus,guid=…", takes
/// connections at present. The library for it waits for that without end, and meanwhile for nothing else, not
/// even on other buses. Of addresses that are no sockets of this computer it is assumed. Any thread; blocks
/// until the deadline.
bool isAnswering(const QString &address, QDeadlineTimer deadline);

} // namespace morvane
