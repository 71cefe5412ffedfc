#pragma once

#include "mcp/MCPTool.h"
#include "model/AITool.h"

#include <QList>
#include <QString>

namespace morvane {

/// The text in lower case, with everything but letters and numbers of any script replaced by "_", one for
/// each character.
QString sanitize(const QString &text);

/// The name under which the model calls a tool of a server.
QString exposedName(const QString &server, const QString &tool);

/// A tool of a server with what the model sees of it.
struct ExposedTool {
    QString name;    ///< The server's own.
    AITool declared; ///< Under its exposed name.
};

/// All tools of a server, in order. Takes time for servers with many or with long names; any thread.
QList<ExposedTool> exposedTools(const QString &server, const QList<MCPTool> &tools);

} // namespace morvane
