#pragma once

#include <QString>
#include <utility>

namespace morvane {

/// What a tool call came to. Tools never throw: a failure is a text for the model as well, and by the
/// convention that models know it begins with "Error:". That is read here, once; whoever comes later asks
/// `failed`.
struct ToolResult {
    // Implicit: a tool's answer is its text.
    ToolResult(QString answer) : text(std::move(answer)), failed(text.startsWith(QLatin1String("Error:"))) {}

    QString text; ///< What the model is told, whole.
    bool failed;

    bool operator==(const ToolResult &) const = default;
};

} // namespace morvane
