#pragma once

#include "async/Task.h"
#include "model/ToolResult.h"
#include "tools/ToolPermit.h"

#include <QString>
#include <functional>

namespace morvane {

class AIService;
class Announcer;
class AttachmentService;
class BrowserWindowPort;
class ConversationStore;
class LocalModelRuntime;
class NotificationPort;
class Scheduler;
class SettingsStore;
class ToolServerPort;
class UpdateService;
class UrlOpener;

/// What the application model is built on; all of it outlives the model. Only the model itself is given the
/// whole; everything else gets what it uses.
struct AppServices {
    Scheduler &scheduler;
    SettingsStore &settings;
    ConversationStore &conversations;
    AIService &service;
    Announcer &announcer;
    NotificationPort &notifications;
    ToolServerPort &toolServers;
    BrowserWindowPort &browserWindow;
    UpdateService &updates;
    UrlOpener &urls;
    LocalModelRuntime &localModel;
    AttachmentService &attachments;
    /// Carries out a call of a built-in tool; never throws.
    std::function<Task<ToolResult>(ToolPermit)> executeTool;
    /// One sentence on the machine, for the system prompt.
    std::function<QString()> machineSummary;
};

} // namespace morvane
