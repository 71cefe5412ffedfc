#pragma once

#include "attachments/ReaderAnswer.h"

namespace morvane {

/// Does one job of the reader program, "picture", "document" or "recognition". Unreadable for another name.
ReaderAnswer readAttachment(QByteArrayView job, const QByteArray &file);

} // namespace morvane
