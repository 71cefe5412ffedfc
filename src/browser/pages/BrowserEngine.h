#pragma once

#include "browser/pages/PageNotification.h"
#include "browser/pages/WebPageFactory.h"

#include <QString>
#include <chrono>
#include <expected>
#include <functional>
#include <memory>

namespace morvane {

/// How the web engine is to be started. It keeps this for as long as the program runs.
struct EngineOptions {
    QString folder;           ///< Where cookies and what sites store are kept; made, for the user alone.
    bool prefersDark = false; ///< Pages that have dark colors show them.
    bool isHeard = false;     ///< Pages are made readable for screen readers, which costs memory and time.
    /// Shows what a page says that may notify.
    std::function<void(const PageNotification &notification)> showNotification = nullptr;
    /// By which a page's question waits for the user to pause.
    std::function<std::chrono::steady_clock::time_point()> now = &std::chrono::steady_clock::now;
};

using BrowserEngine = std::expected<std::unique_ptr<WebPageFactory>, QString>;

/// Loads the module with the web engine, which is none of the program's own libraries, and starts the engine.
/// What is missing is told in a sentence that begins small. Once in a program, after the application object;
/// takes some hundred milliseconds of the main thread.
BrowserEngine loadBrowserEngine(const QString &modulePath, const EngineOptions &options);

/// The one function of the module, `morvaneBrowserEngine`, which leaves the engine in `engine`.
using StartBrowserEngine = void (*)(const EngineOptions &options, BrowserEngine &engine);

} // namespace morvane
