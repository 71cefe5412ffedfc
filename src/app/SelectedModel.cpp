#include "app/SelectedModel.h"

#include "base/Text.h"
#include "providers/AIService.h"
#include "store/SettingsStore.h"

namespace morvane {

bool hasAPIKey(const SettingsStore &settings)
{
    const ProviderID provider = settings.providerID();
    return provider == ProviderID::ollama || provider == ProviderID::custom ||
           !trimmed(settings.apiKey()).isEmpty();
}

bool modelSeesImages(const SettingsStore &settings)
{
    const ProviderID provider = settings.providerID();
    return provider == ProviderID::gemini || provider == ProviderID::openai ||
           AIService::visionModelHeuristic(trimmed(settings.model()));
}

} // namespace morvane
