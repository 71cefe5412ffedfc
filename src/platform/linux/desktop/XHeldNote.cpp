#include "platform/linux/desktop/XHeldNote.h"

#include <xcb/xtest.h>

namespace morvane {
namespace {

/// Of a property and of a selection.
constexpr std::string_view name = "_MORVANE_HOLDS_KEYS";

constexpr unsigned keyCodes = 256;
/// Those that the state of the pointer tells of.
constexpr uint8_t buttons = 5;

void release(const XDisplay &display, uint8_t type, uint8_t detail)
{
    xcb_test_fake_input(display.connection(), type, detail, XCB_CURRENT_TIME, display.root(), 0, 0, 0);
}

} // namespace

void XHeldNote::write()
{
    if (m_name != XCB_ATOM_NONE)
        return;
    m_name = m_display.atom(name);
    xcb_connection_t *const connection = m_display.connection();
    // The server takes it back when the connection ends, in whatever way; the property stays.
    xcb_set_selection_owner(connection, m_display.root(), m_name, XCB_CURRENT_TIME);
    const uint32_t noted = 1;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_display.root(), m_name, XCB_ATOM_CARDINAL, 32, 1,
                        &noted);
}

void XHeldNote::takeOff()
{
    if (m_name != XCB_ATOM_NONE)
        xcb_delete_property(m_display.connection(), m_display.root(), m_name);
    m_name = XCB_ATOM_NONE;
}

void XHeldNote::letGoOfWhatIsLeft(const XDisplay &display)
{
    if (display.values(display.root(), name).isEmpty() || !display.hasExtension(&xcb_test_id))
        return;
    xcb_connection_t *const connection = display.connection();
    const auto writer = display.reply<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(connection, display.atom(name)));
    if (!writer || writer->owner != XCB_NONE)
        return;
    const auto keys = display.reply<xcb_query_keymap_reply_t>(xcb_query_keymap(connection));
    for (unsigned code = 0; keys && code < keyCodes; ++code)
        if ((keys->keys[code / 8] >> (code % 8) & 1) != 0)
            release(display, XCB_KEY_RELEASE, uint8_t(code));
    const auto pointer =
        display.reply<xcb_query_pointer_reply_t>(xcb_query_pointer(connection, display.root()));
    const auto mapping = display.reply<xcb_get_pointer_mapping_reply_t>(xcb_get_pointer_mapping(connection));
    const int physicalButtons = pointer && mapping ? xcb_get_pointer_mapping_map_length(mapping.get()) : 0;
    // Left-handed users swap the buttons, of which the pointer tells by what they stand for.
    for (int physical = 1; physical <= physicalButtons; ++physical) {
        const uint8_t button = xcb_get_pointer_mapping_map(mapping.get())[physical - 1];
        if (button >= 1 && button <= buttons && (pointer->mask & (XCB_BUTTON_MASK_1 << (button - 1))) != 0)
            release(display, XCB_BUTTON_RELEASE, uint8_t(physical));
    }
    xcb_delete_property(connection, display.root(), display.atom(name));
    display.synchronize();
}

} // namespace morvane
