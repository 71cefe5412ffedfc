#include "providers/EmptyResponse.h"

#include "providers/AIServiceError.h"

using namespace Qt::StringLiterals;

namespace morvane {

void throwIfEmpty(const AITurnResult &result)
{
    if (result.text.isEmpty() && result.toolCalls.isEmpty())
        throw AIServiceError(
            AIServiceError::Api{u"The AI provider returned an empty response. Please try again."_s});
}

} // namespace morvane
