#include "attachments/reader/PictureDecoder.h"

#include "attachments/AttachmentLimits.h"
#include "attachments/reader/HeifPicture.h"
#include "attachments/reader/PictureOrientation.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <algorithm>
#include <array>
#include <limits>

namespace morvane {
namespace {

/// No more formats than people attach and sites have as icons: each further decoder is one more to attack.
struct Format {
    const char *name; ///< As Qt calls it.
    QByteArrayView beginning;
};

constexpr std::array formats{Format{"png", QByteArrayView("\x89PNG\r\n\x1A\n", 8)},
                             Format{"jpeg", QByteArrayView("\xFF\xD8\xFF", 3)},
                             Format{"gif", QByteArrayView("GIF8", 4)},
                             Format{"bmp", QByteArrayView("BM", 2)},
                             Format{"ico", QByteArrayView("\0\0\1\0", 4)},
                             Format{"tiff", QByteArrayView("II*\0", 4)},
                             Format{"tiff", QByteArrayView("MM\0*", 4)},
                             Format{"tiff", QByteArrayView("II+\0", 4)}, // of files above 4 GB
                             Format{"tiff", QByteArrayView("MM\0+", 4)}};

bool isWebp(const QByteArray &bytes)
{
    return bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP";
}

/// Told by the content; empty for another.
QByteArray formatOf(const QByteArray &bytes)
{
    if (isWebp(bytes))
        return "webp";
    const auto format = std::find_if(formats.begin(), formats.end(),
                                     [&](const Format &known) { return bytes.startsWith(known.beginning); });
    return format == formats.end() ? QByteArray() : QByteArray(format->name);
}

bool isTransposed(QImageIOHandler::Transformations transformation)
{
    return transformation.testFlag(QImageIOHandler::TransformationRotate90);
}

bool isDecodable(QSize size)
{
    return !size.isEmpty() && qint64(size.width()) * size.height() <= attachmentLimits::imagePixels;
}

/// Qt's decoder on the bytes.
class Reader {
public:
    explicit Reader(const QByteArray &bytes) : m_format(formatOf(bytes))
    {
        // Eight bytes for each pixel of the deepest formats.
        QImageReader::setAllocationLimit(static_cast<int>(attachmentLimits::imagePixels * 8 / 1'000'000));
        m_buffer.setData(bytes);
        m_buffer.open(QIODevice::ReadOnly);
        m_reader.setDevice(&m_buffer);
        m_reader.setAutoDetectImageFormat(false);
        m_reader.setFormat(m_format);
        m_reader.setAutoTransform(true);
        if (m_format == "webp")
            m_ownTransformation = webpOrientation(bytes);
    }

    /// As it is to be seen.
    QSize size() const
    {
        if (m_format.isEmpty())
            return {};
        QSize size = m_reader.size();
        // A bitmap whose lines come from the top has a height below zero.
        if (m_format == "bmp" && size.height() > std::numeric_limits<int>::min())
            size.setHeight(std::abs(size.height()));
        return isTransposed(m_reader.transformation() | m_ownTransformation) ? size.transposed() : size;
    }
    QImage read(QSize wanted)
    {
        // Only this decoder skips what a smaller picture does not need; the others would decode everything
        // and then scale it in a way of their own.
        if (m_format == "jpeg")
            m_reader.setScaledSize(isTransposed(m_reader.transformation()) ? wanted.transposed() : wanted);
        const QImage image = m_reader.read();
        return m_ownTransformation == QImageIOHandler::TransformationNone
                   ? image
                   : turned(image, m_ownTransformation);
    }

private:
    QByteArray m_format;
    QBuffer m_buffer;
    QImageReader m_reader;
    QImageIOHandler::Transformations m_ownTransformation = QImageIOHandler::TransformationNone;
};

} // namespace

PictureDecoder::PictureDecoder(const QByteArray &bytes) : m_bytes(bytes), m_isHeif(HeifPicture::isHeif(bytes))
{
}

void PictureDecoder::prepare()
{
    QBuffer nothing;
    nothing.open(QIODevice::ReadWrite);
    for (const char *format : {"jpeg", "gif", "ico", "webp", "tiff"})
        static_cast<void>(QImageReader(&nothing, format).canRead()); // which loads the format's plugin
}

QSize PictureDecoder::size()
{
    m_size = m_isHeif ? HeifPicture(m_bytes).size() : Reader(m_bytes).size();
    m_isTooLarge = !m_size.isEmpty() && !isDecodable(m_size);
    if (!isDecodable(m_size))
        m_size = {};
    return m_size;
}

QImage PictureDecoder::decode(QSize wanted)
{
    if (size().isEmpty())
        return {};
    QImage image = m_isHeif ? HeifPicture(m_bytes).decode() : Reader(m_bytes).read(wanted);
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb))
        image.convertToColorSpace(QColorSpace::SRgb);
    image.setColorSpace({});
    return image;
}

} // namespace morvane
