#pragma once

#include "net/HttpClient.h"
#include "providers/AIService.h"
#include "providers/Endpoints.h"
#include "providers/StreamParser.h"

#include <memory>

namespace morvane {

/// Talks to the providers over HTTP. Request bodies are built off the main thread; the answer is parsed as it
/// arrives, in batches, and only errors are ever held whole. Main thread; outlives its turns.
class HttpAIService final : public AIService {
public:
    /// `client` must outlive the service.
    explicit HttpAIService(HttpClient &client, Endpoints endpoints = {});

    /// Requests go to `endpoints`, those of the custom provider to `config.baseURL`. Up to three attempts
    /// when the server is busy; 300 seconds of silence end the turn with TransportError::TimedOut.
    Task<AITurnResult> runOpenAITurn(QList<APIMessage> context, AIConfiguration config,
                                     TokenCallback onToken) override;
    Task<AITurnResult> runGeminiTurn(QList<APIMessage> context, AIConfiguration config,
                                     TokenCallback onToken) override;

private:
    /// The part that both interfaces share: send, check the status, read the stream.
    Task<AITurnResult> runTurn(HttpRequest request, std::shared_ptr<StreamParser> parser, QString resets,
                               TokenCallback onToken);

    HttpClient &m_client;
    Endpoints m_endpoints;
};

} // namespace morvane
