#pragma once

#include "async/Task.h"
#include "net/HttpClient.h"

namespace morvane {

/// Sends a request up to three times, as long as the server answers 429 or 5xx, with the waits of retryDelay
/// in between, and gives the response that is to be read: the third one with whatever status it has. Throws
/// TransportError, which is never retried, or Cancelled, at once even while it waits. `client` outlives the
/// task.
Task<HttpResponse> streamRequest(HttpClient *client, HttpRequest request);

} // namespace morvane
