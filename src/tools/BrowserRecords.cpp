#include "tools/ToolRecords.h"

#include "tools/BrowserPort.h"
#include "tools/ToolArguments.h"
#include "tools/ToolPhrases.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString browserWork(const ToolArguments &)
{
    return u"work in the Morvane browser"_s;
}

qint64 elementNumber(const SharedJsonObject &arguments)
{
    return intArgument(arguments.get(), "number").value_or(0);
}

} // namespace

QList<ToolRecord> browserRecords()
{
    using enum ParameterKind;
    using enum Presence;
    return {
        {.declaration = declareTool(
             "browser_open",
             "Open a web page in the Morvane browser — a built-in browser window the user can watch while "
             "you work. Prefer this over opening the user's own browser for web tasks. After opening, use "
             "browser_read to see the page and its numbered elements.",
             {{"url", string, required,
               "The web address to open, for example https://en.wikipedia.org/wiki/Screen_reader"}}),
         .handler =
             [](ToolServices services, SharedJsonObject arguments) {
                 return services.browser.browserOpen(stringArgument(arguments.get(), "url"));
             },
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"open "_s + stringArgument(arguments, "url") + u" in the Morvane browser"_s;
         }},
        {.declaration = declareTool(
             "browser_read", "Read the current page in the Morvane browser: the page text plus a numbered "
                             "list of clickable elements (links, buttons, fields). Use the numbers with "
                             "browser_click and browser_type. Run this after every page change."),
         .handler = [](ToolServices services, SharedJsonObject) { return services.browser.browserRead(); },
         .phrase = browserWork},
        {.declaration = declareTool(
             "browser_click",
             "Click a numbered element from the last browser_read in the Morvane browser — precise, no "
             "screen coordinates needed.",
             {{"number", integer, required,
               "The number in brackets from the last browser_read element list."}}),
         .handler =
             [](ToolServices services, SharedJsonObject arguments) {
                 return services.browser.browserClick(elementNumber(arguments));
             },
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"click "_s + elementArgument(arguments, "number") + u" in the Morvane browser"_s;
         }},
        {.declaration = declareTool(
             "browser_type",
             "Type text into a numbered field from the last browser_read in the Morvane browser. Set submit "
             "to true to press Enter after typing (for search boxes and forms).",
             {{"number", integer, required,
               "The number in brackets from the last browser_read element list."},
              {"text", string, required, "The text to type into the field."},
              {"submit", boolean, optional,
               "Press Enter after typing, for example to run a search. Defaults to false."}}),
         .handler =
             [](ToolServices services, SharedJsonObject arguments) {
                 return services.browser.browserType(elementNumber(arguments),
                                                     stringArgument(arguments.get(), "text"),
                                                     booleanArgument(arguments.get(), "submit"));
             },
         .phrase = [](const ToolArguments &arguments) -> QString {
             return u"type "_s + quotedArgument(arguments, "text") + u" in the Morvane browser"_s;
         }},
        {.declaration = declareTool("browser_scroll",
                                    "Scroll the page in the Morvane browser. Use direction up or down.",
                                    {{"direction", string, required, "up or down."}}),
         .handler =
             [](ToolServices services, SharedJsonObject arguments) {
                 const QString direction = stringArgument(arguments.get(), "direction", u"down"_s);
                 return services.browser.browserScroll(direction.toLower() == "up"_L1 ? 1 : -1);
             },
         .phrase = browserWork},
        {.declaration = declareTool("browser_back", "Go back one page in the Morvane browser."),
         .handler = [](ToolServices services, SharedJsonObject) { return services.browser.browserBack(); },
         .phrase = browserWork},
    };
}

} // namespace morvane
