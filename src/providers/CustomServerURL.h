#pragma once

#include <QString>
#include <QUrl>
#include <optional>

namespace morvane {

// The addresses below the base URL that the user gave for a custom server. White space and slashes at its end
// are removed. Nothing if the text does not begin with "http://" or "https://" or is no URL.

/// The address for chat requests: "/chat/completions" is added unless it is there already.
std::optional<QUrl> chatCompletionsURL(const QString &baseURL);

/// The address of the list of models: "/chat/completions" gives way to "/models", which is added unless it is
/// there already.
std::optional<QUrl> modelsListURL(const QString &baseURL);

} // namespace morvane
