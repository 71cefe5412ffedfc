#include "attachments/reader/PicturePreview.h"

#include "attachments/PicturePixels.h"
#include "attachments/reader/PictureDecoder.h"
#include "attachments/reader/VisionPicture.h"

#include <algorithm>

namespace morvane {

ReaderAnswer picturePreview(const QByteArray &bytes, int side, qint64 mostPixels)
{
    using Kind = ReaderAnswer::Kind;
    PictureDecoder decoder(bytes);
    const QSize size = decoder.size();
    if (decoder.isTooLarge() || qint64(size.width()) * size.height() > mostPixels)
        return {Kind::tooManyPixels, {}};
    if (size.isEmpty())
        return {Kind::unreadable, {}};
    const bool fits = std::max(size.width(), size.height()) <= side;
    const QSize wanted = fits ? size : size.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1});
    QImage image = decoder.decode(wanted);
    if (image.isNull())
        return {Kind::unreadable, {}};
    if (image.size() != wanted)
        image = image.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return {Kind::pixels, pixelBytes(onWhite(image))};
}

} // namespace morvane
