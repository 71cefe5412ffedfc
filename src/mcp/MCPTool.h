#pragma once

#include "base/SharedJsonObject.h"

#include <QString>

namespace morvane {

/// A tool as its server lists it.
struct MCPTool {
    QString name;
    QString description; ///< May be empty.
    SharedJsonObject schema;

    bool operator==(const MCPTool &) const = default;
};

} // namespace morvane
