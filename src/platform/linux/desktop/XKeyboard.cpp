#include "platform/linux/desktop/XKeyboard.h"

#include <memory>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

template <auto release> struct Release {
    template <class T> void operator()(T *object) const { release(object); }
};
using Context = std::unique_ptr<xkb_context, Release<xkb_context_unref>>;
using Keymap = std::unique_ptr<xkb_keymap, Release<xkb_keymap_unref>>;
using State = std::unique_ptr<xkb_state, Release<xkb_state_unref>>;

xkb_mod_mask_t maskOf(xkb_keymap *keymap, const char *modifier)
{
    const xkb_mod_index_t index = xkb_keymap_mod_get_index(keymap, modifier);
    return index != XKB_MOD_INVALID ? xkb_mod_mask_t(1) << index : 0;
}

} // namespace

std::optional<XKeyboard> XKeyboard::read(const XDisplay &display)
{
    std::optional<XKeyboard> keyboard;
    display.attend([&] { keyboard = readOver(display.connection()); });
    return keyboard;
}

std::optional<XKeyboard> XKeyboard::readOver(xcb_connection_t *connection)
{
    if (xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr,
                                    nullptr) == 0)
        return std::nullopt;
    const Context context(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES));
    const int32_t device = xkb_x11_get_core_keyboard_device_id(connection);
    if (!context || device < 0)
        return std::nullopt;
    const Keymap keymap(
        xkb_x11_keymap_new_from_device(context.get(), connection, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    const State present(keymap ? xkb_x11_state_new_from_device(keymap.get(), connection, device) : nullptr);
    const State wanted(keymap ? xkb_state_new(keymap.get()) : nullptr);
    if (!present || !wanted)
        return std::nullopt;

    XKeyboard keyboard;
    const xkb_mod_mask_t caps = maskOf(keymap.get(), XKB_MOD_NAME_CAPS);
    const xkb_mod_mask_t shift = maskOf(keymap.get(), XKB_MOD_NAME_SHIFT);
    const xkb_mod_mask_t locked = xkb_state_serialize_mods(present.get(), XKB_STATE_MODS_LOCKED);
    keyboard.m_layout = xkb_state_serialize_layout(present.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    const xkb_keycode_t last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap.get()), 255);
    for (const bool shifted : {false, true}) {
        xkb_state_update_mask(wanted.get(), shifted ? shift : 0, 0, locked & ~caps, 0, 0, keyboard.m_layout);
        for (xkb_keycode_t code = xkb_keymap_min_keycode(keymap.get()); code <= last; ++code) {
            if (xkb_keymap_num_layouts_for_key(keymap.get(), code) == 0) {
                if (!shifted)
                    keyboard.m_spareKeys.append(uint8_t(code));
                continue;
            }
            const xkb_keysym_t symbol = xkb_state_key_get_one_sym(wanted.get(), code);
            if (symbol != XKB_KEY_NoSymbol && !keyboard.m_keys.contains(symbol))
                keyboard.m_keys.insert(symbol, {uint8_t(code), shifted});
            if (!shifted)
                keyboard.m_symbols.insert(uint8_t(code), symbol);
        }
    }
    return keyboard;
}

std::optional<XKey> XKeyboard::keyFor(xkb_keysym_t symbol) const
{
    const auto key = m_keys.constFind(symbol);
    return key != m_keys.cend() ? std::optional(*key) : std::nullopt;
}

QString XKeyboard::character(uint8_t code) const
{
    const char32_t character = xkb_keysym_to_utf32(symbol(code));
    return character != 0 ? QString::fromUcs4(&character, 1) : QString();
}

std::optional<xkb_keysym_t> symbolOf(char32_t character)
{
    switch (character) {
    case U'\n':
    case U'\r':
        return XKB_KEY_Return;
    case U'\t':
        return XKB_KEY_Tab;
    case U'\b':
        return XKB_KEY_BackSpace;
    case U'\x1b':
        return XKB_KEY_Escape;
    case U'\x7f':
        return XKB_KEY_Delete;
    default:
        break;
    }
    const xkb_keysym_t symbol = character < 0x20 || (character >= 0x80 && character < 0xa0)
                                    ? XKB_KEY_NoSymbol
                                    : xkb_utf32_to_keysym(character);
    return symbol != XKB_KEY_NoSymbol ? std::optional(symbol) : std::nullopt;
}

} // namespace morvane
