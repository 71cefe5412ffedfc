#include "tools/ToolRecords.h"

#include "tools/ToolArguments.h"
#include "tools/ToolPhrases.h"
#include "tools/screen/ScreenTools.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A handler that asks the tools of the screen.
template <class Ask> ToolHandler screenTool(Ask ask)
{
    return [ask](ToolServices services, SharedJsonObject arguments) {
        return ask(services.screen, arguments.get());
    };
}

/// Whole numbers of any size; no screen is larger than what a point holds.
QPoint pointArgument(const ToolArguments &arguments, std::string_view x, std::string_view y)
{
    const auto coordinate = [&arguments](std::string_view name) {
        return int(std::clamp<qint64>(intArgument(arguments, name).value_or(0),
                                      std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    };
    return {coordinate(x), coordinate(y)};
}

} // namespace

QList<ToolRecord> openingRecords()
{
    using enum ParameterKind;
    using enum Presence;
    return {
        {.declaration = declareTool(
             "open_url",
             "Open a website in the user's web browser. Use this whenever the user asks you to open a "
             "website, a YouTube video or search, or visit any web page. You can do this directly on their "
             "Mac — never tell them to open it themselves.",
             {{"url", string, required,
               "The full web address, for example: "
               "https://www.youtube.com/results?search_query=piano+lesson"},
              {"application", string, optional,
               "Optional. The browser app to use, for example: Google Chrome. Leave empty to use the default "
               "browser."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.openURL(stringArgument(arguments, "url"),
                                   stringArgument(arguments, "application"));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"open "_s + stringArgument(arguments, "url");
         }},
        {.declaration = declareTool(
             "open_application",
             "Launch an application on the user's Mac by name, for example: Google Chrome, Safari, Notes, or "
             "Finder. Use this to start programs for the user.",
             {{"name", string, required, "The name of the application to open."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.openApplication(stringArgument(arguments, "name"));
         })},
        {.declaration = declareTool(
             "capture_screen", "Take a screenshot of the screen and return the visible text with click "
                               "coordinates, plus a numbered 'Clickable elements' list (buttons, links, text "
                               "fields) read from the macOS Accessibility API with exact coordinates. Prefer "
                               "ax_click with an element number over clicking OCR coordinates."),
         .handler =
             screenTool([](ScreenTools &screen, const ToolArguments &) { return screen.captureScreen(); }),
         .phrase = [](const ToolArguments &) -> QString { return u"look at the screen"_s; }},
    };
}

QList<ToolRecord> questionRecords()
{
    using enum ParameterKind;
    using enum Presence;
    return {
        {.declaration = declareTool(
             "ask_user",
             "Ask the user a question when you need information or a choice to continue. The question and "
             "any suggested answers are shown to the user as tappable buttons; their reply is returned here. "
             "Use this instead of guessing. Keep the question short and specific.",
             {{"question", string, required, "The question to ask the user."},
              {"options", stringArray, optional,
               "Up to 6 suggested answers the user can tap. Omit for an open question."}}),
         .road = ToolRoad::question},
    };
}

QList<ToolRecord> inputRecords()
{
    using enum ParameterKind;
    using enum Presence;
    return {
        {.declaration = declareTool(
             "ax_click",
             "Click an element from the last capture_screen's 'Clickable elements' list by its number. "
             "Presses the element directly through the macOS Accessibility API, which is far more reliable "
             "than clicking raw coordinates. Run capture_screen first.",
             {{"index", integer, required,
               "The number in brackets from capture_screen's 'Clickable elements' list, for example 3 for "
               "[3]."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.axClick(intArgument(arguments, "index").value_or(0));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"click "_s + elementArgument(arguments, "index") + u" from the last screen capture"_s;
         }},
        {.declaration = declareTool(
             "ax_type",
             "Type text into a text field from the last capture_screen's 'Clickable elements' list by its "
             "number. Sets the field's value directly when possible, otherwise clicks the field and types. "
             "Run capture_screen first.",
             {{"index", integer, required,
               "The number in brackets from capture_screen's 'Clickable elements' list."},
              {"text", string, required, "The text to put into the field."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.axType(intArgument(arguments, "index").value_or(0),
                                  stringArgument(arguments, "text"));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"type "_s + quotedArgument(arguments, "text") + u" into "_s +
                    elementArgument(arguments, "index");
         }},
        {.declaration = declareTool(
             "type_text",
             "Type text into whatever is currently focused on the screen, such as a search box in a browser. "
             "Use this together with capture_screen and click_at to interact with web pages and apps.",
             {{"text", string, required, "The exact text to type."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.typeText(stringArgument(arguments, "text"));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"type "_s + quotedArgument(arguments, "text") + u" into the focused app"_s;
         }},
        {.declaration = declareTool(
             "press_key",
             "Press a key, optionally with modifiers written as combinations like \"command+v\", "
             "\"shift+command+return\", or \"command+option+right\". Single keys: return, enter, tab, space, "
             "escape, delete, backspace, up, down, left, right, home, end, pageup, pagedown, and letters. "
             "Use this to submit forms, move between fields, copy or paste, or dismiss dialogs.",
             {{"key", string, required,
               "The key or key combination to press, for example: return, command+c, or command+shift+4."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.pressKey(stringArgument(arguments, "key"));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"press "_s + stringArgument(arguments, "key");
         }},
        {.declaration = declareTool(
             "click_at",
             "Click the mouse at screen coordinates. capture_screen returns coordinates with each piece of "
             "on-screen text, so click there to click on that text, a button, or a link.",
             {{"x", integer, required, "Horizontal position in points from the left of the screen."},
              {"y", integer, required, "Vertical position in points from the top of the screen."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.clickAt(pointArgument(arguments, "x", "y"));
         }),
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"click at ("_s + integerArgument(arguments, "x") + u", "_s +
                    integerArgument(arguments, "y") + u')';
         }},
        {.declaration = declareTool(
             "paste_text",
             "Paste text into whatever is focused by copying it to the clipboard and pressing Command+V. "
             "More reliable than type_text for long text, passwords, or text with special characters.",
             {{"text", string, required, "The exact text to paste."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.pasteText(stringArgument(arguments, "text"));
         })},
        {.declaration = declareTool("clipboard_read", "Read the current clipboard text."),
         .handler =
             screenTool([](ScreenTools &screen, const ToolArguments &) { return screen.clipboardRead(); })},
        {.declaration = declareTool(
             "clipboard_set",
             "Replace the clipboard contents with the given text. Combined with press_key command+v this can "
             "paste into an app, but prefer the paste_text tool for that.",
             {{"text", string, required, "The text to copy to the clipboard."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.clipboardSet(stringArgument(arguments, "text"));
         })},
        {.declaration = declareTool(
             "mouse_move",
             "Move the mouse cursor to screen coordinates without clicking. Coordinates come from "
             "capture_screen.",
             {{"x", integer, required}, {"y", integer, required}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.moveCursor(pointArgument(arguments, "x", "y"));
         })},
        {.declaration = declareTool(
             "mouse_double_click",
             "Double-click at screen coordinates, for example to open a file or folder on the desktop or in "
             "Finder.",
             {{"x", integer, required}, {"y", integer, required}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.mouseDoubleClick(pointArgument(arguments, "x", "y"));
         })},
        {.declaration =
             declareTool("mouse_right_click", "Right-click at screen coordinates to open a context menu.",
                         {{"x", integer, required}, {"y", integer, required}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.mouseRightClick(pointArgument(arguments, "x", "y"));
         })},
        {.declaration = declareTool(
             "mouse_drag",
             "Drag the mouse from one point to another while holding the left button, for example to move a "
             "window, select text, or drag a slider. Coordinates come from capture_screen.",
             {{"from_x", integer, required},
              {"from_y", integer, required},
              {"to_x", integer, required},
              {"to_y", integer, required}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.mouseDrag(pointArgument(arguments, "from_x", "from_y"),
                                     pointArgument(arguments, "to_x", "to_y"));
         })},
        {.declaration = declareTool(
             "mouse_scroll",
             "Scroll the mouse wheel. Use a positive amount to scroll up and a negative amount to scroll "
             "down a page.",
             {{"amount", integer, required,
               "How far to scroll: positive scrolls up, negative scrolls down. For example 3 or -5."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.mouseScroll(intArgument(arguments, "amount").value_or(1));
         })},
        {.declaration =
             declareTool("get_frontmost_app", "Report the name of the app that currently has focus."),
         .handler =
             screenTool([](ScreenTools &screen, const ToolArguments &) { return screen.frontmostApp(); })},
        {.declaration = declareTool(
             "activate_app",
             "Bring a running app to the front, or launch it if it is not running. Use this before clicking "
             "or typing so actions land in the right window.",
             {{"name", string, required,
               "The name of the application, for example: Google Chrome or Safari."}}),
         .handler = screenTool([](ScreenTools &screen, const ToolArguments &arguments) {
             return screen.activateApp(stringArgument(arguments, "name"));
         })},
    };
}

} // namespace morvane
