#pragma once

#include "net/HttpHeaders.h"

#include <QUrl>

namespace morvane {

/// Status and headers of a final response (not of a 1xx, not of a redirect that is followed).
struct ResponseHead {
    int status = 0;
    HttpHeaders headers;
    /// Where the response came from.
    QUrl url;
};

} // namespace morvane
