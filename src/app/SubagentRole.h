#pragma once

#include <QString>

namespace morvane {

/// What a subagent is for; decides its system prompt only, every role has the same tools.
enum class SubagentRole { researcher, implementer, verifier, general };

/// The role with this name in any case; `general` for every other text.
SubagentRole subagentRole(const QString &name);

/// The name that the user sees; deliberately "Assistant" for `general`.
QString displayName(SubagentRole role);

/// The whole system prompt of a subagent of this role.
QString systemPrompt(SubagentRole role);

} // namespace morvane
