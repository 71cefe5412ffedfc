#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <memory>
#include <stop_token>

namespace morvane {

/// Hears of changes of what is on the keys, whoever makes them. One thread.
class XKeyboardChanges {
public:
    /// `stop` ends the waiting for the server.
    explicit XKeyboardChanges(const std::stop_token &stop);

    /// Whether there were any since the last question, all that the server has done by now among them.
    bool any();

private:
    /// Its own: who uses the extension that XKeyboard asks is not told this way any more.
    const std::unique_ptr<XDisplay> m_display;
};

} // namespace morvane
