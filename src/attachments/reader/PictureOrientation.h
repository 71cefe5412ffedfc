#pragma once

#include <QByteArray>
#include <QImage>
#include <QImageIOHandler>

namespace morvane {

/// How a picture in the WebP format is to be turned by what its camera wrote into it (Exif); not at all if
/// that is missing or damaged. Qt's decoder of the format does not tell.
QImageIOHandler::Transformations webpOrientation(const QByteArray &bytes);

QImage turned(const QImage &image, QImageIOHandler::Transformations transformation);

} // namespace morvane
