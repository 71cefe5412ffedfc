#include "tools/ToolRecords.h"

#include "tools/Calculator.h"
#include "tools/DateTimeTool.h"
#include "tools/DestructiveCommands.h"
#include "tools/FileTools.h"
#include "tools/SearchTools.h"
#include "tools/ShellTool.h"
#include "tools/TodoList.h"
#include "tools/ToolArguments.h"
#include "tools/ToolPhrases.h"
#include "tools/WebTools.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString calculate(const ToolArguments &arguments)
{
    const std::optional<QString> expression = optionalStringArgument(arguments, "expression");
    if (!expression)
        return u"Error: the calculate tool needs an expression argument."_s;
    return Calculator::calculate(*expression);
}

QString editFile(const ToolArguments &arguments)
{
    return FileTools::editFile(
        stringArgument(arguments, "file_path"), stringArgument(arguments, "old_string"),
        stringArgument(arguments, "new_string"),
        booleanArgument(arguments, "replace_all") ? Occurrences::all : Occurrences::single);
}

Task<ToolResult> updateTodos(ToolServices services, SharedJsonObject arguments)
{
    return runOffMain([todos = services.todos, arguments = std::move(arguments)]() -> ToolResult {
        return todos->updateTodos(stringListArgument(arguments.get(), "items"));
    });
}

} // namespace

