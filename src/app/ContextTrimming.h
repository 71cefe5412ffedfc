#pragma once

#include "model/APIMessage.h"
#include "model/ChatMessage.h"
#include "model/ProviderID.h"

#include <QList>
#include <QString>

namespace morvane {

// What the model gets of a conversation. Sizes are in characters as a user perceives them, as a rough measure
// of tokens. Pure functions, linear in the text; unchanged entries are shared, not copied. Any thread.

/// The working context that saved messages stand for: trimmed texts and attachments of both sides, without
/// what would be empty. Tool calls are not saved and so do not come back.
QList<APIMessage> apiContext(const QList<ChatMessage> &messages);

/// Shortens every tool result to 1,200 characters and a mark, and, if the whole is beyond the provider's
/// budget, keeps only the newest entries behind a note on what was cut. A kept range never begins with a call
/// or a result, nor ends with a call, since providers refuse one without the other. If the newest entry alone
/// is too large, only that entry is shortened.
QList<APIMessage> trimmedAPIContext(QList<APIMessage> context, ProviderID provider);

/// The note that replaces the cut entries; quotes the first user text.
QString trimmedNote(const QList<APIMessage> &context);

} // namespace morvane
