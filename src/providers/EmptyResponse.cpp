#include "providers/EmptyResponse.h"

#include "providers/AIServiceError.h"

namespace morvane {

void throwIfEmpty(const AITurnResult &result)
{
    if (result.text.isEmpty() && result.toolCalls.isEmpty())
        throw AIServiceError(AIServiceError::Api{
            QStringLiteral("The AI provider returned an empty response. Please try again.")});
}

} // namespace morvane
