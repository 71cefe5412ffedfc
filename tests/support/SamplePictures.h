#pragma once

#include <QByteArray>
#include <QImage>

namespace morvane {

/// Smooth colours with noise, as photographs have it; the same for the same size.
QImage samplePhoto(QSize size);

/// The picture in a format of Qt's; `quality` is that of QImage::save.
QByteArray encoded(const QImage &image, const char *format, int quality = -1);

/// The JPEG with a camera's mark of how it was held: 1 to 8, as Exif numbers it.
QByteArray withExifOrientation(const QByteArray &jpeg, char orientation);

/// The same for a WebP of Qt's.
QByteArray webpWithExifOrientation(const QByteArray &webp, QSize size, char orientation);

/// The bitmap of Qt's with its lines from the top, as screen captures often have it; shows the same.
QByteArray topDownBitmap(const QImage &image);

/// As a telephone writes it. Empty if the library has no such encoder.
QByteArray encodedHeic(const QImage &image);

} // namespace morvane
