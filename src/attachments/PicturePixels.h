#pragma once

#include <QByteArray>
#include <QImage>

namespace morvane {

/// A picture as bare pixels, which no decoder has to look at again: width and height, then its lines.
QByteArray pixelBytes(const QImage &image);

/// The picture of such bytes; null if they are anything else than one whole picture of at most
/// attachmentLimits::previewSide a side.
QImage pixelImage(const QByteArray &bytes);

} // namespace morvane
