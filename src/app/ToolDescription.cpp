#include "app/ToolDescription.h"

#include "base/Text.h"
#include "tools/BuiltinTools.h"
#include "tools/ToolArguments.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Arguments = boost::json::object;

/// Characters of a typed text or a query that are quoted.
constexpr qsizetype quoteLimit = 60;

QString quoted(const Arguments &arguments, std::string_view name)
{
    return u'"' + firstCharacters(stringArgument(arguments, name), quoteLimit) + u'"';
}

QString integer(const Arguments &arguments, std::string_view name)
{
    return QString::number(intArgument(arguments, name).value_or(0));
}

QString element(const Arguments &arguments, std::string_view name)
{
    return u"element ["_s + integer(arguments, name) + u']';
}

QString browserWork(const Arguments &)
{
    return u"work in the Morvane browser"_s;
}

using Phrase = QString (*)(const Arguments &);

const QHash<QString, Phrase> &phrases()
{
    static const QHash<QString, Phrase> table{
        {u"run_shell_command"_s,
         [](const Arguments &a) -> QString {
             return u"run the command: "_s + stringArgument(a, "command", u"an unknown command"_s);
         }},
        {u"write_file"_s,
         [](const Arguments &a) -> QString {
             return u"write a file at "_s + stringArgument(a, "path", u"an unknown location"_s);
         }},
        {u"edit_file"_s,
         [](const Arguments &a) -> QString {
             return u"edit the file at "_s + stringArgument(a, "file_path", u"an unknown file"_s);
         }},
        {u"click_at"_s,
         [](const Arguments &a) -> QString {
             return u"click at ("_s + integer(a, "x") + u", "_s + integer(a, "y") + u')';
         }},
        {u"ax_click"_s,
         [](const Arguments &a) -> QString {
             return u"click "_s + element(a, "index") + u" from the last screen capture"_s;
         }},
        {u"ax_type"_s,
         [](const Arguments &a) -> QString {
             return u"type "_s + quoted(a, "text") + u" into "_s + element(a, "index");
         }},
        {u"type_text"_s,
         [](const Arguments &a) -> QString {
             return u"type "_s + quoted(a, "text") + u" into the focused app"_s;
         }},
        {u"press_key"_s,
         [](const Arguments &a) -> QString { return u"press "_s + stringArgument(a, "key"); }},
        {u"capture_screen"_s, [](const Arguments &) -> QString { return u"look at the screen"_s; }},
        {u"open_url"_s, [](const Arguments &a) -> QString { return u"open "_s + stringArgument(a, "url"); }},
        {u"web_search"_s,
         [](const Arguments &a) -> QString { return u"search the web for "_s + quoted(a, "query"); }},
        {u"browser_open"_s,
         [](const Arguments &a) -> QString {
             return u"open "_s + stringArgument(a, "url") + u" in the Morvane browser"_s;
         }},
        {u"browser_click"_s,
         [](const Arguments &a) -> QString {
             return u"click "_s + element(a, "number") + u" in the Morvane browser"_s;
         }},
        {u"browser_type"_s,
         [](const Arguments &a) -> QString {
             return u"type "_s + quoted(a, "text") + u" in the Morvane browser"_s;
         }},
        {u"browser_read"_s, browserWork},
        {u"browser_back"_s, browserWork},
        {u"browser_scroll"_s, browserWork},
    };
    return table;
}

} // namespace

QString describeTool(const QString &name)
{
    if (name == "write_file"_L1)
        return u"write files (write_file)"_s;
    if (name == "edit_file"_L1)
        return u"edit files (edit_file)"_s;
    return u"use the "_s + name + u" tool"_s;
}

QString describe(const AIToolCall &call)
{
    const Phrase phraseOf = phrases().value(call.name);
    QString phrase = phraseOf ? phraseOf(call.arguments.get()) : describeTool(call.name);
    if (BuiltinTools::isDestructive(call))
        phrase += u". Warning: this is a destructive action that may delete data or be hard to undo"_s;
    return phrase;
}

} // namespace morvane
