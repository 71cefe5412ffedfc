#pragma once

#include <QString>

namespace morvane {

/// Whether a host name or address is this computer's own: `localhost`, names below it, 127.0.0.0/8, ::1.
bool isLoopbackHost(const QString &host);

/// Whether any interface but the loopback one is up and has an address. Any thread.
bool hasNetwork();

} // namespace morvane
