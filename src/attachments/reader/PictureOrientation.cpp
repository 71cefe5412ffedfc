#include "attachments/reader/PictureOrientation.h"

#include <QByteArrayView>
#include <QTransform>
#include <QtEndian>
#include <optional>

namespace morvane {
namespace {

using Transformation = QImageIOHandler::Transformation;

/// The content of the first chunk of this name in a RIFF file, as far as it is there.
QByteArrayView chunk(QByteArrayView file, QByteArrayView name)
{
    constexpr qsizetype head = 8; // name and length
    qsizetype at = 12;            // behind "RIFF", its length and "WEBP"
    while (file.size() - at >= head) {
        const auto length = static_cast<qsizetype>(qFromLittleEndian<quint32>(file.data() + at + 4));
        const QByteArrayView rest = file.sliced(at + head);
        if (file.sliced(at, 4) == name)
            return rest.first(std::min(length, rest.size()));
        if (length >= rest.size())
            break;
        at += head + length + length % 2;
    }
    return {};
}

/// The numbers of a TIFF structure, which names the order of their bytes.
class TiffNumbers {
public:
    explicit TiffNumbers(QByteArrayView bytes) : m_bytes(bytes), m_isBigEndian(bytes.startsWith("MM")) {}

    template <typename Number> std::optional<Number> at(qsizetype position) const
    {
        if (position < 0 || m_bytes.size() - position < qsizetype(sizeof(Number)))
            return std::nullopt;
        const char *number = m_bytes.data() + position;
        return m_isBigEndian ? qFromBigEndian<Number>(number) : qFromLittleEndian<Number>(number);
    }

private:
    QByteArrayView m_bytes;
    bool m_isBigEndian;
};

/// 1 to 8, as Exif numbers them; 1 if it is not told.
int exifOrientation(QByteArrayView exif)
{
    constexpr quint16 orientation = 0x0112;
    constexpr qsizetype entryBytes = 12;
    constexpr QByteArrayView mark("Exif\0\0", 6);
    const TiffNumbers numbers(exif.startsWith(mark) ? exif.sliced(mark.size()) : exif);
    const qsizetype directory = numbers.at<quint32>(4).value_or(0);
    const int entries = numbers.at<quint16>(directory).value_or(0);
    for (int entry = 0; entry < entries; ++entry) {
        const qsizetype at = directory + 2 + entry * entryBytes;
        const auto tag = numbers.at<quint16>(at);
        if (!tag)
            break;
        if (*tag == orientation)
            return numbers.at<quint16>(at + 8).value_or(1);
    }
    return 1;
}

} // namespace

QImageIOHandler::Transformations webpOrientation(const QByteArray &bytes)
{
    switch (exifOrientation(chunk(bytes, "EXIF"))) {
    case 2:
        return Transformation::TransformationMirror;
    case 3:
        return Transformation::TransformationRotate180;
    case 4:
        return Transformation::TransformationFlip;
    case 5:
        return Transformation::TransformationFlipAndRotate90;
    case 6:
        return Transformation::TransformationRotate90;
    case 7:
        return Transformation::TransformationMirrorAndRotate90;
    case 8:
        return Transformation::TransformationRotate270;
    default:
        return Transformation::TransformationNone;
    }
}

QImage turned(const QImage &image, QImageIOHandler::Transformations transformation)
{
    const QImage mirrored = image.mirrored(transformation.testFlag(Transformation::TransformationMirror),
                                           transformation.testFlag(Transformation::TransformationFlip));
    return transformation.testFlag(Transformation::TransformationRotate90)
               ? mirrored.transformed(QTransform().rotate(90))
               : mirrored;
}

} // namespace morvane
