#include "outside/OutsideWorld.h"

#include "localmodel/RuntimeProgram.h"
#include "localmodel/RuntimeSite.h"
#include "outside/UpdateOrigin.h"

namespace morvane {

OutsideWorld outsideWorld(const QString &dataFolder)
{
    return {{QStringLiteral(MORVANE_VERSION), MORVANE_BUILD_NUMBER},
            {},
            QString::fromUtf16(runtimeSite),
            binaryCandidates(dataFolder),
            {QString::fromUtf16(updateOrigin), QString::fromUtf16(usualUpdateOrigin),
             QByteArray::fromHex(updatePublicKey)}};
}

} // namespace morvane
