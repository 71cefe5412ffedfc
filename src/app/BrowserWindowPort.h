#pragma once

namespace morvane {

/// What the agent and the main window ask of the built-in browser's window. Main thread.
class BrowserWindowPort {
public:
    virtual ~BrowserWindowPort() = default;

    /// Whether this build has the browser at all.
    virtual bool isAvailable() const = 0;
    /// Whether the window exists and the user sees it.
    virtual bool isVisible() const = 0;
    /// Opens the window, or brings it to the front.
    virtual void show() = 0;
};

/// A build without the browser.
class NoBrowserWindow final : public BrowserWindowPort {
public:
    bool isAvailable() const override { return false; }
    bool isVisible() const override { return false; }
    void show() override {}
};

} // namespace morvane
