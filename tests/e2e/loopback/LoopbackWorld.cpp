// The world of the program that the tests start as "morvane-on-loopback": what the real one reaches for on
// the network lies where the test says, and nothing that is installed on this computer is found.

#include "outside/OutsideWorld.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace morvane {

OutsideWorld outsideWorld(const QString &dataFolder)
{
    OutsideWorld world;
    world.endpoints.ollama = qEnvironmentVariable("MORVANE_TEST_RUNTIME_SERVER");
    world.runtimeSite = qEnvironmentVariable("MORVANE_TEST_RUNTIME_SITE");
    world.runtimePrograms = {dataFolder + u"/ollama"_s, QDir::homePath() + u"/.local/bin/ollama"_s};
    return world;
}

} // namespace morvane
