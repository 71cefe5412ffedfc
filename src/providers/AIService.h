#pragma once

#include "async/Task.h"
#include "model/AIConfiguration.h"
#include "model/APIMessage.h"

#include <QList>
#include <QString>
#include <functional>

namespace morvane {

/// Talks to language models. Holds no state between calls, so several turns may run at once. Main thread.
///
/// Both functions perform one model turn and throw AIServiceError, TransportError or Cancelled, nothing
/// else. `onToken` gets each piece of visible text on the main thread, in order, before the turn ends.
class AIService {
public:
    using TokenCallback = std::function<void(const QString &)>;

    virtual ~AIService() = default;

    /// One turn with any provider that speaks chat completions (every one but `gemini`).
    virtual Task<AITurnResult> runOpenAITurn(QList<APIMessage> context, AIConfiguration config,
                                             TokenCallback onToken) = 0;

    /// One turn with the `gemini` provider.
    virtual Task<AITurnResult> runGeminiTurn(QList<APIMessage> context, AIConfiguration config,
                                             TokenCallback onToken) = 0;

    /// Whether a model of this name is taken to accept images. Deliberately loose.
    static bool visionModelHeuristic(const QString &model);
};

} // namespace morvane
