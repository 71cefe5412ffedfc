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
class ModelCatalog;
class NotificationPort;
class Scheduler;
class SettingsStore;
class ToolServerPort;
class UpdatePort;
class UrlOpener;

/// Everything that the application model works with; all of it outlives the model.
struct AppServices {
    Scheduler &scheduler;
    SettingsStore &settings;
    ConversationStore &conversations;
    AIService &service;
    Announcer &announcer;
    NotificationPort &notifications;
    ToolServerPort &toolServers;
    BrowserWindowPort &browserWindow;
    UpdatePort &updates;
    LocalModelRuntime &localModel;
    AttachmentService &attachments;
    ModelCatalog &modelCatalog;
    UrlOpener &urls;
    /// Carries out a call of a built-in tool; never throws.
    std::function<Task<ToolResult>(ToolPermit)> executeTool;
    /// One sentence on the machine, for the system prompt.
    std::function<QString()> machineSummary;
    /// The machine's memory in GiB.
    std::function<int()> machineMemory;
};

} // namespace morvane
