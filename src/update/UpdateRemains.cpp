#include "update/UpdateRemains.h"

#include "base/FileDescriptor.h"
#include "update/BundleInstallation.h"
#include "update/ImageFile.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

namespace {

enum class Kind { file, folder };

void removeAbandoned(const QString &folder, const QString &pattern, Kind kind)
{
    const QRegularExpression ours(QRegularExpression::anchoredPattern(pattern));
    const QDir::Filters filters =
        kind == Kind::file ? QDir::Files | QDir::NoSymLinks : QDir::Dirs | QDir::NoSymLinks;
    for (const QString &name : QDir(folder).entryList(filters | QDir::Hidden)) {
        if (!ours.match(name).hasMatch())
            continue;
        const QByteArray path = QFile::encodeName(folder + u'/' + name);
        const FileDescriptor entry(::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status{};
        if (!entry.isOpen() || ::fstat(entry.get(), &status) != 0 || status.st_uid != ::geteuid() ||
            ::flock(entry.get(), LOCK_EX | LOCK_NB) != 0)
            continue;
        std::error_code ignored; // the next start tries again
        std::filesystem::remove_all(path.toStdString(), ignored);
    }
}

} // namespace

void removeUpdateRemains(const RunningBundle &bundle, const QString &downloads)
{
    if (!bundle.path.isEmpty())
        removeAbandoned(bundle.parent, BundleInstallation::workPattern(), Kind::folder);
    removeAbandoned(downloads, ImageFile::namePattern(), Kind::file);
}

} // namespace morvane
