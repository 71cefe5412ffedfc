#pragma once

#include "platform/linux/desktop/XDisplay.h"

namespace morvane {

/// A note on the root window while a sequence may hold keys or buttons. Where its writer has gone without
/// taking it off, those that are down are let go of before mouse and keyboard are used again. One thread.
class XHeldNote {
public:
    /// Nothing is noted yet. `display` outlives this.
    explicit XHeldNote(const XDisplay &display) : m_display(display) {}
    XHeldNote(const XHeldNote &) = delete;
    XHeldNote &operator=(const XHeldNote &) = delete;

    /// To be told before anything is pressed. Throws DisplaySilent.
    void write();
    /// To be told when nothing is held any more, before the server is waited for: whoever comes next would
    /// take the note for a crash's.
    void takeOff();

    /// Lets go of all that is down, if there is a note whose writer is no longer there. Throws DisplaySilent.
    static void letGoOfWhatIsLeft(const XDisplay &display);

private:
    const XDisplay &m_display;
    xcb_atom_t m_name = XCB_ATOM_NONE; ///< Once it is written.
};

} // namespace morvane
