#pragma once

#include "model/AITool.h"
#include "model/ProviderID.h"

#include <QList>
#include <QString>
#include <optional>

namespace morvane {

/// Everything that one request to a model needs besides the context.
struct AIConfiguration {
    ProviderID provider = ProviderID::ollama;
    QString apiKey;
    QString model;
    QString systemPrompt;
    double temperature = 0.7;
    std::optional<int> maxTokens; ///< Absent means the provider's default.
    QList<AITool> tools;
    QString baseURL; ///< Used by the custom provider only.
};

} // namespace morvane
