#pragma once

#include "net/TransportError.h"

#include <QByteArrayView>
#include <curl/curl.h>

namespace morvane {

/// What a failed libcurl transfer means. `systemError` is the errno of the socket or 0, `text` libcurl's own
/// message.
TransportError transportError(CURLcode result, int systemError, QByteArrayView text);

} // namespace morvane
