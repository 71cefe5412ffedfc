#include "support/ClipboardOwner.h"

#include <QUrl>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <vector>

namespace morvane {
namespace {

constexpr int lookMilliseconds = 20;

} // namespace

ClipboardOwner::ClipboardOwner(const QString &display, QMap<QByteArray, QByteArray> contents, Manner manner)
    : m_connection(display), m_contents(std::move(contents)), m_manner(manner),
      m_window(m_connection.openHiddenWindow())
{
    xcb_set_selection_owner(m_connection.handle(), m_window, m_connection.atom("CLIPBOARD"),
                            XCB_CURRENT_TIME);
    // The answer to any question tells that the server has done the above.
    static_cast<void>(m_connection.activeWindow());
    m_thread = std::jthread([this](const std::stop_token &stop) { serve(stop); });
}

void ClipboardOwner::serve(const std::stop_token &stop)
{
    while (!stop.stop_requested()) {
        const std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> event(
            xcb_poll_for_event(m_connection.handle()), &std::free);
        if (!event) {
            pollfd waiting{xcb_get_file_descriptor(m_connection.handle()), POLLIN, 0};
            ::poll(&waiting, 1, lookMilliseconds);
        } else if ((event->response_type & 0x7f) == XCB_SELECTION_REQUEST) {
            answer(*reinterpret_cast<const xcb_selection_request_event_t *>(event.get()));
        } else if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
            drip(*reinterpret_cast<const xcb_property_notify_event_t *>(event.get()));
        }
    }
}

void ClipboardOwner::answer(const xcb_selection_request_event_t &request)
{
    xcb_connection_t *connection = m_connection.handle();
    xcb_selection_notify_event_t notice = XConnection::refusalOf(request);
    notice.property = request.property;
    const auto set = [&](xcb_atom_t type, uint8_t format, uint32_t count, const void *data) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property, type,
                            format, count, data);
    };
    const QList<QByteArray> targets = m_contents.keys();
    const auto wanted = std::find_if(targets.begin(), targets.end(), [&](const QByteArray &target) {
        return m_connection.atom(target.toStdString()) == request.target;
    });
    if (request.target == m_connection.atom("TARGETS")) {
        std::vector<xcb_atom_t> atoms{request.target};
        for (const QByteArray &target : targets)
            atoms.push_back(m_connection.atom(target.toStdString()));
        set(XCB_ATOM_ATOM, 32, static_cast<uint32_t>(atoms.size()), atoms.data());
    } else if (wanted != targets.end()) {
        const QByteArray content = m_contents.value(*wanted);
        if (m_manner != Manner::whole) {
            m_dripping = content;
            m_request = request;
            const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(connection, request.requestor, XCB_CW_EVENT_MASK, &mask);
            const uint32_t atLeast = 1;
            set(m_connection.atom("INCR"), 32, 1, &atLeast);
        } else {
            set(request.target, 8, static_cast<uint32_t>(content.size()), content.constData());
        }
    } else {
        notice.property = XCB_ATOM_NONE;
    }
    xcb_send_event(connection, 0, request.requestor, 0, reinterpret_cast<const char *>(&notice));
    xcb_flush(connection);
}

void ClipboardOwner::drip(const xcb_property_notify_event_t &change)
{
    if (change.state != XCB_PROPERTY_DELETE || change.window != m_request.requestor ||
        change.atom != m_request.property)
        return;
    const QByteArray part =
        m_manner == Manner::drips ? m_dripping.mid(m_dripped % m_dripping.size(), 1) : m_dripping;
    xcb_change_property(m_connection.handle(), XCB_PROP_MODE_REPLACE, m_request.requestor, m_request.property,
                        m_request.target, 8, static_cast<uint32_t>(part.size()), part.constData());
    xcb_flush(m_connection.handle());
    ++m_dripped;
}

QByteArray uriList(const QStringList &paths)
{
    QByteArray list;
    for (const QString &path : paths)
        list += QUrl::fromLocalFile(path).toEncoded() + "\r\n";
    return list;
}

} // namespace morvane
