#pragma once

#include <QString>
#include <QUrl>
#include <optional>

namespace morvane {

/// The address of the list of models below the base URL that the user gave for a custom server: white space
/// and slashes at its end are removed, "/chat/completions" gives way to "/models", which is added unless it
/// is there already. Nothing if the text does not begin with "http://" or "https://" or is no URL.
std::optional<QUrl> modelsListURL(const QString &baseURL);

} // namespace morvane
