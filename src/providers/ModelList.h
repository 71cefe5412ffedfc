#pragma once

#include "model/ProviderID.h"
#include "providers/CatalogModel.h"

#include <QByteArrayView>
#include <QStringView>

namespace morvane {

// What makes a list of models out of a provider's reply. Replies are a stranger's: whatever they hold, the
// time and the memory taken are bounded. Any thread.

/// Entries behind this many are passed over; the longest honest list has some hundred.
inline constexpr qsizetype mostListedModels = 10'000;

/// An entry whose name is longer, in UTF-16 units, or has control characters is passed over: it could neither
/// be shown nor be asked for.
inline constexpr qsizetype longestModelName = 256;

/// The finished list in the reply of `provider`; nothing if the reply is not of the provider's form or names
/// no model that could be chosen. An entry without a name is passed over.
CatalogModels modelListFromReply(ProviderID provider, QByteArrayView reply);

/// The list in the order in which it is offered: free models first, then those of which that is not known,
/// then the others; within these by name, without regard to case, in the order of the user's language.
/// Nothing for an empty list.
CatalogModels finished(const QList<CatalogModel> &list);

/// Whether a model of an OpenAI-style list does something else than chat, by its name.
bool isNonChatOpenAIStyle(QStringView id);

} // namespace morvane
