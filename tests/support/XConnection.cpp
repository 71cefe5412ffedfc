#include "support/XConnection.h"

#include <QDeadlineTimer>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <stdexcept>

namespace morvane {

namespace {

template <typename T> std::unique_ptr<T, decltype(&std::free)> owned(T *reply)
{
    return {reply, &std::free};
}

constexpr uint32_t wholeProperty = 1 << 24;

} // namespace

XConnection::XConnection(const QString &display)
    : m_connection(xcb_connect(display.toUtf8().constData(), nullptr))
{
    if (xcb_connection_has_error(m_connection) != 0) {
        xcb_disconnect(m_connection);
        throw std::runtime_error("cannot reach the X server " + display.toStdString());
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_root = screen->root;
    m_size = {screen->width_in_pixels, screen->height_in_pixels};
}

XConnection::~XConnection()
{
    xcb_disconnect(m_connection);
}

xcb_atom_t XConnection::atom(std::string_view name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(name.size()), name.data());
    const auto reply = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : XCB_ATOM_NONE;
}

QList<uint32_t> XConnection::property(xcb_window_t window, std::string_view name) const
{
    const auto cookie = xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, wholeProperty);
    const auto reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    return QList<uint32_t>(values, values + reply->value_len);
}

QByteArray XConnection::bytes(xcb_window_t window, std::string_view name) const
{
    const auto cookie = xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, wholeProperty);
    const auto reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

xcb_window_t XConnection::openWindow() const
{
    const xcb_window_t window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, 50, 50, 400, 300, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(m_connection, window);
    xcb_flush(m_connection);
    return window;
}

xcb_window_t XConnection::openHiddenWindow() const
{
    const xcb_window_t window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
}

xcb_selection_notify_event_t XConnection::refusalOf(const xcb_selection_request_event_t &request)
{
    xcb_selection_notify_event_t notice{};
    notice.response_type = XCB_SELECTION_NOTIFY;
    notice.time = request.time;
    notice.requestor = request.requestor;
    notice.selection = request.selection;
    notice.target = request.target;
    return notice;
}

QImage XConnection::screenshot() const
{
    const auto cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, 0, 0,
                                      uint16_t(m_size.width()), uint16_t(m_size.height()), ~0U);
    const auto reply = owned(xcb_get_image_reply(m_connection, cookie, nullptr));
    if (!reply)
        return {};
    return QImage(xcb_get_image_data(reply.get()), m_size.width(), m_size.height(), QImage::Format_RGB32)
        .copy();
}

std::optional<QString> XConnection::clipboardText() const
{
    const xcb_window_t window = openHiddenWindow();
    const xcb_atom_t target = atom("MORVANE_TEST");
    xcb_convert_selection(m_connection, window, atom("CLIPBOARD"), atom("UTF8_STRING"), target,
                          XCB_CURRENT_TIME);
    xcb_flush(m_connection);
    std::optional<QString> text;
    const QDeadlineTimer deadline(std::chrono::seconds(5));
    bool answered = false;
    while (!answered && !deadline.hasExpired()) {
        const auto event = owned(xcb_poll_for_event(m_connection));
        if (!event) {
            pollfd waiting{xcb_get_file_descriptor(m_connection), POLLIN, 0};
            ::poll(&waiting, 1, int(deadline.remainingTime()));
            continue;
        }
        if ((event->response_type & 0x7f) != XCB_SELECTION_NOTIFY)
            continue;
        answered = true;
        const auto cookie = xcb_get_property(m_connection, 0, window, target, XCB_ATOM_ANY, 0, wholeProperty);
        const auto reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
        const auto *notice = reinterpret_cast<const xcb_selection_notify_event_t *>(event.get());
        if (notice->property != XCB_ATOM_NONE && reply) {
            text = QString::fromUtf8(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                     xcb_get_property_value_length(reply.get()));
        }
    }
    xcb_destroy_window(m_connection, window);
    xcb_flush(m_connection);
    return text;
}

} // namespace morvane
