#include "platform/linux/desktop/XKeyboardChanges.h"

namespace morvane {

XKeyboardChanges::XKeyboardChanges(const std::stop_token &stop) : m_display(XDisplay::open(stop)) {}

bool XKeyboardChanges::any()
{
    if (!m_display)
        return false;
    m_display->synchronize();
    bool found = false;
    while (const auto event = xReply(xcb_poll_for_event(m_display->connection())))
        if ((event->response_type & 0x7f) == XCB_MAPPING_NOTIFY)
            found |= reinterpret_cast<const xcb_mapping_notify_event_t *>(event.get())->request ==
                     XCB_MAPPING_KEYBOARD;
    return found;
}

} // namespace morvane
