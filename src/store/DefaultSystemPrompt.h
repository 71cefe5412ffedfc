#pragma once

#include <QString>

namespace morvane {

/// Version of the text below; a higher one than the stored replaces the user's prompt at the next start.
inline constexpr int defaultSystemPromptVersion = 7;

/// What the model is told before every conversation, until the user edits it in the settings.
QString defaultSystemPrompt();

} // namespace morvane
