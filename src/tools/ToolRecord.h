#pragma once

#include "async/OffMain.h"
#include "base/SharedJsonObject.h"
#include "model/AITool.h"
#include "model/ToolResult.h"
#include "tools/ToolArguments.h"
#include "tools/ToolDescription.h"
#include "tools/ToolServices.h"

#include <QString>
#include <functional>
#include <initializer_list>

namespace morvane {

/// Who carries out the calls of a tool.
enum class ToolRoad {
    builtIn,  ///< A handler of ours.
    server,   ///< A tool server.
    question, ///< The agent loop asks the user.
    subagent, ///< The agent loop runs a subagent.
};

/// When the calls of a tool wait for the user.
enum class ApprovalRule { never, whenDestructive, unlessAlwaysAllowed };

/// Starts the work of one call; called on the main thread.
using ToolHandler = std::function<Task<ToolResult>(ToolServices services, SharedJsonObject arguments)>;

/// All that there is to know of one built-in tool. A tool is added by writing one of these.
struct ToolRecord {
    AITool declaration; ///< As the model sees it.
    /// Empty for what no handler carries out; calls are then answered like those of an unknown tool.
    ToolHandler handler = {};
    /// What a call does, in words that go on after "Morvane wants to …"; null for "use the {name} tool".
    QString (*phrase)(const ToolArguments &) = nullptr;
    PhraseStyle phraseStyle = PhraseStyle::prose;
    /// What all calls do, said where the user takes back an "always allow"; empty for "use the {name} tool".
    QString purpose = {};
    ApprovalRule approval = ApprovalRule::never;
    /// Whether a call may delete data or is hard to undo; null for never. Any thread.
    bool (*destructive)(const ToolArguments &) = nullptr;
    ToolRoad road = ToolRoad::builtIn;
};

enum class ParameterKind { string, integer, number, boolean, stringArray };
enum class Presence { required, optional };

struct ToolParameter {
    const char *name;
    ParameterKind kind;
    Presence presence;
    const char *description = nullptr; ///< Left out of the schema when absent.
};

/// The declaration of a tool whose parameters are described by a schema of our own.
AITool declareTool(const char *name, const char *description,
                   std::initializer_list<ToolParameter> parameters = {});

/// A handler that computes the answer from the arguments on a background thread.
template <class Work> ToolHandler offMain(Work work)
{
    return [work](ToolServices, SharedJsonObject arguments) {
        return runOffMain(
            [work, arguments = std::move(arguments)]() -> ToolResult { return work(arguments.get()); });
    };
}

} // namespace morvane
