#include "support/ClipboardManager.h"

#include <cstdlib>
#include <poll.h>

namespace morvane {
namespace {

constexpr int lookMilliseconds = 20;
constexpr uint32_t wholeProperty = 0x1fffffff;
constexpr uint32_t propertyChanges = XCB_EVENT_MASK_PROPERTY_CHANGE;

} // namespace

ClipboardManager::ClipboardManager(const QString &display)
    : m_display(display), m_connection(display), m_window(m_connection.openHiddenWindow())
{
    xcb_change_window_attributes(m_connection.handle(), m_window, XCB_CW_EVENT_MASK, &propertyChanges);
    xcb_set_selection_owner(m_connection.handle(), m_window, m_connection.atom("CLIPBOARD_MANAGER"),
                            XCB_CURRENT_TIME);
    // The answer to any question tells that the server has done the above.
    static_cast<void>(m_connection.activeWindow());
    m_thread = std::jthread([this](const std::stop_token &stop) { serve(stop); });
}

ClipboardManager::Event ClipboardManager::next(const std::stop_token &stop) const
{
    while (!stop.stop_requested()) {
        if (Event event{xcb_poll_for_event(m_connection.handle()), &std::free})
            return event;
        pollfd waiting{xcb_get_file_descriptor(m_connection.handle()), POLLIN, 0};
        ::poll(&waiting, 1, lookMilliseconds);
    }
    return {nullptr, &std::free};
}

QByteArray ClipboardManager::takeProperty(xcb_atom_t &type) const
{
    const auto cookie = xcb_get_property(m_connection.handle(), 1, m_window, m_connection.atom("KEPT"),
                                         XCB_ATOM_ANY, 0, wholeProperty);
    const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(m_connection.handle(), cookie, nullptr), &std::free);
    type = reply ? reply->type : xcb_atom_t(XCB_ATOM_NONE);
    return reply ? QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                              xcb_get_property_value_length(reply.get()))
                 : QByteArray();
}

QByteArray ClipboardManager::fetch(const std::stop_token &stop) const
{
    xcb_convert_selection(m_connection.handle(), m_window, m_connection.atom("CLIPBOARD"),
                          m_connection.atom("UTF8_STRING"), m_connection.atom("KEPT"), XCB_CURRENT_TIME);
    xcb_flush(m_connection.handle());
    Event event = next(stop);
    while (event && (event->response_type & 0x7f) != XCB_SELECTION_NOTIFY)
        event = next(stop);
    xcb_atom_t type = XCB_ATOM_NONE;
    QByteArray whole = takeProperty(type);
    if (type != m_connection.atom("INCR"))
        return whole;
    whole.clear();
    while ((event = next(stop))) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY ||
            reinterpret_cast<const xcb_property_notify_event_t *>(event.get())->state !=
                XCB_PROPERTY_NEW_VALUE)
            continue;
        const QByteArray part = takeProperty(type);
        if (part.isEmpty())
            break;
        whole += part;
    }
    return whole;
}

void ClipboardManager::serve(const std::stop_token &stop)
{
    while (const Event event = next(stop)) {
        if ((event->response_type & 0x7f) != XCB_SELECTION_REQUEST)
            continue;
        const auto request = *reinterpret_cast<const xcb_selection_request_event_t *>(event.get());
        xcb_selection_notify_event_t notice = XConnection::refusalOf(request);
        if (request.target == m_connection.atom("SAVE_TARGETS")) {
            const QByteArray text = fetch(stop);
            m_owner = std::make_unique<ClipboardOwner>(m_display,
                                                       QMap<QByteArray, QByteArray>{{"UTF8_STRING", text}});
            notice.property = request.property;
            m_hasSaved = true;
        }
        xcb_send_event(m_connection.handle(), 0, request.requestor, 0,
                       reinterpret_cast<const char *>(&notice));
        xcb_flush(m_connection.handle());
    }
}

} // namespace morvane
