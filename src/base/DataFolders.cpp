#include "base/DataFolders.h"

#include <QDir>

using namespace Qt::StringLiterals;

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
    return baseFolder("XDG_DATA_HOME", u".local/share"_s) + u"/Morvane"_s;
}

QString settingsFile()
{
    return baseFolder("XDG_CONFIG_HOME", u".config"_s) + u"/Morvane/Morvane.conf"_s;
}

} // namespace morvane
