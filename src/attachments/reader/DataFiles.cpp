#include "attachments/reader/DataFiles.h"

#include <QDirIterator>
#include <QFile>
#include <algorithm>
#include <fcntl.h>

namespace morvane {

void DataFiles::add(const QByteArray &path)
{
    addAs(path, path);
}

void DataFiles::addAs(const QByteArray &name, const QByteArray &path)
{
    FileDescriptor descriptor(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (descriptor.isOpen())
        m_files.push_back({name.toStdString(), std::move(descriptor)});
}

void DataFiles::addFolder(const QByteArray &path)
{
    QDirIterator files(QFile::decodeName(path), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        add(QFile::encodeName(files.next()));
}

void DataFiles::sort()
{
    std::sort(m_files.begin(), m_files.end(),
              [](const File &one, const File &other) { return one.path < other.path; });
}

int DataFiles::open(const char *path) const
{
    const auto file = std::lower_bound(m_files.begin(), m_files.end(), path,
                                       [](const File &one, const char *sought) { return one.path < sought; });
    if (file == m_files.end() || file->path != path)
        return -1;
    const int descriptor = ::fcntl(file->descriptor.get(), F_DUPFD_CLOEXEC, 0);
    if (descriptor >= 0)
        ::lseek(descriptor, 0, SEEK_SET);
    return descriptor;
}

} // namespace morvane
