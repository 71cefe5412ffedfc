#pragma once

#include "model/AITool.h"

#include <QString>

namespace morvane {

/// How the phrase of a call is to be shown.
enum class PhraseStyle { prose, command };

/// What is to be said of one tool call.
struct ToolDescription {
    /// What it does, in plain words that go on after "Morvane wants to …", with a warning if it is
    /// destructive. May be as long as the argument it quotes.
    QString phrase;
    bool destructive = false;
};

/// Looks at a call: for approvals, status, log and speech. Arguments of the wrong type read as their
/// defaults. The work grows with the length of the arguments only. Any thread.
ToolDescription describe(const AIToolCall &call);

/// How the phrases of the tool `name` are to be shown. Any thread.
PhraseStyle phraseStyle(const QString &name);

/// What calls of the tool `name` do as such, in words that go on in the same way. Any thread.
QString describeTool(const QString &name);

} // namespace morvane
