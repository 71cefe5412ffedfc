#include "attachments/reader/VisionPicture.h"

#include "attachments/AttachmentLimits.h"
#include "attachments/reader/PictureDecoder.h"

#include <QBuffer>
#include <QImageWriter>
#include <algorithm>

namespace morvane {
namespace {

using Kind = ReaderAnswer::Kind;

constexpr int jpegQuality = 85; // percent

} // namespace

ReaderAnswer visionPicture(const QByteArray &bytes)
{
    PictureDecoder decoder(bytes);
    const QSize size = decoder.size();
    const int longerSide = std::max(size.width(), size.height());
    if (decoder.isTooLarge())
        return {Kind::tooManyPixels, {}};
    if (size.isEmpty())
        return {Kind::unreadable, {}};
    if (longerSide <= attachmentLimits::visionSide && bytes.size() <= attachmentLimits::visionBytes)
        return {Kind::unchanged, {}};
    const QSize wanted = visionSize(size);
    QImage image = decoder.decode(wanted);
    if (image.isNull())
        return {Kind::unreadable, {}};
    if (image.size() != wanted)
        image = image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QBuffer buffer;
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(jpegQuality);
    if (!writer.write(onWhite(image)))
        return {Kind::unreadable, {}};
    return {Kind::jpeg, buffer.data()};
}

QSize visionSize(QSize size)
{
    // In whole numbers: a scale of 0.392 as a double makes 1,175 of 3,000.
    const qint64 longerSide = std::max(size.width(), size.height());
    if (longerSide <= attachmentLimits::visionSide)
        return size;
    const auto scaled = [longerSide](qint64 side) {
        return static_cast<int>(std::max<qint64>(side * attachmentLimits::visionSide / longerSide, 1));
    };
    return {scaled(size.width()), scaled(size.height())};
}

QImage onWhite(const QImage &image)
{
    if (!image.hasAlphaChannel())
        return image.convertToFormat(QImage::Format_RGB32);
    QImage flat = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < flat.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(flat.scanLine(y));
        std::transform(line, line + flat.width(), line, [](QRgb pixel) {
            const int white = 255 - qAlpha(pixel);
            return qRgb(qRed(pixel) + white, qGreen(pixel) + white, qBlue(pixel) + white);
        });
    }
    flat.reinterpretAsFormat(QImage::Format_RGB32);
    return flat;
}

} // namespace morvane
