#pragma once

#include <QString>

namespace morvane {

/// Characters of an outside text in one line of the activity log; what is longer ends in "…".
inline constexpr qsizetype logTextLimit = 140;
/// The same for what the model says between its tool calls.
inline constexpr qsizetype narrationLimit = 220;

/// A tool's name as it is spoken: blanks for underscores.
inline QString spokenToolName(QString name)
{
    return name.replace(QLatin1Char('_'), QLatin1Char(' '));
}

} // namespace morvane
