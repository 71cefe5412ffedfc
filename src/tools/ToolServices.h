#pragma once

#include <memory>

namespace morvane {

class BrowserPort;
class ReminderStore;
class ScreenTools;
class ShellTool;
class TodoList;
class WebTools;

/// What the tools work with, for their handlers. All of it outlives every call.
struct ToolServices {
    ShellTool &shell;
    WebTools &web;
    ReminderStore &reminders;
    ScreenTools &screen;
    BrowserPort &browser;
    /// Shared with work in the background, which goes on when the tools are gone.
    std::shared_ptr<TodoList> todos;
};

} // namespace morvane
