#include "update/UpdateRemains.h"

#include "base/FileDescriptor.h"
#include "update/BundleInstallation.h"
#include "update/ImageFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

enum class Kind { file, folder };

QRegularExpression namesOf(const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern));
}

/// Of the user's own that no process is working on: open and locked. Not open for everything else.
FileDescriptor abandoned(const QByteArray &path)
{
    FileDescriptor entry(::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status{};
    if (!entry.isOpen() || ::fstat(entry.get(), &status) != 0 || status.st_uid != ::geteuid() ||
        ::flock(entry.get(), LOCK_EX | LOCK_NB) != 0)
        return {};
    return entry;
}

/// Where the bundle was that an update has moved into its folder; empty unless nothing is there now.
QString emptiedPlace(const QString &work)
{
    const QStringList moved =
        QDir(work + u"/old"_s).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    if (moved.size() != 1)
        return {};
    const QString place = QFileInfo(work).path() + u'/' + moved.constFirst();
    return QFileInfo::exists(place) ? QString() : place;
}

bool move(const QString &from, const QString &to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

void removeAbandoned(const QString &folder, const QString &pattern, Kind kind)
{
    const QRegularExpression ours = namesOf(pattern);
    const QDir::Filters filters =
        kind == Kind::file ? QDir::Files | QDir::NoSymLinks : QDir::Dirs | QDir::NoSymLinks;
    for (const QString &name : QDir(folder).entryList(filters | QDir::Hidden)) {
        if (!ours.match(name).hasMatch())
            continue;
        const QString remains = folder + u'/' + name;
        const QByteArray path = QFile::encodeName(remains);
        const FileDescriptor entry = abandoned(path);
        if (!entry.isOpen())
            continue;
        const QString place = kind == Kind::folder ? emptiedPlace(remains) : QString();
        if (!place.isEmpty() && !move(remains + u"/old/"_s + QFileInfo(place).fileName(), place))
            continue;
        std::error_code ignored; // the next start tries again
        std::filesystem::remove_all(path.toStdString(), ignored);
    }
}

} // namespace

QString returnToPlace(const QString &program)
{
    const RunningBundle bundle = RunningBundle::ofProgram(program);
    const QString work = QFileInfo(bundle.parent).path();
    if (bundle.path.isEmpty() ||
        !namesOf(BundleInstallation::workPattern()).match(QFileInfo(work).fileName()).hasMatch() ||
        !abandoned(QFile::encodeName(work)).isOpen())
        return {};
    const QString place = emptiedPlace(work);
    if (place.isEmpty() || !move(bundle.path, place))
        return {};
    return place + u'/' + QString::fromLatin1(RunningBundle::programPlace);
}

void removeUpdateRemains(const RunningBundle &bundle, const QString &downloads)
{
    if (!bundle.path.isEmpty())
        removeAbandoned(bundle.parent, BundleInstallation::workPattern(), Kind::folder);
    removeAbandoned(downloads, ImageFile::namePattern(), Kind::file);
}

} // namespace morvane
