#include "tools/BuiltinTools.h"

#include "tools/Calculator.h"
#include "tools/DateTimeTool.h"
#include "tools/DestructiveCommands.h"
#include "tools/FileTools.h"
#include "tools/SearchTools.h"
#include "tools/TodoList.h"
#include "tools/ToolArguments.h"
#include "tools/ToolTable.h"
#include "tools/reminders/ReminderStore.h"

#include <QDir>
#include <exception>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Arguments = boost::json::object;

QString calculate(const Arguments &arguments)
{
    const std::optional<QString> expression = optionalStringArgument(arguments, "expression");
    if (!expression)
        return u"Error: the calculate tool needs an expression argument."_s;
    return Calculator::calculate(*expression);
}

void addEverydayTools(ToolHandlers &handlers)
{
    handlers[u"get_current_datetime"_s] =
        offMain([](const Arguments &) { return DateTimeTool::currentDateTime(); });
    handlers[u"calculate"_s] = offMain(calculate);
    // Shared with the handlers' work, which goes on when they are gone.
    handlers[u"todo_list"_s] = offMain([todos = std::make_shared<TodoList>()](const Arguments &arguments) {
        return todos->updateTodos(stringListArgument(arguments, "items"));
    });
}

void addFileTools(ToolHandlers &handlers)
{
    handlers[u"list_directory"_s] = offMain([](const Arguments &arguments) {
        return FileTools::listDirectory(stringArgument(arguments, "path"));
    });
    handlers[u"read_file"_s] = offMain(
        [](const Arguments &arguments) { return FileTools::readFile(stringArgument(arguments, "path")); });
    handlers[u"write_file"_s] = offMain([](const Arguments &arguments) {
        return FileTools::writeFile(stringArgument(arguments, "path"), stringArgument(arguments, "content"));
    });
    handlers[u"edit_file"_s] = offMain([](const Arguments &arguments) {
        return FileTools::editFile(
            stringArgument(arguments, "file_path"), stringArgument(arguments, "old_string"),
            stringArgument(arguments, "new_string"),
            booleanArgument(arguments, "replace_all") ? Occurrences::all : Occurrences::single);
    });
    handlers[u"grep_search"_s] = offMain([](const Arguments &arguments) {
        return SearchTools::grepSearch(stringArgument(arguments, "pattern"),
                                       stringArgument(arguments, "path", QDir::homePath()),
                                       stringArgument(arguments, "include"));
    });
    handlers[u"glob_find"_s] = offMain([](const Arguments &arguments) {
        return SearchTools::globFind(stringArgument(arguments, "pattern"),
                                     stringArgument(arguments, "path", QDir::homePath()));
    });
}

void addReminderTools(ToolHandlers &handlers, ReminderStore &reminders)
{
    handlers[u"set_reminder"_s] = [&reminders](const SharedJsonObject &arguments) {
        return reminders.setReminder(stringArgument(arguments.get(), "message"),
                                     numberArgument(arguments.get(), "minutes").value_or(1));
    };
    handlers[u"list_reminders"_s] = [&reminders](const SharedJsonObject &) {
        return reminders.listReminders();
    };
    handlers[u"cancel_reminder"_s] = [&reminders](const SharedJsonObject &arguments) {
        return reminders.cancelReminder(stringArgument(arguments.get(), "id"));
    };
}

} // namespace

BuiltinTools::BuiltinTools(HttpClient &http, ReminderStore &reminders, WebEndpoints web)
    : m_web(http, std::move(web))
{
    addReminderTools(m_handlers, reminders);
    addEverydayTools(m_handlers);
    addFileTools(m_handlers);
    m_handlers[u"run_shell_command"_s] = [this](const SharedJsonObject &arguments) {
        return m_shell.runShell(stringArgument(arguments.get(), "command"));
    };
    m_handlers[u"web_search"_s] = [this](const SharedJsonObject &arguments) {
        return m_web.webSearch(stringArgument(arguments.get(), "query"));
    };
    m_handlers[u"web_fetch"_s] = [this](const SharedJsonObject &arguments) {
        return m_web.webFetch(stringArgument(arguments.get(), "url"));
    };
}

QList<AITool> BuiltinTools::all(UseTools useTools)
{
    return useTools == UseTools::yes ? toolTable() : QList<AITool>();
}

bool BuiltinTools::isDestructive(const AIToolCall &call)
{
    if (call.name != "run_shell_command"_L1)
        return false;
    const Arguments &arguments = call.arguments.get();
    return booleanArgument(arguments, "destructive") ||
           isDestructiveCommand(stringArgument(arguments, "command"));
}

Task<QString> BuiltinTools::execute(ToolPermit permit)
{
    const AIToolCall &call = permit.call();
    try {
        const auto handler = m_handlers.constFind(call.name);
        if (handler != m_handlers.cend())
            co_return co_await (*handler)(call.arguments);
    } catch (const std::exception &error) {
        co_return u"Error: "_s + QString::fromUtf8(error.what());
    }
    co_return u"Error: unknown tool "_s + call.name + u'.';
}

} // namespace morvane
