#pragma once

#include <QString>
#include <QUrl>
#include <optional>

namespace morvane {

/// The address for chat requests below the base URL that the user gave for a custom server: white space and
/// slashes at its end are removed and "/chat/completions" is added unless it is there already. Nothing if the
/// text does not begin with "http://" or "https://" or is no URL.
std::optional<QUrl> chatCompletionsURL(const QString &baseURL);

} // namespace morvane
