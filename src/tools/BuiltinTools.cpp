#include "tools/BuiltinTools.h"

#include "tools/Log.h"
#include "tools/TodoList.h"
#include "tools/ToolTable.h"

#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {

BuiltinTools::BuiltinTools(HttpClient &http, ReminderStore &reminders, ScreenTools &screen,
                           BrowserPort &browser, WebEndpoints web)
    : m_web(http, std::move(web)),
      m_services{m_shell, m_web, reminders, screen, browser, std::make_shared<TodoList>()}
{
}

QList<AITool> BuiltinTools::all(UseTools useTools)
{
    return useTools == UseTools::yes ? toolTable() : QList<AITool>();
}

bool BuiltinTools::isDestructive(const AIToolCall &call)
{
    const ToolRecord *const record = findTool(call.name);
    return record && record->destructive && record->destructive(call.arguments.get());
}

Task<ToolResult> BuiltinTools::execute(ToolPermit permit)
{
    const AIToolCall &call = permit.call();
    const ToolRecord *const record = findTool(call.name);
    if (!record || !record->handler)
        co_return u"Error: unknown tool "_s + call.name + u'.';
    try {
        co_return co_await record->handler(m_services, call.arguments);
    } catch (...) {
        // The words of a library mean nothing to the user.
        qCWarning(toolsLog) << "a tool failed:" << kindOfCurrentFailure();
        co_return u"Error: the tool could not be carried out."_s;
    }
}

} // namespace morvane
