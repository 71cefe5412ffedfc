#include "platform/linux/desktop/XSelectionReader.h"

#include <QElapsedTimer>
#include <algorithm>
#include <poll.h>
#include <utility>

namespace morvane {
namespace {

/// More text than this is given up: nobody copies it to read it.
constexpr qsizetype mostBytes = 100'000'000;
constexpr uint32_t wholeProperty = 0x1fffffff;
/// How soon a stop is seen.
constexpr std::chrono::milliseconds look{20};
/// What a byte earns of patience: a connection of 250 kB a second is not given up.
constexpr std::chrono::microseconds earned{4};

} // namespace

XSelectionReader::XSelectionReader(const XDisplay &display, std::string_view selection,
                                   std::chrono::milliseconds patience, std::stop_token stop)
    : m_display(display), m_patience(patience), m_stop(std::move(stop)),
      m_window(xcb_generate_id(display.connection())), m_selection(display.atom(selection)),
      m_property(display.atom("MORVANE_SELECTION"))
{
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(display.connection(), XCB_COPY_FROM_PARENT, m_window, display.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
}

XSelectionReader::~XSelectionReader()
{
    xcb_destroy_window(m_display.connection(), m_window);
    xcb_flush(m_display.connection());
}

XReply<xcb_generic_event_t> XSelectionReader::waitFor(uint8_t kind)
{
    using namespace std::chrono;
    xcb_connection_t *const connection = m_display.connection();
    QElapsedTimer waited;
    waited.start();
    // Looked at also where other events come without end.
    const auto left = [&] { return m_patience - nanoseconds(waited.nsecsElapsed()); };
    XReply<xcb_generic_event_t> event;
    while (xcb_connection_has_error(connection) == 0 && !m_stop.stop_requested() && left() > 0ns) {
        event = xReply(xcb_poll_for_event(connection));
        if (event && (event->response_type & 0x7f) == kind)
            break;
        if (event)
            continue;
        pollfd waiting{xcb_get_file_descriptor(connection), POLLIN, 0};
        ::poll(&waiting, 1, int(std::clamp(ceil<milliseconds>(left()), 0ms, look).count()));
    }
    m_patience = std::max(left(), nanoseconds(0));
    const bool isThere = event && (event->response_type & 0x7f) == kind;
    return isThere ? std::move(event) : nullptr;
}

std::optional<QByteArray> XSelectionReader::takeProperty(xcb_atom_t &type)
{
    xcb_connection_t *const connection = m_display.connection();
    const auto reply = m_display.reply<xcb_get_property_reply_t>(
        xcb_get_property(connection, 1, m_window, m_property, XCB_ATOM_ANY, 0, wholeProperty));
    if (!reply)
        return std::nullopt;
    type = reply->type;
    return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

std::optional<QByteArray> XSelectionReader::read(std::string_view target)
{
    xcb_connection_t *const connection = m_display.connection();
    m_ownerIsSilent = m_ownerIsSlow = m_isTooLarge = false;
    xcb_convert_selection(connection, m_window, m_selection, m_display.atom(target), m_property,
                          XCB_CURRENT_TIME);
    xcb_flush(connection);
    const auto event = waitFor(XCB_SELECTION_NOTIFY);
    m_ownerIsSilent = event == nullptr;
    if (!event ||
        reinterpret_cast<const xcb_selection_notify_event_t *>(event.get())->property == XCB_ATOM_NONE)
        return std::nullopt;
    xcb_atom_t type = XCB_ATOM_NONE;
    std::optional<QByteArray> whole = takeProperty(type);
    return whole && type == m_display.atom("INCR") ? readParts() : whole;
}

std::optional<QByteArray> XSelectionReader::readParts()
{
    // Taking the announcement away has asked for the first part, each part asks for the next; an empty one is
    // the end.
    QByteArray whole;
    for (;;) {
        const auto change = waitFor(XCB_PROPERTY_NOTIFY);
        if (!change) {
            (whole.isEmpty() ? m_ownerIsSilent : m_ownerIsSlow) = true;
            return std::nullopt;
        }
        const auto *const notice = reinterpret_cast<const xcb_property_notify_event_t *>(change.get());
        if (notice->state != XCB_PROPERTY_NEW_VALUE || notice->atom != m_property)
            continue;
        xcb_atom_t type = XCB_ATOM_NONE;
        const std::optional<QByteArray> part = takeProperty(type);
        m_isTooLarge = part && whole.size() + part->size() > mostBytes;
        if (!part || m_isTooLarge)
            return std::nullopt;
        if (part->isEmpty())
            return whole;
        whole.append(*part);
        m_patience += part->size() * earned;
    }
}

} // namespace morvane
