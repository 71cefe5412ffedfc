#pragma once

#include "providers/Endpoints.h"
#include "update/ProgramVersion.h"
#include "update/UpdateHost.h"

#include <QString>
#include <QStringList>

namespace morvane {

/// What tells this build from others, and what of the world beyond Morvane's own folders its parts reach for
/// by themselves. The one thing that a program is linked with and not handed: the tests of the whole program
/// link another.
struct OutsideWorld {
    ProgramVersion version;
    Endpoints endpoints;
    /// Where the runtime of local models is downloaded from: an origin, without a slash at the end.
    QString runtimeSite;
    /// Where its program may lie, in the order in which it is looked for.
    QStringList runtimePrograms;
    UpdateHost updates;
};

/// `dataFolder` is Morvane's own.
OutsideWorld outsideWorld(const QString &dataFolder);

} // namespace morvane
