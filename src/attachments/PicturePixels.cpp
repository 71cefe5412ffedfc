#include "attachments/PicturePixels.h"

#include "attachments/AttachmentLimits.h"

#include <QtEndian>
#include <cstring>

namespace morvane {
namespace {

constexpr qsizetype headerBytes = 8;
constexpr qsizetype pixelSize = 4;

} // namespace

QByteArray pixelBytes(const QImage &image)
{
    const QImage pixels = image.convertToFormat(QImage::Format_RGB32);
    const qsizetype lineBytes = pixels.width() * pixelSize;
    QByteArray bytes(headerBytes + lineBytes * pixels.height(), Qt::Uninitialized);
    qToLittleEndian(static_cast<quint32>(pixels.width()), bytes.data());
    qToLittleEndian(static_cast<quint32>(pixels.height()), bytes.data() + headerBytes / 2);
    for (int y = 0; y < pixels.height(); ++y)
        std::memcpy(bytes.data() + headerBytes + y * lineBytes, pixels.constScanLine(y),
                    static_cast<std::size_t>(lineBytes));
    return bytes;
}

QImage pixelImage(const QByteArray &bytes)
{
    if (bytes.size() < headerBytes)
        return {};
    const auto width = qFromLittleEndian<quint32>(bytes.data());
    const auto height = qFromLittleEndian<quint32>(bytes.data() + headerBytes / 2);
    const auto fits = [](quint32 side) { return side >= 1 && side <= attachmentLimits::previewSide; };
    if (!fits(width) || !fits(height))
        return {};
    const qsizetype lineBytes = width * pixelSize;
    if (bytes.size() != headerBytes + lineBytes * static_cast<qsizetype>(height))
        return {};
    QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        std::memcpy(image.scanLine(y), bytes.constData() + headerBytes + y * lineBytes,
                    static_cast<std::size_t>(lineBytes));
    return image;
}

} // namespace morvane