QList<ToolRecord> workRecords()
{
    using enum ParameterKind;
    using enum Presence;
    return {
        {.declaration = declareTool(
             "get_current_datetime",
             "Get the current date and time. Use this whenever the user asks what day, date, or time it is."),
         .handler = offMain([](const ToolArguments &) { return DateTimeTool::currentDateTime(); })},
        {.declaration = declareTool(
             "calculate",
             "Evaluate a simple arithmetic expression, for example '3 * (12 - 4)' or '100 / 8'. Use this for "
             "math problems.",
             {{"expression", string, required,
               "Arithmetic expression using numbers and the operators +, -, *, /, (, ) and a decimal "
               "point."}}),
         .handler = offMain(calculate)},
        {.declaration = declareTool(
             "list_directory",
             "List the files and folders in a directory. Use this to explore the computer, find files, or "
             "see what is in a folder.",
             {{"path", string, required,
               "Absolute path of the directory to list, for example /Users/yourname/Documents."}}),
         .handler = offMain([](const ToolArguments &arguments) {
             return FileTools::listDirectory(stringArgument(arguments, "path"));
         })},
        {.declaration = declareTool(
             "read_file",
             "Read the text content of a file on this computer. Use this to view documents, scripts, or "
             "settings files.",
             {{"path", string, required, "Absolute path of the file to read."}}),
         .handler = offMain([](const ToolArguments &arguments) {
             return FileTools::readFile(stringArgument(arguments, "path"));
         })},
        {.declaration = declareTool(
             "write_file",
             "Create or overwrite a text file on this computer. The user will be asked to approve this "
             "before it happens.",
             {{"path", string, required, "Absolute path of the file to create or overwrite."},
              {"content", string, required, "The full text content to write to the file."}}),
         .handler = offMain([](const ToolArguments &arguments) {
             return FileTools::writeFile(stringArgument(arguments, "path"),
                                         stringArgument(arguments, "content"));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"write a file at "_s + stringArgument(arguments, "path", u"an unknown location"_s);
         },
         .purpose = u"write files"_s,
         .approval = ApprovalRule::unlessAlwaysAllowed},
        {.declaration = declareTool(
             "run_shell_command",
             "Run a terminal command on this computer and return its output. Use this to install software, "
             "manage files, start programs, check system information, or automate almost anything. The user "
             "will be asked to approve this before it runs. If the command could destroy data or is hard to "
             "undo — deleting files or folders, erasing or reformatting a disk, force-pushing to git, "
             "shutting down or restarting the machine, changing system settings, or requiring admin "
             "privileges — set destructive to true so the user can approve it with a clear warning.",
             {{"command", string, required,
               "The shell command to run, for example: ls -la /Users/yourname/Documents"},
              {"destructive", boolean, optional,
               "Set to true if this command is destructive or irreversible, for example deleting data, "
               "erasing or reformatting a disk, force-pushing, or changing system settings. Defaults to "
               "false."}}),
         .handler = [](ToolServices services, SharedJsonObject arguments) -> Task<ToolResult> {
             co_return co_await services.shell.runShell(stringArgument(arguments.get(), "command"));
         },
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"run the command: "_s + stringArgument(arguments, "command", u"an unknown command"_s);
         },
         .phraseStyle = PhraseStyle::command,
         .approval = ApprovalRule::whenDestructive,
         .destructive =
             [](const ToolArguments &arguments) {
                 return booleanArgument(arguments, "destructive") ||
                        isDestructiveCommand(stringArgument(arguments, "command"));
             }},
        {.declaration = declareTool(
             "web_search",
             "Search the web for current information and return a short summary of the top results. Use this "
             "for news, facts, prices, or anything that changes often.",
             {{"query", string, required, "The search query, for example: latest macOS version"}}),
         .handler = [](ToolServices services, SharedJsonObject arguments) -> Task<ToolResult> {
             co_return co_await services.web.webSearch(stringArgument(arguments.get(), "query"));
         },
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"search the web for "_s + quotedArgument(arguments, "query");
         }},
        {.declaration = declareTool(
             "web_fetch",
             "Fetch and read the text content of a web page. Use this to read articles, documentation, or "
             "any URL.",
             {{"url", string, required,
               "The full web address, for example: https://www.example.com/news/article.html"}}),
         .handler = [](ToolServices services, SharedJsonObject arguments) -> Task<ToolResult> {
             co_return co_await services.web.webFetch(stringArgument(arguments.get(), "url"));
         }},
        {.declaration = declareTool(
             "grep_search",
             "Search file contents for a pattern. Returns matching files, line numbers, and lines. Use this "
             "to find where something is used in code or documents.",
             {{"pattern", string, required,
               "Regular expression to search for, for example: func send or TODO"},
              {"path", string, optional,
               "Absolute path of the folder or file to search. Defaults to the user's home folder."},
              {"include", string, optional,
               "Optional file-name pattern to limit the search, for example: *.swift or *.txt"}}),
         .handler = offMain([](const ToolArguments &arguments) {
             return SearchTools::grepSearch(stringArgument(arguments, "pattern"),
                                            stringArgument(arguments, "path", QDir::homePath()),
                                            stringArgument(arguments, "include"));
         })},
        {.declaration = declareTool(
             "glob_find",
             "Find files by name pattern, for example: **/*.swift. Use this to locate files anywhere in a "
             "folder.",
             {{"pattern", string, required, "Pattern to match file names, for example: **/*.md or *.jpg"},
              {"path", string, optional,
               "Absolute path of the folder to search in. Defaults to the user's home folder."}}),
         .handler = offMain([](const ToolArguments &arguments) {
             return SearchTools::globFind(stringArgument(arguments, "pattern"),
                                          stringArgument(arguments, "path", QDir::homePath()));
         })},
        {.declaration = declareTool(
             "edit_file",
             "Replace text inside an existing file. Provide a unique piece of text to find and the new text. "
             "The user will be asked to approve this before it happens.",
             {{"file_path", string, required, "Absolute path of the file to edit."},
              {"old_string", string, required,
               "The exact text to find. Include surrounding lines to make it unique."},
              {"new_string", string, required, "The text to replace it with."},
              {"replace_all", boolean, optional, "If true, replace every occurrence of old_string."}}),
         .handler = offMain(editFile),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"edit the file at "_s + stringArgument(arguments, "file_path", u"an unknown file"_s);
         },
         .purpose = u"edit files"_s,
         .approval = ApprovalRule::unlessAlwaysAllowed},
        {.declaration = declareTool(
             "todo_list",
             "Keep a running list of tasks you are working on, for multi-step jobs. Call this with the "
             "complete updated list whenever tasks change.",
             {{"items", stringArray, required, "The complete ordered list of remaining tasks."}}),
         .handler = updateTodos},
        {.declaration = declareTool(
             "task",
             "Launch a subagent to work on one focused piece of work. Use this to delegate research, "
             "implementation, or verification to a specialist agent, then combine their report with your own "
             "work. Subagents run one at a time and return their final report as the result.",
             {{"description", string, required,
               "Detailed instructions for the subagent: what to investigate, build, or verify, and what "
               "format to return the result in."},
              {"subagent", string, optional,
               "The type of subagent to launch: researcher (investigate and report), implementer (build or "
               "modify), verifier (check correctness), or general. Defaults to general."}}),
         .road = ToolRoad::subagent},
    };
}

} // namespace morvane
