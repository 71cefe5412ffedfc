#include "tools/BuiltinTools.h"

#include "tools/Calculator.h"
#include "tools/DateTimeTool.h"
#include "tools/DestructiveCommands.h"
#include "tools/TodoList.h"
#include "tools/ToolArguments.h"
#include "tools/ToolTable.h"

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

} // namespace

BuiltinTools::BuiltinTools()
{
    m_handlers.insert(u"get_current_datetime"_s,
                      offMain([](const Arguments &) { return DateTimeTool::currentDateTime(); }));
    m_handlers.insert(u"calculate"_s, offMain(calculate));
    // Shared with the handlers' work, which goes on when this object is gone.
    const auto todos = std::make_shared<TodoList>();
    m_handlers.insert(u"todo_list"_s, offMain([todos](const Arguments &arguments) {
                          return todos->updateTodos(stringListArgument(arguments, "items"));
                      }));
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

Task<QString> BuiltinTools::execute(AIToolCall call)
{
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
