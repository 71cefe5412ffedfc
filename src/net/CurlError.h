#pragma once

#include "net/TransportError.h"

#include <QByteArrayView>
#include <curl/curl.h>

namespace morvane {

/// What a failed libcurl transfer means, in our words. `systemError` is the errno of the socket or 0, `text`
/// libcurl's own message, `verification` what it found of the server's certificate.
TransportError transportError(CURLcode result, int systemError, QByteArrayView text, long verification = 0);

} // namespace morvane
