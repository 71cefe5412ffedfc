#pragma once

#include <QString>

namespace morvane {

/// A file name that a site suggests, made one that can be offered: without folders, leading dots and what
/// ends or reorders a line, and not longer than file systems bear; never empty.
QString offeredFileName(const QString &suggested);

} // namespace morvane
