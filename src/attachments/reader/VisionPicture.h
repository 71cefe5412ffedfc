#pragma once

#include <QByteArray>
#include <QImage>
#include <optional>

namespace morvane {

/// The picture as a JPEG on white that keeps to the limits of AttachmentLimits.h; nothing if it is to go as
/// it is, because it keeps to them already or cannot be decoded.
std::optional<QByteArray> visionPicture(const QByteArray &bytes);

/// The size for a model that sees: the longer side scaled down to the limit, cut to whole pixels, at least 1.
QSize visionSize(QSize size);

/// The picture without transparency, on white.
QImage onWhite(const QImage &image);

} // namespace morvane
