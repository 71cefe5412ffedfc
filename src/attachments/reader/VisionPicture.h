#pragma once

#include "attachments/ReaderAnswer.h"

#include <QByteArray>
#include <QImage>

namespace morvane {

/// The picture as a JPEG on white that keeps to the limits of AttachmentLimits.h; `unchanged` if it keeps to
/// them already, `unreadable` if it cannot be decoded, `tooManyPixels` if it would take too much to do so.
ReaderAnswer visionPicture(const QByteArray &bytes);

/// The size for a model that sees: the longer side scaled down to the limit, cut to whole pixels, at least 1.
QSize visionSize(QSize size);

/// The picture without transparency, on white.
QImage onWhite(const QImage &image);

} // namespace morvane
