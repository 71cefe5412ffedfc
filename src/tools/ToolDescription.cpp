#include "tools/ToolDescription.h"

#include "tools/BuiltinTools.h"
#include "tools/ToolTable.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString useOf(const QString &name)
{
    return u"use the "_s + name + u" tool"_s;
}

} // namespace

ToolDescription describe(const AIToolCall &call)
{
    const ToolRecord *const record = findTool(call.name);
    const bool hasPhrase = record && record->phrase;
    ToolDescription description{hasPhrase ? record->phrase(call.arguments.get()) : useOf(call.name),
                                BuiltinTools::isDestructive(call)};
    if (description.destructive) {
        description.phrase +=
            u". Warning: this is a destructive action that may delete data or be hard to undo"_s;
    }
    return description;
}

PhraseStyle phraseStyle(const QString &name)
{
    const ToolRecord *const record = findTool(name);
    return record ? record->phraseStyle : PhraseStyle::prose;
}

QString describeTool(const QString &name)
{
    const ToolRecord *const record = findTool(name);
    return record && !record->purpose.isEmpty() ? record->purpose + u" ("_s + name + u')' : useOf(name);
}

} // namespace morvane
