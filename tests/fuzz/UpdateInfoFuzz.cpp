#include "base/Json.h"
#include "update/UpdatePolicy.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

/// Whatever a host answers, a manifest that is read is one that can be shown, compared and asked for.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const auto update = UpdateInfo::fromJson(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (!update)
        return 0;
    const QString scheme = update->url().scheme();
    if (update->version.size() > 100 || update->version.contains(u'\n') || !update->url().isValid() ||
        !update->cacheBustedDownloadURL().isValid() || (scheme != "https"_L1 && scheme != "http"_L1))
        std::abort();
    const ProgramVersion same{update->version, update->build};
    const ProgramVersion other{QString::fromUtf8(reinterpret_cast<const char *>(data), 4), 3};
    if (isOnOffer(*update, same) || (isUpdateRequired(*update, other) && !isOnOffer(*update, other)) ||
        (isNewer(update->version, other.version) && isNewer(other.version, update->version)))
        std::abort();
    return 0;
}
