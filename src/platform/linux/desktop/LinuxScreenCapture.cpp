#include "platform/linux/desktop/LinuxScreenCapture.h"

#include "platform/linux/desktop/XDisplay.h"

#include <bit>
#include <cstdint>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>

namespace morvane {
namespace {

constexpr int bytesPerPixel = 4;

/// Memory that the X server writes a picture into; goes away with the last of its two users.
class SharedPicture {
public:
    explicit SharedPicture(std::size_t size) : m_id(::shmget(IPC_PRIVATE, size, IPC_CREAT | 0600))
    {
        if (m_id >= 0)
            m_memory = ::shmat(m_id, nullptr, 0);
    }
    ~SharedPicture()
    {
        if (isOpen())
            ::shmdt(m_memory);
        if (m_id >= 0)
            ::shmctl(m_id, IPC_RMID, nullptr);
    }
    SharedPicture(const SharedPicture &) = delete;
    SharedPicture &operator=(const SharedPicture &) = delete;

    bool isOpen() const { return m_memory && std::bit_cast<std::intptr_t>(m_memory) != -1; }
    uint32_t id() const { return static_cast<uint32_t>(m_id); }
    const uchar *data() const { return static_cast<const uchar *>(m_memory); }

private:
    int m_id;
    void *m_memory = nullptr;
};

QImage copyOf(const uchar *pixels, const QRect &region)
{
    return QImage(pixels, region.width(), region.height(), region.width() * bytesPerPixel,
                  QImage::Format_RGB32)
        .copy();
}

QImage throughSharedMemory(const XDisplay &display, const QRect &region)
{
    if (!display.hasExtension(&xcb_shm_id))
        return {};
    const SharedPicture picture(std::size_t(region.width()) * region.height() * bytesPerPixel);
    if (!picture.isOpen())
        return {};
    xcb_connection_t *const connection = display.connection();
    const xcb_shm_seg_t segment = xcb_generate_id(connection);
    const auto attached = xcb_shm_attach_checked(connection, segment, picture.id(), 0);
    display.synchronize();
    // A server on another computer refuses.
    if (xReply(xcb_request_check(connection, attached)))
        return {};
    const auto reply = display.reply<xcb_shm_get_image_reply_t>(xcb_shm_get_image(
        connection, display.root(), int16_t(region.x()), int16_t(region.y()), uint16_t(region.width()),
        uint16_t(region.height()), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0));
    xcb_shm_detach(connection, segment);
    return reply ? copyOf(picture.data(), region) : QImage();
}

QImage throughTheConnection(const XDisplay &display, const QRect &region)
{
    xcb_connection_t *const connection = display.connection();
    const auto cookie =
        xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, display.root(), int16_t(region.x()),
                      int16_t(region.y()), uint16_t(region.width()), uint16_t(region.height()), ~0U);
    const auto reply = display.reply<xcb_get_image_reply_t>(cookie);
    const qsizetype expected = qsizetype(region.width()) * region.height() * bytesPerPixel;
    if (!reply || xcb_get_image_data_length(reply.get()) < expected)
        return {};
    return copyOf(xcb_get_image_data(reply.get()), region);
}

} // namespace

bool LinuxScreenCapture::isGranted(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    return display && display->screen().root_depth >= 24;
}

QList<QRect> LinuxScreenCapture::displays(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display)
        return {};
    QList<QRect> frames = display->monitors();
    const QPoint origin = frames.first().topLeft();
    for (QRect &frame : frames)
        frame.translate(-origin);
    return frames;
}

QPoint LinuxScreenCapture::pointer(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display)
        return {};
    const auto reply =
        display->reply<xcb_query_pointer_reply_t>(xcb_query_pointer(display->connection(), display->root()));
    return reply ? QPoint(reply->root_x, reply->root_y) - display->origin() : QPoint();
}

QImage LinuxScreenCapture::capture(const QRect &region, const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display || display->screen().root_depth < 24)
        return {};
    const QRect whole(0, 0, display->screen().width_in_pixels, display->screen().height_in_pixels);
    const QRect wanted = region.translated(display->origin());
    if (wanted.isEmpty() || !whole.contains(wanted))
        return {};
    const QImage image = throughSharedMemory(*display, wanted);
    return image.isNull() ? throughTheConnection(*display, wanted) : image;
}

} // namespace morvane
