#pragma once

#include <QString>

namespace morvane {

/// The search service behind the web tools. One constant each; tests pass their own.
struct WebEndpoints {
    // Origins, without a slash at the end.
    /// Serves the results page as HTML that works without scripts.
    QString htmlSearch = QStringLiteral("https://html.duckduckgo.com");
    /// Answers some questions by itself, as JSON.
    QString instantAnswer = QStringLiteral("https://api.duckduckgo.com");
};

} // namespace morvane
