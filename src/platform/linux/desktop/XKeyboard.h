#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <QHash>
#include <QList>
#include <QString>
#include <optional>
#include <xkbcommon/xkbcommon.h>

namespace morvane {

/// A key of the X keyboard and whether Shift belongs to it.
struct XKey {
    uint8_t code = 0;
    bool shifted = false;

    bool operator==(const XKey &) const = default;
};

/// The user's keyboard layout as it is now, read from the X server, and the keys of it that nothing is on.
class XKeyboard {
public:
    /// Nothing if the server does not tell.
    static std::optional<XKeyboard> read(const XDisplay &display);

    /// The key that types this symbol by itself or with Shift, Caps Lock being off.
    std::optional<XKey> keyFor(xkb_keysym_t symbol) const;
    /// What is on the key without modifiers; XKB_KEY_NoSymbol for nothing.
    xkb_keysym_t symbol(uint8_t code) const { return m_symbols.value(code); }
    /// What the key types without modifiers; an empty text for none.
    QString character(uint8_t code) const;
    /// Keys without any symbol.
    const QList<uint8_t> &spareKeys() const { return m_spareKeys; }
    /// Which of the layouts that the user has at hand it is.
    xkb_layout_index_t layout() const { return m_layout; }

private:
    XKeyboard() = default;

    static std::optional<XKeyboard> readOver(xcb_connection_t *connection);

    QHash<xkb_keysym_t, XKey> m_keys;
    QHash<uint8_t, xkb_keysym_t> m_symbols;
    QList<uint8_t> m_spareKeys;
    xkb_layout_index_t m_layout = 0;
};

/// The symbol that stands for a character of a text; nothing for control characters that no key stands for.
std::optional<xkb_keysym_t> symbolOf(char32_t character);

} // namespace morvane
