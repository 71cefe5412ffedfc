#include "support/SamplePictures.h"

#include "support/Sanitizer.h"

#include <QBuffer>
#include <QtEndian>
#include <libheif/heif.h>
#include <random>

namespace morvane {

QImage samplePhoto(QSize size)
{
    std::minstd_rand random(1);
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        const int green = 255 * y / size.height();
        for (int x = 0; x < size.width(); ++x) {
            const int noise = static_cast<int>(random() & 15);
            line[x] = qRgb(240 * x / size.width() + noise, green, 120 + noise);
        }
    }
    return image;
}

QByteArray encoded(const QImage &image, const char *format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, quality);
    return bytes;
}

namespace {

/// What a camera writes into a picture, with one entry.
QByteArray exifWithOrientation(char orientation)
{
    QByteArray directory("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 24);
    return directory.append(orientation).append(QByteArray(7, '\0'));
}

} // namespace

QByteArray withExifOrientation(const QByteArray &jpeg, char orientation)
{
    const QByteArray exif = exifWithOrientation(orientation);
    const auto length = static_cast<char>(exif.size() + 2);
    return jpeg.first(2) + QByteArray("\xFF\xE1\0", 3) + length + exif + jpeg.sliced(2);
}

QByteArray webpWithExifOrientation(const QByteArray &webp, QSize size, char orientation)
{
    const auto number = [](quint32 value, qsizetype bytes) {
        char little[4];
        qToLittleEndian(value, little);
        return QByteArray(little, bytes);
    };
    constexpr quint32 hasExif = 0x08;
    const QByteArray exif = exifWithOrientation(orientation);
    const QByteArray head = "VP8X" + number(10, 4) + number(hasExif, 4) +
                            number(static_cast<quint32>(size.width() - 1), 3) +
                            number(static_cast<quint32>(size.height() - 1), 3);
    const QByteArray content =
        "WEBP" + head + webp.sliced(12) + "EXIF" + number(static_cast<quint32>(exif.size()), 4) + exif;
    return "RIFF" + number(static_cast<quint32>(content.size()), 4) + content;
}

QByteArray topDownBitmap(const QImage &image)
{
    constexpr qsizetype heightAt = 22;
    QByteArray bitmap = encoded(image.mirrored(), "bmp");
    qToLittleEndian(-image.height(), bitmap.data() + heightAt);
    return bitmap;
}

QByteArray encodedHeic(const QImage &image)
{
    const LeaksForgiven forgiven; // x265 keeps some of what it allocates for each picture
    QByteArray bytes;
    heif_context *context = heif_context_alloc();
    heif_encoder *encoder = nullptr;
    heif_image *picture = nullptr;
    heif_image_handle *handle = nullptr;
    heif_image_create(image.width(), image.height(), heif_colorspace_RGB, heif_chroma_interleaved_RGB,
                      &picture);
    heif_image_add_plane(picture, heif_channel_interleaved, image.width(), image.height(), 24);
    int stride = 0;
    std::uint8_t *pixels = heif_image_get_plane(picture, heif_channel_interleaved, &stride);
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    for (int y = 0; y < rgb.height(); ++y)
        std::copy_n(rgb.constScanLine(y), rgb.width() * 3, pixels + y * stride);
    const bool written =
        heif_context_get_encoder_for_format(context, heif_compression_HEVC, &encoder).code == 0 &&
        heif_context_encode_image(context, picture, encoder, nullptr, &handle).code == 0;
    if (written) {
        heif_writer writer{1, [](heif_context *, const void *data, size_t size, void *target) {
                               static_cast<QByteArray *>(target)->append(static_cast<const char *>(data),
                                                                         static_cast<qsizetype>(size));
                               return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                           }};
        heif_context_write(context, &writer, &bytes);
    }
    heif_image_handle_release(handle);
    heif_encoder_release(encoder);
    heif_image_release(picture);
    heif_context_free(context);
    return bytes;
}

} // namespace morvane
