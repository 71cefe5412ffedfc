#include "attachments/reader/PictureDecoder.h"

#include "attachments/AttachmentLimits.h"
#include "attachments/reader/HeifPicture.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <array>

namespace morvane {
namespace {

/// No more formats than people attach: each further decoder is one more to attack.
constexpr std::array formats{"png", "jpeg", "gif", "webp", "bmp", "tiff"};

bool isKnown(const QByteArray &format)
{
    return std::any_of(formats.begin(), formats.end(), [&](const char *known) { return format == known; });
}

bool isTransposed(QImageIOHandler::Transformations transformation)
{
    return transformation.testFlag(QImageIOHandler::TransformationRotate90);
}

bool isDecodable(QSize size)
{
    return !size.isEmpty() && qint64(size.width()) * size.height() <= attachmentLimits::imagePixels;
}

/// A reader on the bytes whose format is a known one, or none.
class Reader {
public:
    explicit Reader(const QByteArray &bytes)
    {
        // Eight bytes for each pixel of the deepest formats.
        QImageReader::setAllocationLimit(static_cast<int>(attachmentLimits::imagePixels * 8 / 1'000'000));
        m_buffer.setData(bytes);
        m_buffer.open(QIODevice::ReadOnly);
        m_reader.setDevice(&m_buffer);
        m_reader.setDecideFormatFromContent(true);
        m_reader.setAutoTransform(true);
    }

    QImageReader *get() { return isKnown(m_reader.format()) ? &m_reader : nullptr; }

private:
    QBuffer m_buffer;
    QImageReader m_reader;
};

} // namespace

PictureDecoder::PictureDecoder(const QByteArray &bytes) : m_bytes(bytes), m_isHeif(HeifPicture::isHeif(bytes))
{
}

QSize PictureDecoder::size()
{
    if (m_isHeif) {
        m_size = HeifPicture(m_bytes).size();
    } else {
        Reader reader(m_bytes);
        if (QImageReader *known = reader.get()) {
            m_size = known->size();
            if (isTransposed(known->transformation()))
                m_size.transpose();
        }
    }
    if (!isDecodable(m_size))
        m_size = {};
    return m_size;
}

QImage PictureDecoder::decode(QSize wanted)
{
    if (size().isEmpty())
        return {};
    QImage image;
    if (m_isHeif) {
        image = HeifPicture(m_bytes).decode();
    } else {
        Reader reader(m_bytes);
        QImageReader *known = reader.get();
        // Only this decoder skips what a smaller picture does not need; the others would decode everything
        // and then scale it in a way of their own.
        if (known->format() == "jpeg")
            known->setScaledSize(isTransposed(known->transformation()) ? wanted.transposed() : wanted);
        image = known->read();
    }
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb))
        image.convertToColorSpace(QColorSpace::SRgb);
    image.setColorSpace({});
    return image;
}

} // namespace morvane
