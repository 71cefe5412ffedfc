#pragma once

#include "store/ConversationFile.h"

namespace morvane {

/// A conversation of `messageCount` messages with random identifiers, the first one with two attachments, one
/// of them with `attachmentBytes` bytes of data; the texts hold quotes, line ends, emoji and are
/// `textLength` long.
ConversationFile sampleConversation(qsizetype messageCount = 3, qsizetype textLength = 40,
                                    qsizetype attachmentBytes = 100);

} // namespace morvane
