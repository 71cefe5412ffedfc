#include "tools/ToolTable.h"

#include <initializer_list>

namespace morvane {
namespace {

enum class Kind { string, integer, number, boolean, stringArray };
enum class Presence { required, optional };

struct Parameter {
    const char *name;
    Kind kind;
    Presence presence;
    const char *description = nullptr; ///< Left out of the schema when absent.
};

const char *schemaType(Kind kind)
{
    switch (kind) {
    case Kind::string:
        return "string";
    case Kind::integer:
        return "integer";
    case Kind::number:
        return "number";
    case Kind::boolean:
        return "boolean";
    case Kind::stringArray:
        return "array";
    }
    return "string";
}

boost::json::object propertySchema(const Parameter &parameter)
{
    boost::json::object schema{{"type", schemaType(parameter.kind)}};
    if (parameter.description)
        schema.emplace("description", parameter.description);
    if (parameter.kind == Kind::stringArray)
        schema.emplace("items", boost::json::object{{"type", "string"}});
    return schema;
}

AITool tool(const char *name, const char *description, std::initializer_list<Parameter> parameters = {})
{
    boost::json::object properties;
    boost::json::array requiredNames;
    for (const Parameter &parameter : parameters) {
        properties.emplace(parameter.name, propertySchema(parameter));
        if (parameter.presence == Presence::required)
            requiredNames.emplace_back(parameter.name);
    }
    return {QString::fromUtf8(name), QString::fromUtf8(description),
            boost::json::object{{"type", "object"},
                                {"properties", std::move(properties)},
                                {"required", std::move(requiredNames)}}};
}

QList<AITool> declarations()
{
    using enum Kind;
    using enum Presence;
    return {
        tool("get_current_datetime",
             "Get the current date and time. Use this whenever the user asks what day, date, or time it is."),
        tool("calculate",
             "Evaluate a simple arithmetic expression, for example '3 * (12 - 4)' or '100 / 8'. Use this for "
             "math problems.",
             {{"expression", string, required,
               "Arithmetic expression using numbers and the operators +, -, *, /, (, ) and a decimal "
               "point."}}),
        tool("list_directory",
             "List the files and folders in a directory. Use this to explore the computer, find files, or "
             "see what is in a folder.",
             {{"path", string, required,
               "Absolute path of the directory to list, for example /Users/yourname/Documents."}}),
        tool("read_file",
             "Read the text content of a file on this computer. Use this to view documents, scripts, or "
             "settings files.",
             {{"path", string, required, "Absolute path of the file to read."}}),
        tool("write_file",
             "Create or overwrite a text file on this computer. The user will be asked to approve this "
             "before it happens.",
             {{"path", string, required, "Absolute path of the file to create or overwrite."},
              {"content", string, required, "The full text content to write to the file."}}),
        tool("run_shell_command",
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
        tool("web_search",
             "Search the web for current information and return a short summary of the top results. Use this "
             "for news, facts, prices, or anything that changes often.",
             {{"query", string, required, "The search query, for example: latest macOS version"}}),
        tool("web_fetch",
             "Fetch and read the text content of a web page. Use this to read articles, documentation, or "
             "any URL.",
             {{"url", string, required,
               "The full web address, for example: https://www.example.com/news/article.html"}}),
        tool("grep_search",
             "Search file contents for a pattern. Returns matching files, line numbers, and lines. Use this "
             "to find where something is used in code or documents.",
             {{"pattern", string, required,
               "Regular expression to search for, for example: func send or TODO"},
              {"path", string, optional,
               "Absolute path of the folder or file to search. Defaults to the user's home folder."},
              {"include", string, optional,
               "Optional file-name pattern to limit the search, for example: *.swift or *.txt"}}),
        tool("glob_find",
             "Find files by name pattern, for example: **/*.swift. Use this to locate files anywhere in a "
             "folder.",
             {{"pattern", string, required, "Pattern to match file names, for example: **/*.md or *.jpg"},
              {"path", string, optional,
               "Absolute path of the folder to search in. Defaults to the user's home folder."}}),
        tool("edit_file",
             "Replace text inside an existing file. Provide a unique piece of text to find and the new text. "
             "The user will be asked to approve this before it happens.",
             {{"file_path", string, required, "Absolute path of the file to edit."},
              {"old_string", string, required,
               "The exact text to find. Include surrounding lines to make it unique."},
              {"new_string", string, required, "The text to replace it with."},
              {"replace_all", boolean, optional, "If true, replace every occurrence of old_string."}}),
        tool("todo_list",
             "Keep a running list of tasks you are working on, for multi-step jobs. Call this with the "
             "complete updated list whenever tasks change.",
             {{"items", stringArray, required, "The complete ordered list of remaining tasks."}}),
        tool("task",
             "Launch a subagent to work on one focused piece of work. Use this to delegate research, "
             "implementation, or verification to a specialist agent, then combine their report with your own "
             "work. Subagents run one at a time and return their final report as the result.",
             {{"description", string, required,
               "Detailed instructions for the subagent: what to investigate, build, or verify, and what "
               "format to return the result in."},
              {"subagent", string, optional,
               "The type of subagent to launch: researcher (investigate and report), implementer (build or "
               "modify), verifier (check correctness), or general. Defaults to general."}}),
        tool(
            "open_url",
            "Open a website in the user's web browser. Use this whenever the user asks you to open a "
            "website, a YouTube video or search, or visit any web page. You can do this directly on their "
            "Mac — never tell them to open it themselves.",
            {{"url", string, required,
              "The full web address, for example: https://www.youtube.com/results?search_query=piano+lesson"},
             {"application", string, optional,
              "Optional. The browser app to use, for example: Google Chrome. Leave empty to use the default "
              "browser."}}),
        tool("open_application",
             "Launch an application on the user's Mac by name, for example: Google Chrome, Safari, Notes, or "
             "Finder. Use this to start programs for the user.",
             {{"name", string, required, "The name of the application to open."}}),
        tool("capture_screen", "Take a screenshot of the screen and return the visible text with click "
                               "coordinates, plus a numbered 'Clickable elements' list (buttons, links, text "
                               "fields) read from the macOS Accessibility API with exact coordinates. Prefer "
                               "ax_click with an element number over clicking OCR coordinates."),
        tool("browser_open",
             "Open a web page in the Morvane browser — a built-in browser window the user can watch while "
             "you work. Prefer this over opening the user's own browser for web tasks. After opening, use "
             "browser_read to see the page and its numbered elements.",
             {{"url", string, required,
               "The web address to open, for example https://en.wikipedia.org/wiki/Screen_reader"}}),
        tool("browser_read", "Read the current page in the Morvane browser: the page text plus a numbered "
                             "list of clickable elements (links, buttons, fields). Use the numbers with "
                             "browser_click and browser_type. Run this after every page change."),
        tool("browser_click",
             "Click a numbered element from the last browser_read in the Morvane browser — precise, no "
             "screen coordinates needed.",
             {{"number", integer, required,
               "The number in brackets from the last browser_read element list."}}),
        tool(
            "browser_type",
            "Type text into a numbered field from the last browser_read in the Morvane browser. Set submit "
            "to true to press Enter after typing (for search boxes and forms).",
            {{"number", integer, required, "The number in brackets from the last browser_read element list."},
             {"text", string, required, "The text to type into the field."},
             {"submit", boolean, optional,
              "Press Enter after typing, for example to run a search. Defaults to false."}}),
        tool("browser_scroll", "Scroll the page in the Morvane browser. Use direction up or down.",
             {{"direction", string, required, "up or down."}}),
        tool("browser_back", "Go back one page in the Morvane browser."),
        tool("ask_user",
             "Ask the user a question when you need information or a choice to continue. The question and "
             "any suggested answers are shown to the user as tappable buttons; their reply is returned here. "
             "Use this instead of guessing. Keep the question short and specific.",
             {{"question", string, required, "The question to ask the user."},
              {"options", stringArray, optional,
               "Up to 6 suggested answers the user can tap. Omit for an open question."}}),
        tool("ax_click",
             "Click an element from the last capture_screen's 'Clickable elements' list by its number. "
             "Presses the element directly through the macOS Accessibility API, which is far more reliable "
             "than clicking raw coordinates. Run capture_screen first.",
             {{"index", integer, required,
               "The number in brackets from capture_screen's 'Clickable elements' list, for example 3 for "
               "[3]."}}),
        tool("ax_type",
             "Type text into a text field from the last capture_screen's 'Clickable elements' list by its "
             "number. Sets the field's value directly when possible, otherwise clicks the field and types. "
             "Run capture_screen first.",
             {{"index", integer, required,
               "The number in brackets from capture_screen's 'Clickable elements' list."},
              {"text", string, required, "The text to put into the field."}}),
        tool("type_text",
             "Type text into whatever is currently focused on the screen, such as a search box in a browser. "
             "Use this together with capture_screen and click_at to interact with web pages and apps.",
             {{"text", string, required, "The exact text to type."}}),
        tool("press_key",
             "Press a key, optionally with modifiers written as combinations like \"command+v\", "
             "\"shift+command+return\", or \"command+option+right\". Single keys: return, enter, tab, space, "
             "escape, delete, backspace, up, down, left, right, home, end, pageup, pagedown, and letters. "
             "Use this to submit forms, move between fields, copy or paste, or dismiss dialogs.",
             {{"key", string, required,
               "The key or key combination to press, for example: return, command+c, or command+shift+4."}}),
        tool("click_at",
             "Click the mouse at screen coordinates. capture_screen returns coordinates with each piece of "
             "on-screen text, so click there to click on that text, a button, or a link.",
             {{"x", integer, required, "Horizontal position in points from the left of the screen."},
              {"y", integer, required, "Vertical position in points from the top of the screen."}}),
        tool("paste_text",
             "Paste text into whatever is focused by copying it to the clipboard and pressing Command+V. "
             "More reliable than type_text for long text, passwords, or text with special characters.",
             {{"text", string, required, "The exact text to paste."}}),
        tool("clipboard_read", "Read the current clipboard text."),
        tool("clipboard_set",
             "Replace the clipboard contents with the given text. Combined with press_key command+v this can "
             "paste into an app, but prefer the paste_text tool for that.",
             {{"text", string, required, "The text to copy to the clipboard."}}),
        tool("mouse_move",
             "Move the mouse cursor to screen coordinates without clicking. Coordinates come from "
             "capture_screen.",
             {{"x", integer, required}, {"y", integer, required}}),
        tool("mouse_double_click",
             "Double-click at screen coordinates, for example to open a file or folder on the desktop or in "
             "Finder.",
             {{"x", integer, required}, {"y", integer, required}}),
        tool("mouse_right_click", "Right-click at screen coordinates to open a context menu.",
             {{"x", integer, required}, {"y", integer, required}}),
        tool("mouse_drag",
             "Drag the mouse from one point to another while holding the left button, for example to move a "
             "window, select text, or drag a slider. Coordinates come from capture_screen.",
             {{"from_x", integer, required},
              {"from_y", integer, required},
              {"to_x", integer, required},
              {"to_y", integer, required}}),
        tool("mouse_scroll",
             "Scroll the mouse wheel. Use a positive amount to scroll up and a negative amount to scroll "
             "down a page.",
             {{"amount", integer, required,
               "How far to scroll: positive scrolls up, negative scrolls down. For example 3 or -5."}}),
        tool("get_frontmost_app", "Report the name of the app that currently has focus."),
        tool("activate_app",
             "Bring a running app to the front, or launch it if it is not running. Use this before clicking "
             "or typing so actions land in the right window.",
             {{"name", string, required,
               "The name of the application, for example: Google Chrome or Safari."}}),
        tool("set_reminder",
             "Schedule a reminder for the user. It will fire later with a sound and a notification, even if "
             "the app is not open. Use this whenever the user asks to be reminded of something.",
             {{"message", string, required, "What to remind the user about, for example: time to stretch."},
              {"minutes", number, required,
               "How many minutes from now the reminder should fire. Fractions are allowed, for example 0.5 "
               "for 30 seconds."}}),
        tool("list_reminders", "List the reminders that are currently scheduled."),
        tool("cancel_reminder", "Cancel a scheduled reminder by its id. Use list_reminders to see the ids.",
             {{"id", string, required, "The id of the reminder to cancel, or any unique prefix of it."}}),
    };
}

} // namespace

const QList<AITool> &toolTable()
{
    static const QList<AITool> table = declarations();
    return table;
}

} // namespace morvane
