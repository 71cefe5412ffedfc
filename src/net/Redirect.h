#pragma once

#include "net/HttpRequest.h"

#include <optional>

namespace morvane {

/// The request that follows when `request` was answered with this status and these headers; nothing when the
/// answer is no redirect, or one that the request's rule does not let us follow. See HttpRequest.
std::optional<HttpRequest> redirected(const HttpRequest &request, int status, const HttpHeaders &headers);

} // namespace morvane
