#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

namespace morvane {

/// A picture in one of the usual formats, told by its content. The bytes must outlive the object.
class PictureDecoder {
public:
    /// Loads the decoders. To be called once where they can be loaded still.
    static void prepare();

    explicit PictureDecoder(const QByteArray &bytes);

    /// As it is to be seen, turned as its data says; read from the head alone where the format allows it.
    /// Empty if this is no picture, or one of more than attachmentLimits::imagePixels.
    QSize size();
    /// Whether `size` found one of more pixels.
    bool isTooLarge() const { return m_isTooLarge; }

    /// The picture, turned, in standard colours, not smaller than `wanted` where it is that large; null if it
    /// is damaged. What costs less than the whole is decoded where the format allows it.
    QImage decode(QSize wanted);

private:
    QSize m_size;
    const QByteArray &m_bytes;
    bool m_isHeif;
    bool m_isTooLarge = false;
};

} // namespace morvane
