#pragma once

#include "tools/BrowserPort.h"

namespace morvane {

/// A build without the browser.
class NoBrowser final : public BrowserPort {
public:
    Task<ToolResult> browserOpen(QString) override { return absent(); }
    Task<ToolResult> browserRead() override { return absent(); }
    Task<ToolResult> browserClick(qint64) override { return absent(); }
    Task<ToolResult> browserType(qint64, QString, bool) override { return absent(); }
    Task<ToolResult> browserScroll(qint64) override { return absent(); }
    Task<ToolResult> browserBack() override { return absent(); }

private:
    static Task<ToolResult> absent()
    {
        co_return QStringLiteral("Error: the built-in browser is not part of this version.");
    }
};

} // namespace morvane
