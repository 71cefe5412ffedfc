#pragma once

#include "support/XConnection.h"

#include <QString>
#include <cstdint>

namespace morvane {

/// Presses keys on a display as the user's own keyboard does.
class Keyboard {
public:
    explicit Keyboard(const XConnection &connection);

    /// One key with its modifiers: "Return", "Ctrl+N", "Shift+Tab". Throws std::runtime_error for a key that
    /// the layout does not have.
    void press(const QString &keys) const;
    /// Characters of the layout, one key each.
    void type(const QString &text) const;
    /// Lets go of every key that is held, whoever holds it.
    void releaseAll() const;

private:
    struct Key {
        uint8_t code = 0;
        bool shifted = false;
    };
    Key keyFor(uint32_t symbol) const;
    void send(uint8_t type, uint8_t code) const;

    const XConnection &m_connection;
};

} // namespace morvane
