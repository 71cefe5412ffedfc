#include "platform/linux/desktop/XPing.h"

#include <QDeadlineTimer>
#include <QRandomGenerator>
#include <poll.h>

namespace morvane {

XPing::XPing(const QList<xcb_window_t> &windows, const std::stop_token &stop)
    : m_display(XDisplay::open(stop))
{
    if (!m_display)
        return;
    m_protocols = m_display->atom("WM_PROTOCOLS");
    m_ping = m_display->atom("_NET_WM_PING");
    m_token = QRandomGenerator::system()->generate();
    // Answers are sent to the root window, as the window manager has them.
    const uint32_t answers = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_display->connection(), m_display->root(), XCB_CW_EVENT_MASK, &answers);
    for (const xcb_window_t window : windows)
        ask(window);
    m_display->synchronize();
}

void XPing::ask(xcb_window_t window)
{
    if (!m_display->exists(window))
        return;
    if (!m_display->values(window, "WM_PROTOCOLS").contains(m_ping)) {
        m_isAnyMute = true;
        return;
    }
    m_waiting.append(window);
    const uint32_t end = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_display->connection(), window, XCB_CW_EVENT_MASK, &end);
    xcb_client_message_event_t question{};
    question.response_type = XCB_CLIENT_MESSAGE;
    question.format = 32;
    question.window = window;
    question.type = m_protocols;
    question.data.data32[0] = m_ping;
    question.data.data32[1] = m_token;
    question.data.data32[2] = window;
    xcb_send_event(m_display->connection(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char *>(&question));
}

xcb_window_t XPing::doneBy(const xcb_generic_event_t &event) const
{
    switch (event.response_type & 0x7f) {
    case 0: // The window went while it was asked.
        return reinterpret_cast<const xcb_generic_error_t &>(event).resource_id;
    case XCB_DESTROY_NOTIFY:
        return reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window;
    case XCB_CLIENT_MESSAGE: {
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        const bool isAnswer = message.type == m_protocols && message.data.data32[0] == m_ping &&
                              message.data.data32[1] == m_token;
        return isAnswer ? message.data.data32[2] : xcb_window_t(XCB_NONE);
    }
    default:
        return XCB_NONE;
    }
}

XPing::State XPing::state()
{
    if (!m_display)
        return State::answered;
    while (const auto event = xReply(xcb_poll_for_event(m_display->connection())))
        m_waiting.removeAll(doneBy(*event));
    if (xcb_connection_has_error(m_display->connection()) != 0)
        return State::answered;
    if (!m_waiting.isEmpty())
        return State::waiting;
    return m_isAnyMute ? State::unknown : State::answered;
}

XPing::State XPing::wait(std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    for (;;) {
        const State now = state();
        if (now != State::waiting || deadline.hasExpired())
            return now;
        pollfd answers{xcb_get_file_descriptor(m_display->connection()), POLLIN, 0};
        ::poll(&answers, 1, int(deadline.remainingTime()));
    }
}

} // namespace morvane
