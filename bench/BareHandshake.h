#pragma once

#include <QByteArray>

namespace morvane {

/// What both bare peers say first.
inline const QByteArray bareHandshake =
    R"({"jsonrpc":"2.0","id":0,"method":"initialize","params":{"protocolVersion":
"2025-03-26","capabilities":{},"clientInfo":{"name":"bare","version":"1"}}})";

} // namespace morvane
