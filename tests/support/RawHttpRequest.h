#pragma once

#include "net/HttpHeaders.h"

#include <QByteArray>

namespace morvane {

/// A request as a test server received it.
struct RawHttpRequest {
    QByteArray method;
    QByteArray target; ///< As on the request line, with the query.
    HttpHeaders headers;
    QByteArray body;
    int connection = 0; ///< Counted from 0 in the order of their acceptance.
};

} // namespace morvane
