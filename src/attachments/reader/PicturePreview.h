#pragma once

#include "attachments/AttachmentLimits.h"
#include "attachments/ReaderAnswer.h"

#include <QByteArray>

namespace morvane {

/// The picture's pixels on white, neither side longer than `side`; `unreadable` if it cannot be decoded,
/// `tooManyPixels` if it has more than `mostPixels`, or it would take too much to do so.
ReaderAnswer picturePreview(const QByteArray &bytes, int side,
                            qint64 mostPixels = attachmentLimits::imagePixels);

} // namespace morvane
