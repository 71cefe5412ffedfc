#include "platform/linux/desktop/XDisplay.h"

#include <QtGlobal>
#include <algorithm>
#include <xcb/randr.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// In units of 32 bits; titles and lists of windows are far smaller.
constexpr uint32_t longestProperty = 1 << 16;

} // namespace

std::unique_ptr<XDisplay> XDisplay::open()
{
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    int preferred = 0;
    xcb_connection_t *const connection = xcb_connect(nullptr, &preferred);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; preferred > 0 && screens.rem > 1; --preferred)
        xcb_screen_next(&screens);
    return std::unique_ptr<XDisplay>(new XDisplay(connection, screens.data));
}

XDisplay::XDisplay(xcb_connection_t *connection, const xcb_screen_t *screen)
    : m_connection(connection), m_screen(screen)
{
}

XDisplay::~XDisplay()
{
    xcb_disconnect(m_connection);
}

bool XDisplay::hasExtension(xcb_extension_t *extension) const
{
    const xcb_query_extension_reply_t *const reply = xcb_get_extension_data(m_connection, extension);
    return reply && reply->present;
}

xcb_atom_t XDisplay::atom(std::string_view name) const
{
    const auto cookie = xcb_intern_atom(m_connection, 0, uint16_t(name.size()), name.data());
    const auto reply = xReply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : XCB_ATOM_NONE;
}

QList<uint32_t> XDisplay::values(xcb_window_t window, std::string_view name) const
{
    const auto cookie =
        xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, longestProperty);
    const auto reply = xReply(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    return QList<uint32_t>(values, values + reply->value_len);
}

QByteArray XDisplay::bytes(xcb_window_t window, std::string_view name) const
{
    const auto cookie =
        xcb_get_property(m_connection, 0, window, atom(name), XCB_ATOM_ANY, 0, longestProperty);
    const auto reply = xReply(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->format != 8)
        return {};
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())), reply->value_len);
}

bool XDisplay::exists(xcb_window_t window) const
{
    return xReply(xcb_get_window_attributes_reply(
               m_connection, xcb_get_window_attributes(m_connection, window), nullptr)) != nullptr;
}

QRect XDisplay::geometry(xcb_window_t window) const
{
    const auto size = xcb_get_geometry(m_connection, window);
    const auto place = xcb_translate_coordinates(m_connection, window, root(), 0, 0);
    const auto sizeReply = xReply(xcb_get_geometry_reply(m_connection, size, nullptr));
    const auto placeReply = xReply(xcb_translate_coordinates_reply(m_connection, place, nullptr));
    if (!sizeReply || !placeReply)
        return {};
    return {placeReply->dst_x, placeReply->dst_y, sizeReply->width, sizeReply->height};
}

QList<QRect> XDisplay::monitors() const
{
    QList<QRect> frames;
    if (hasExtension(&xcb_randr_id)) {
        const auto version = xReply(xcb_randr_query_version_reply(
            m_connection, xcb_randr_query_version(m_connection, 1, 5), nullptr));
        const bool knowsMonitors = version && (version->major_version > 1 || version->minor_version >= 5);
        const auto reply = knowsMonitors
                               ? xReply(xcb_randr_get_monitors_reply(
                                     m_connection, xcb_randr_get_monitors(m_connection, root(), 1), nullptr))
                               : nullptr;
        auto monitor = reply ? xcb_randr_get_monitors_monitors_iterator(reply.get())
                             : xcb_randr_monitor_info_iterator_t{};
        for (; monitor.rem > 0; xcb_randr_monitor_info_next(&monitor)) {
            const QRect frame(monitor.data->x, monitor.data->y, monitor.data->width, monitor.data->height);
            // Mirrored outputs are one place to look at.
            if (!frame.isEmpty() && !frames.contains(frame))
                frames.insert(monitor.data->primary ? 0 : frames.size(), frame);
        }
    }
    if (frames.isEmpty())
        frames.append(QRect(0, 0, m_screen->width_in_pixels, m_screen->height_in_pixels));
    return frames;
}

QPoint XDisplay::origin() const
{
    return monitors().first().topLeft();
}

void XDisplay::sendToWindowManager(std::string_view message, xcb_window_t window,
                                   const QList<uint32_t> &data) const
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(message);
    std::copy_n(data.cbegin(), std::min<qsizetype>(data.size(), 5), event.data.data32);
    xcb_send_event(m_connection, 0, root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(m_connection);
}

void XDisplay::synchronize() const
{
    xReply(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

} // namespace morvane
