#pragma once

#include "async/Task.h"
#include "model/AITool.h"
#include "model/ToolResult.h"
#include "tools/ShellTool.h"
#include "tools/ToolPermit.h"
#include "tools/ToolServices.h"
#include "tools/WebTools.h"

#include <QList>
#include <QString>

namespace morvane {

class BrowserPort;
class ReminderStore;
class ScreenTools;

/// Whether the built-in tools are offered to the model at all.
enum class UseTools { no, yes };

/// The built-in tools and the one entry through which a call is carried out.
class BuiltinTools {
public:
    /// `http` carries the web tools' requests. All outlive the tools.
    BuiltinTools(HttpClient &http, ReminderStore &reminders, ScreenTools &screen, BrowserPort &browser,
                 WebEndpoints web = {});
    BuiltinTools(const BuiltinTools &) = delete;
    BuiltinTools &operator=(const BuiltinTools &) = delete;

    /// The 41 declarations in table order, or nothing. Any thread.
    static QList<AITool> all(UseTools useTools);

    /// Whether the call may delete data or is hard to undo: a shell command that is declared so by the model
    /// or hit by one of the patterns in tools/DestructiveCommands.h. Any thread.
    static bool isDestructive(const AIToolCall &call);

    /// Carries out the permitted call. Never throws. Arguments of the wrong type read as their defaults. Main
    /// thread; must outlive the task.
    Task<ToolResult> execute(ToolPermit permit);

private:
    ShellTool m_shell;
    WebTools m_web;
    ToolServices m_services;
};

} // namespace morvane
