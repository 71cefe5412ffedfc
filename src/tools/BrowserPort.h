#pragma once

#include "async/Task.h"
#include "model/ToolResult.h"

#include <QString>

namespace morvane {

/// What the tools ask of the browser that the user and the agent share. Main thread. The tasks never throw
/// but for cancellation, and are over before the browser goes.
class BrowserPort {
public:
    virtual ~BrowserPort() = default;

    /// Opens an address, or a search for the text, and reads the page.
    virtual Task<ToolResult> browserOpen(QString urlString) = 0;
    virtual Task<ToolResult> browserRead() = 0;
    /// Presses the element with this number of the last reading.
    virtual Task<ToolResult> browserClick(qint64 index) = 0;
    /// Fills the field with this number of the last reading.
    virtual Task<ToolResult> browserType(qint64 index, QString text, bool submit) = 0;
    /// Up when positive, down when negative.
    virtual Task<ToolResult> browserScroll(qint64 amount) = 0;
    virtual Task<ToolResult> browserBack() = 0;
};

} // namespace morvane
