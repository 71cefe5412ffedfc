#pragma once

#include <QString>

namespace morvane {

/// What the agent and the main window ask of the built-in browser's window. Main thread.
class BrowserWindowPort {
public:
    virtual ~BrowserWindowPort() = default;

    /// Whether it can be opened, as far as that is known.
    virtual bool isAvailable() const = 0;
    /// Why it cannot; a sentence that begins small.
    virtual QString problem() const = 0;
    /// Whether the window exists and the user sees it.
    virtual bool isVisible() const = 0;
    /// Opens the window, or brings it to the front.
    virtual void show() = 0;
    /// The user has stopped the agent: the page in sight stops loading, and what it asks the user is refused.
    virtual void stop() = 0;
};

} // namespace morvane
