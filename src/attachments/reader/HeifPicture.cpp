#include "attachments/reader/HeifPicture.h"

#include "attachments/AttachmentLimits.h"

#include <QColorSpace>
#include <libheif/heif.h>

namespace morvane {
namespace {

/// The container's own limit; the number of pixels is limited by whoever asks for the size.
constexpr int longestSide = 65'535;

QColorSpace colorSpaceOf(const heif_image_handle *handle)
{
    const std::size_t size = heif_image_handle_get_raw_color_profile_size(handle);
    if (size == 0 || size > std::size_t(attachmentLimits::imageBytes))
        return {};
    QByteArray profile(static_cast<qsizetype>(size), Qt::Uninitialized);
    if (heif_image_handle_get_raw_color_profile(handle, profile.data()).code != heif_error_Ok)
        return {};
    return QColorSpace::fromIccProfile(profile);
}

} // namespace

bool HeifPicture::isHeif(const QByteArray &bytes)
{
    constexpr qsizetype headBytes = 12;
    return bytes.size() > headBytes &&
           heif_check_filetype(reinterpret_cast<const std::uint8_t *>(bytes.constData()), headBytes) !=
               heif_filetype_no;
}

HeifPicture::HeifPicture(const QByteArray &bytes) : m_context(heif_context_alloc())
{
    heif_context_set_maximum_image_size_limit(m_context, longestSide);
    const heif_error read = heif_context_read_from_memory_without_copy(
        m_context, bytes.constData(), static_cast<std::size_t>(bytes.size()), nullptr);
    if (read.code == heif_error_Ok)
        heif_context_get_primary_image_handle(m_context, &m_handle);
}

HeifPicture::~HeifPicture()
{
    heif_image_handle_release(m_handle);
    heif_context_free(m_context);
}

QSize HeifPicture::size() const
{
    if (!m_handle)
        return {};
    return {heif_image_handle_get_width(m_handle), heif_image_handle_get_height(m_handle)};
}

QImage HeifPicture::decode() const
{
    heif_image *decoded = nullptr;
    if (!m_handle ||
        heif_decode_image(m_handle, &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGBA, nullptr)
                .code != heif_error_Ok)
        return {};
    int stride = 0;
    const std::uint8_t *pixels = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    const int width = heif_image_get_primary_width(decoded);
    const int height = heif_image_get_primary_height(decoded);
    QImage image;
    if (pixels && width > 0 && height > 0) {
        const auto format = heif_image_handle_is_premultiplied_alpha(m_handle)
                                ? QImage::Format_RGBA8888_Premultiplied
                                : QImage::Format_RGBA8888;
        image = QImage(pixels, width, height, stride, format).copy();
    }
    heif_image_release(decoded);
    if (!image.isNull())
        image.setColorSpace(colorSpaceOf(m_handle));
    return image;
}

} // namespace morvane
