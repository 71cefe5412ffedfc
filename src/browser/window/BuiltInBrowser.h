#pragma once

#include "app/BrowserWindowPort.h"
#include "browser/pages/BrowserEngine.h"
#include "tools/BrowserPort.h"

#include <functional>
#include <memory>

namespace morvane {

class Announcer;
class AttachmentService;
class BrowserManager;
class ConversationPort;
class FieldPasting;
class HttpClient;
class PageOperations;
class Scheduler;
class UpdateModel;
class UrlOpener;
class WindowRaiser;

/// The browser as the rest of the program knows it. It costs nothing before it is first used: then the web
/// engine is started, and the history is read. Main thread.
class BuiltInBrowser final : public BrowserPort, public BrowserWindowPort {
public:
    /// All of it outlives the browser.
    struct Services {
        Scheduler &scheduler;
        Announcer &announcer;
        HttpClient &http;
        UrlOpener &urls;
        WindowRaiser &raiser;
        AttachmentService &attachments;
        QString folder;        ///< Of history and bookmarks.
        QString documentation; ///< The page that explains the program, by its path.
        /// Called once at most.
        std::function<BrowserEngine()> startEngine;
    };
    /// What its window talks to.
    struct Surroundings {
        ConversationPort &conversation;
        const UpdateModel &updates;
        FieldPasting *pasting = nullptr;
        std::function<void()> showMainWindow;
    };

    /// `problem` tells why it cannot be used, if that is known already; a sentence that begins small.
    explicit BuiltInBrowser(Services services, QString problem = {});
    ~BuiltInBrowser() override;

    /// From now on it can be used. `surroundings` stay until `shutDown`.
    void attach(const Surroundings &surroundings);
    /// Closes the window and ends the engine. The scheduler is shut down before.
    void shutDown();

    bool isAvailable() const override { return m_problem.isEmpty(); }
    QString problem() const override { return m_problem; }
    bool isVisible() const override;
    void show() override;
    void stop() override;

    Task<ToolResult> browserOpen(QString urlString) override;
    Task<ToolResult> browserRead() override;
    Task<ToolResult> browserClick(qint64 index) override;
    Task<ToolResult> browserType(qint64 index, QString text, bool submit) override;
    Task<ToolResult> browserScroll(qint64 amount) override;
    Task<ToolResult> browserBack() override;

private:
    struct Parts;

    /// Starts it if need be; null when it cannot be used.
    BrowserManager *manager();
    template <class... Arguments>
    Task<ToolResult> run(Task<QString> (PageOperations::*operation)(Arguments...), Arguments... arguments);

    const Services m_services;
    QString m_problem;
    std::unique_ptr<const Surroundings> m_surroundings;
    std::unique_ptr<Parts> m_parts;
};

} // namespace morvane
