#include "support/TemporaryHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <stdexcept>
#include <sys/stat.h>

namespace morvane {

TemporaryHome::TemporaryHome()
{
    if (!m_folder.isValid())
        throw std::runtime_error("no temporary folder");
    const QList<std::pair<QByteArray, QString>> variables{{"HOME", path()},
                                                          {"XDG_DATA_HOME", path(".local/share")},
                                                          {"XDG_CONFIG_HOME", path(".config")},
                                                          {"XDG_CACHE_HOME", path(".cache")}};
    for (const auto &[name, value] : variables) {
        m_environmentBefore.insert(name, qgetenv(name.constData()));
        qputenv(name.constData(), QFile::encodeName(value));
    }
}

TemporaryHome::~TemporaryHome()
{
    for (auto variable = m_environmentBefore.cbegin(); variable != m_environmentBefore.cend(); ++variable)
        if (variable.value().isNull())
            qunsetenv(variable.key().constData());
        else
            qputenv(variable.key().constData(), variable.value());
}

QString TemporaryHome::path(const QString &relative) const
{
    return relative.isEmpty() ? m_folder.path() : m_folder.filePath(relative);
}

QString TemporaryHome::write(const QString &relative, const QByteArray &content) const
{
    const QString target = path(relative);
    QFile file(target);
    if (!QDir().mkpath(QFileInfo(target).path()) || !file.open(QIODevice::WriteOnly) ||
        file.write(content) != content.size() || !file.flush())
        throw std::runtime_error("cannot write " + target.toStdString());
    return target;
}

QByteArray TemporaryHome::read(const QString &relative) const
{
    QFile file(path(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

unsigned permissionBits(const QString &path)
{
    struct stat status{};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & ALLPERMS : 0;
}

} // namespace morvane
