#pragma once

#include "providers/Endpoints.h"

#include <QString>
#include <QStringList>

namespace morvane {

/// What of the world beyond Morvane's own folders its parts for models reach for by themselves. The one thing
/// that a program is linked with and not handed: the tests of the whole program link another.
struct OutsideWorld {
    Endpoints endpoints;
    /// Where the runtime of local models is downloaded from: an origin, without a slash at the end.
    QString runtimeSite;
    /// Where its program may lie, in the order in which it is looked for.
    QStringList runtimePrograms;
};

/// `dataFolder` is Morvane's own.
OutsideWorld outsideWorld(const QString &dataFolder);

} // namespace morvane
