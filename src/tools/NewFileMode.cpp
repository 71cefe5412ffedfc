#include "tools/NewFileMode.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace morvane {

unsigned newFileMode()
{
    constexpr unsigned readAndWrite = 0666;
    constexpr unsigned usualMask = 022;
    QFile status(u"/proc/self/status"_s);
    if (status.open(QIODevice::ReadOnly)) {
        const QList<QByteArray> lines = status.readAll().split('\n');
        for (const QByteArray &line : lines) {
            bool isNumber = false;
            const unsigned mask = line.mid(qstrlen("Umask:")).trimmed().toUInt(&isNumber, 8);
            if (line.startsWith("Umask:") && isNumber)
                return readAndWrite & ~mask;
        }
    }
    return readAndWrite & ~usualMask;
}

} // namespace morvane
