#pragma once

#include "model/AIConfiguration.h"
#include "net/HttpRequest.h"
#include "providers/Endpoints.h"

namespace morvane {

/// The request for one turn with a chat completions provider, still without its body. Throws
/// AIServiceError::Api if there is no usable address.
HttpRequest openAIRequest(const AIConfiguration &config, const Endpoints &endpoints);

/// The request for one turn with Gemini, still without its body. Throws AIServiceError::Api if model and host
/// make no URL.
HttpRequest geminiRequest(const AIConfiguration &config, const Endpoints &endpoints);

} // namespace morvane
