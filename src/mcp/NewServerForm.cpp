#include "mcp/NewServerForm.h"

#include "base/Text.h"
#include "base/Uuid.h"

using namespace Qt::StringLiterals;

namespace morvane {

bool NewServerForm::isValid() const
{
    if (trimmed(name).isEmpty())
        return false;
    if (transport == "stdio"_L1)
        return !trimmed(command).isEmpty();
    const QString address = trimmed(url);
    return address.startsWith("http://"_L1) || address.startsWith("https://"_L1);
}

MCPServerConfig NewServerForm::server() const
{
    const QStringList pieces = transport == "stdio"_L1 ? args.split(u' ', Qt::SkipEmptyParts) : QStringList();
    return {newUuid(), trimmed(name), transport, trimmed(command), pieces, trimmed(url), true};
}

} // namespace morvane
