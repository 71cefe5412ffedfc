#pragma once

#include <QByteArray>
#include <QString>

namespace morvane {

// Paths as the tools take them from a model. Any thread.

/// The path with a leading "~" or "~name" replaced by that user's home folder; unchanged without one, and for
/// a user that does not exist. Nothing else is done to it: links stay, a relative path stays relative to the
/// current folder.
QString expandingTilde(const QString &path);

/// The path as the system takes it. Empty, so that every call fails with ENOENT, if it holds a NUL, which
/// would otherwise cut it off and name another file.
QByteArray nativePath(const QString &path);

} // namespace morvane
