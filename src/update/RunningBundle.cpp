#include "update/RunningBundle.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace morvane {

RunningBundle RunningBundle::ofProgram(const QString &program)
{
    const QString place = u'/' + QString::fromLatin1(programPlace);
    const QString bundle = program.endsWith(place) ? program.chopped(place.size()) : QString();
    if (!bundle.endsWith(".app"_L1))
        return {{}, QFileInfo(program).path()};
    return {bundle, QFileInfo(bundle).path()};
}

} // namespace morvane
