#pragma once

#include "platform/linux/desktop/XDisplay.h"
#include "platform/linux/desktop/XKeyboard.h"
#include "platform/linux/desktop/XPing.h"

#include <QDeadlineTimer>
#include <QList>
#include <QMap>
#include <chrono>
#include <optional>

namespace morvane {

/// Characters on keys that nothing was on. A program that reads a key later than it was pressed asks what is
/// on it by then; so the keys are given back only once the programs say that they have read what was typed.
/// The root window has a note of them, so that a later sequence, or the next run after a crash, knows of
/// them. One thread.
class XLentKeys {
public:
    /// Reads the note. `display` outlives this.
    explicit XLentKeys(const XDisplay &display);

    bool isEmpty() const { return m_keys.isEmpty(); }
    /// Those that are still as they were lent.
    QList<uint8_t> keys(const XKeyboard &now) const;
    /// Puts each symbol on the key at the same place of the other list, which is in order and has those alone
    /// on which nothing is, or which are lent and read.
    void lend(const QList<uint8_t> &keys, const QList<xkb_keysym_t> &symbols);
    /// To be told before a key is pressed: notes whose keyboard it is, if the key is a lent one.
    void use(uint8_t key);

    /// Whether the programs have read all that was typed on the keys, as it was when this was asked first.
    /// Does not wait. Programs that cannot tell are given a second.
    bool areRead();
    /// Takes the symbols off again.
    void giveBack();
    /// The same, if all programs say within `limit` that they have read what was typed; else the keys stay as
    /// they are.
    void giveBackOnceRead(std::chrono::milliseconds limit);

private:
    void note() const;

    const XDisplay &m_display;
    QMap<uint8_t, xkb_keysym_t> m_keys;
    QList<xcb_window_t> m_readers;
    bool m_isReaderKnown = false; ///< The one of this sequence.
    std::optional<XPing> m_ping;
    QDeadlineTimer m_patience;
};

} // namespace morvane
