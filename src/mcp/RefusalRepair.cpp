#include "mcp/RefusalRepair.h"

#include "base/Json.h"
#include "mcp/HttpNames.h"
#include "mcp/JsonRpc.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QByteArrayView ownVersion = "Morvane/1.2";
constexpr QByteArrayView protocolDate = "2025-03-26";

bool namesProtocolVersion(const boost::json::object &answer)
{
    const boost::json::object *const error = objectMember(answer, "error");
    return error && stringMember(*error, "message")
                        .value_or(QString())
                        .contains("protocol version"_L1, Qt::CaseInsensitive);
}

} // namespace

RefusalRepair::Repair RefusalRepair::repair(const HttpRequest &request, bool isHandshake, int status,
                                            const std::optional<boost::json::object> &answer)
{
    if (answer && usableID(*answer))
        return Repair::none;
    if (isHandshake && request.headers.contains(sessionHeader) && (status == 400 || status == 404))
        return Repair::newSession;
    const bool sentOwn = request.headers.value(protocolVersionHeader) == ownVersion.toByteArray();
    if (status == 400 && sentOwn && answer && namesProtocolVersion(*answer)) {
        m_sendsDate = true;
        return Repair::date;
    }
    return Repair::none;
}

QByteArray RefusalRepair::protocolVersion() const
{
    return (m_sendsDate ? protocolDate : ownVersion).toByteArray();
}

} // namespace morvane
