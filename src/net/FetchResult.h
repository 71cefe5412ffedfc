#pragma once

#include "net/ResponseHead.h"

#include <QByteArray>

namespace morvane {

/// A response with its whole body.
struct FetchResult {
    int status = 0;
    HttpHeaders headers;
    /// Where the response came from, after redirects.
    QUrl url;
    QByteArray body;

    /// 200 to 299.
    bool isSuccess() const { return status >= 200 && status <= 299; }
};

} // namespace morvane
