// The world of the program that the tests start as "morvane-on-loopback": what the real one reaches for on
// the network lies where the test says, and nothing that is installed on this computer is found.

#include "outside/OutsideWorld.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// What a test has written beside the program, so that two copies of it are two builds.
qint64 buildNumber()
{
    QFile file(QFileInfo(u"/proc/self/exe"_s).symLinkTarget() + u".build"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toLongLong() : MORVANE_BUILD_NUMBER;
}

} // namespace

OutsideWorld outsideWorld(const QString &dataFolder)
{
    OutsideWorld world;
    world.version = {QStringLiteral(MORVANE_VERSION), buildNumber()};
    world.updates.origin = qEnvironmentVariable("MORVANE_TEST_UPDATE_ORIGIN");
    world.updates.usualOrigin = world.updates.origin;
    world.endpoints.ollama = qEnvironmentVariable("MORVANE_TEST_RUNTIME_SERVER");
    world.runtimeSite = qEnvironmentVariable("MORVANE_TEST_RUNTIME_SITE");
    world.runtimePrograms = {dataFolder + u"/ollama"_s, QDir::homePath() + u"/.local/bin/ollama"_s};
    return world;
}

} // namespace morvane
