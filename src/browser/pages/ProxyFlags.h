#pragma once

#include <QByteArray>
#include <QProcessEnvironment>

namespace morvane {

/// Sends the engine through the proxies that the environment names, as the rest of the program goes by
/// itself: `http_proxy`, `https_proxy`, `all_proxy` and `no_proxy`. Begins with a blank, or is empty. A name
/// and a password in them are left out; the user is asked for these.
QByteArray proxyFlags(const QProcessEnvironment &environment);

} // namespace morvane
