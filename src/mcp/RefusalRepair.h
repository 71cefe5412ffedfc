#pragma once

#include "net/HttpRequest.h"

#include <QByteArray>
#include <boost/json/object.hpp>
#include <optional>

namespace morvane {

/// Two refusals of strict HTTP servers that a second try mends. Such a server has not carried out what it
/// refused, so nothing happens twice. Every other answer is left as it is.
///
/// - The header `MCP-Protocol-Version` holds this program's name; a server that takes nothing but a
/// protocol's
///   date there says so (400, and an error that names the protocol version): the date is sent from then on.
/// - A handshake within a session that the server still has, or no longer has, is refused (400 or 404): it is
///   sent again without the session.
class RefusalRepair {
public:
    enum class Repair {
        none,
        date,      ///< Send it again with the date.
        newSession ///< Forget the session and send it again.
    };

    /// What mends this answer to `request`, if anything: an answer that answers no request, or none at all.
    Repair repair(const HttpRequest &request, bool isHandshake, int status,
                  const std::optional<boost::json::object> &answer);

    /// What to send as `MCP-Protocol-Version`.
    QByteArray protocolVersion() const;

private:
    bool m_sendsDate = false;
};

} // namespace morvane
