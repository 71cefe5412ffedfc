#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <QByteArray>
#include <chrono>
#include <optional>
#include <stop_token>
#include <string_view>

namespace morvane {

/// Asks the owner of a selection, such as "CLIPBOARD", for its content in one form, in parts where it is
/// large. One thread.
class XSelectionReader {
public:
    /// `patience` is how long the owner may keep us waiting, with all the questions together. What it sends
    /// earns more, so that a slow one may take its time and one that drips is given up. After `stop` it
    /// counts as silent.
    XSelectionReader(const XDisplay &display, std::string_view selection, std::chrono::milliseconds patience,
                     std::stop_token stop = {});
    ~XSelectionReader();
    XSelectionReader(const XSelectionReader &) = delete;
    XSelectionReader &operator=(const XSelectionReader &) = delete;

    /// Nothing if nobody owns the selection, the owner has no such form, it does not answer in time, or it
    /// has more than 100 MB.
    std::optional<QByteArray> read(std::string_view target);

    /// Whether the last question was not answered at all.
    bool ownerIsSilent() const { return m_ownerIsSilent; }
    /// Whether the last answer was given up because it came too slowly.
    bool ownerIsSlow() const { return m_ownerIsSlow; }
    /// Whether the last answer was given up for its size.
    bool isTooLarge() const { return m_isTooLarge; }

private:
    /// Waits for an event of this kind that concerns our window.
    XReply<xcb_generic_event_t> waitFor(uint8_t kind);
    std::optional<QByteArray> takeProperty(xcb_atom_t &type);
    std::optional<QByteArray> readParts();

    const XDisplay &m_display;
    std::chrono::nanoseconds m_patience; ///< What is left of it.
    const std::stop_token m_stop;
    const xcb_window_t m_window;
    const xcb_atom_t m_selection;
    const xcb_atom_t m_property;
    bool m_ownerIsSilent = false;
    bool m_ownerIsSlow = false;
    bool m_isTooLarge = false;
};

} // namespace morvane
