#include "EngineProcesses.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <unistd.h>

namespace morvane {
namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

pid_t parentOf(pid_t process)
{
    const QByteArray stat = contentOf(QString("/proc/%1/stat").arg(process));
    return stat.mid(stat.lastIndexOf(')') + 2).split(' ').value(1).toInt();
}

bool isOfOurs(pid_t process)
{
    for (pid_t each = process; each > 1; each = parentOf(each))
        if (each == ::getpid())
            return true;
    return false;
}

} // namespace

QList<pid_t> pageProcesses()
{
    QList<pid_t> found;
    const QStringList entries = QDir("/proc").entryList(QDir::Dirs);
    for (const QString &entry : entries)
        if (const pid_t process = entry.toInt();
            process > 0 && isOfOurs(process) &&
            contentOf(QString("/proc/%1/cmdline").arg(entry)).contains("--type=renderer"))
            found.append(process);
    return found;
}

} // namespace morvane
