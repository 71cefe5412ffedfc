#include "platform/linux/LinuxMachineFacts.h"

#include <QFile>
#include <QSysInfo>
#include <cstring>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// More than any of the files needs; /proc/cpuinfo grows with the processors, and the first one is enough.
constexpr qint64 readLimit = 65536;

QString orUnknown(const QString &text)
{
    return text.isEmpty() ? u"Unknown"_s : text;
}

/// Text up to the first NUL, which ends a device tree's strings.
QString plainText(const QByteArray &bytes)
{
    return QString::fromUtf8(bytes.constData()).simplified();
}

/// A value as a shell would read it: the rules of os-release files.
QString unquoted(QByteArray value)
{
    value = value.trimmed();
    const char quote = value.size() >= 2 ? value.front() : '\0';
    if ((quote != '"' && quote != '\'') || value.back() != quote)
        return QString::fromUtf8(value);
    value = value.sliced(1, value.size() - 2);
    if (quote == '\'')
        return QString::fromUtf8(value);
    QByteArray text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const bool escapes = value[i] == '\\' && i + 1 < value.size() && std::strchr("\"\\$`", value[i + 1]);
        text += value[escapes ? ++i : i];
    }
    return QString::fromUtf8(text);
}

} // namespace

LinuxMachineFacts::LinuxMachineFacts(QString root) : m_root(std::move(root)) {}

QByteArray LinuxMachineFacts::read(const QString &path) const
{
    QFile file(m_root + path);
    return file.open(QIODevice::ReadOnly) ? file.read(readLimit) : QByteArray();
}

QString LinuxMachineFacts::modelIdentifier() const
{
    const QString product = plainText(read(u"/sys/class/dmi/id/product_name"_s));
    return orUnknown(product.isEmpty() ? plainText(read(u"/proc/device-tree/model"_s)) : product);
}

QString LinuxMachineFacts::chip() const
{
    const QList<QByteArray> lines = read(u"/proc/cpuinfo"_s).split('\n');
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon >= 0 && line.first(colon).trimmed() == "model name")
            return orUnknown(plainText(line.sliced(colon + 1)));
    }
    return orUnknown({});
}

quint64 LinuxMachineFacts::physicalMemory() const
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return 0;
    return static_cast<quint64>(pages) * static_cast<quint64>(pageSize);
}

QString LinuxMachineFacts::osVersion() const
{
    for (const QString &path : {u"/etc/os-release"_s, u"/usr/lib/os-release"_s}) {
        const QList<QByteArray> lines = read(path).split('\n');
        for (const QByteArray &line : lines)
            if (line.startsWith("PRETTY_NAME="))
                return orUnknown(unquoted(line.sliced(qstrlen("PRETTY_NAME="))));
    }
    return orUnknown({});
}

bool LinuxMachineFacts::isArm64() const
{
    return QSysInfo::currentCpuArchitecture() == "arm64"_L1;
}

} // namespace morvane
