#include "base/DataFolders.h"

#include <QDir>

namespace morvane {

namespace {

/// The folder that an XDG variable names. QStandardPaths would also take a relative path, which the rules
/// say to ignore.
QString baseFolder(const char *variable, const QString &defaultBelowHome)
{
    const QString folder = qEnvironmentVariable(variable);
    return QDir::isAbsolutePath(folder) ? folder : QDir::homePath() + u'/' + defaultBelowHome;
}

} // namespace

QString dataFolder()
{
    return baseFolder("XDG_DATA_HOME", QStringLiteral(".local/share")) + QStringLiteral("/Morvane");
}

QString settingsFile()
{
    return baseFolder("XDG_CONFIG_HOME", QStringLiteral(".config")) + QStringLiteral("/Morvane/Morvane.conf");
}

} // namespace morvane
