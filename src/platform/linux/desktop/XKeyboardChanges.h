#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <memory>

namespace morvane {

/// Hears of changes of what is on the keys, whoever makes them. One thread.
class XKeyboardChanges {
public:
    XKeyboardChanges();

    /// Whether there were any since the last question, all that the server has done by now among them.
    bool any();

private:
    /// Its own: who uses the extension that XKeyboard asks is not told this way any more.
    const std::unique_ptr<XDisplay> m_display;
};

} // namespace morvane
