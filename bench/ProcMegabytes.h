#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace morvane {

/// A line of a /proc file such as "Pss:  60000 kB", in millions of bytes; the process
/// is an id or "self". 0 where there is none.
inline double procMegabytes(const QString &process, const char *file, const QByteArray &name)
{
    QFile proc(QStringLiteral("/proc/%1/%2").arg(process, QLatin1String(file)));
    if (!proc.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : proc.readAll().split('\n'))
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).trimmed().split(' ').first().toDouble() * 1024 / 1e6;
    return 0;
}

} // namespace morvane
