#include "outside/OutsideWorld.h"

#include "localmodel/RuntimeProgram.h"
#include "localmodel/RuntimeSite.h"

namespace morvane {

OutsideWorld outsideWorld(const QString &dataFolder)
{
    return {{}, QString::fromUtf16(runtimeSite), binaryCandidates(dataFolder)};
}

} // namespace morvane
