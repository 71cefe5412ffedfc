#pragma once

#include "model/AITool.h"

#include <QString>

namespace morvane {

/// What a tool call does, in plain words that go on after "Morvane wants to …": for approvals, status, log
/// and speech. Arguments of the wrong type read as their defaults; a destructive call carries a warning. The
/// text may be as long as the argument it quotes. Any thread.
QString describe(const AIToolCall &call);

/// What calls of the tool `name` do as such, in words that go on in the same way. Any thread.
QString describeTool(const QString &name);

} // namespace morvane
