#pragma once

#include "async/OffMain.h"
#include "base/SharedJsonObject.h"

#include <QHash>
#include <QString>
#include <functional>

namespace morvane {

/// Starts the work of one tool; called on the main thread.
using ToolHandler = std::function<Task<QString>(SharedJsonObject arguments)>;

/// The tools that can be carried out, by the name that the model calls.
using ToolHandlers = QHash<QString, ToolHandler>;

/// A handler that computes the answer from the arguments on a background thread.
template <class Work> ToolHandler offMain(Work work)
{
    return [work](SharedJsonObject arguments) {
        return runOffMain([work, arguments = std::move(arguments)] { return work(arguments.get()); });
    };
}

} // namespace morvane
