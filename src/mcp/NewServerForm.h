#pragma once

#include "mcp/MCPServerConfig.h"

namespace morvane {

/// What a user types to add a tool server.
struct NewServerForm {
    QString name;
    QString transport = QStringLiteral("stdio"); ///< Or "http".
    QString command;
    QString args; ///< Separated by blanks; quotes mean nothing here.
    QString url;

    /// Whether there is enough to save.
    bool isValid() const;
    /// The server, switched on, under a new identifier.
    MCPServerConfig server() const;
};

} // namespace morvane
