#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QTemporaryDir>

namespace morvane {

/// A home folder of a test's own: HOME and the XDG folders point into it as long as the object lives.
class TemporaryHome {
public:
    TemporaryHome();
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;

    /// The home folder, which exists, or a path below it, which need not.
    QString path(const QString &relative = {}) const;

    /// Writes a file below the home folder, creating the folders above it, and gives its path.
    QString write(const QString &relative, const QByteArray &content) const;

    /// The bytes of a file below the home folder; null if it cannot be read.
    QByteArray read(const QString &relative) const;

private:
    QTemporaryDir m_folder;
    QHash<QByteArray, QByteArray> m_environmentBefore;
};

/// Permission bits of a file or folder, 0 if there is none.
unsigned permissionBits(const QString &path);

} // namespace morvane
