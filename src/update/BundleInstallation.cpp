#include "update/BundleInstallation.h"

#include "archive/UnpackArchive.h"
#include "base/InstalledFiles.h"
#include "base/RegularFile.h"
#include "base/StartDetached.h"
#include "base/Uuid.h"
#include "update/Log.h"
#include "update/MovesInTurn.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

namespace fs = std::filesystem;

constexpr qint64 maximumUnpackedBytes = 20'000'000'000;
constexpr qint64 maximumEntries = 200'000;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

using Result = BundleInstallation::Result;

std::string systemPath(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

QString sentenceOf(int error)
{
    return systemReason(error) + u'.';
}

Result failure(const QString &words)
{
    return std::unexpected(words);
}

Result notOpened()
{
    return failure(u"The downloaded update could not be opened."_s);
}

Result failureOf(const UnpackError &error)
{
    qCWarning(updateLog) << "the image was not unpacked:" << error.reason;
    switch (error.kind) {
    case UnpackError::Kind::diskFull:
    case UnpackError::Kind::disk:
        return failure(error.reason + u'.');
    case UnpackError::Kind::damaged:
    case UnpackError::Kind::hostile:
    case UnpackError::Kind::tooLarge:
    case UnpackError::Kind::stopped:
        break;
    }
    return notOpened();
}

/// Whether every link in a folder leads to something in it. One that leads to nothing may lead anywhere
/// later.
bool linksStayWithin(const fs::path &folder)
{
    const fs::path root = fs::canonical(folder);
    const auto leadsOut = [&root](const fs::directory_entry &entry) {
        if (!entry.is_symlink())
            return false;
        std::error_code leadsNowhere;
        const fs::path end = fs::canonical(entry.path(), leadsNowhere);
        return leadsNowhere ||
               std::mismatch(root.begin(), root.end(), end.begin(), end.end()).first != root.end();
    };
    const fs::recursive_directory_iterator tree(root);
    return std::none_of(begin(tree), end(tree), leadsOut);
}

/// Brings all that was written to the volume of a folder to the disk.
bool syncVolume(const QString &folder)
{
    const FileDescriptor file(::open(systemPath(folder).c_str(), folderFlags));
    return file.isOpen() && ::syncfs(file.get()) == 0;
}

} // namespace

QString BundleInstallation::workPattern()
{
    return u"Morvane-update-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"_s;
}

BundleInstallation::BundleInstallation(RunningBundle bundle)
    : m_bundle(std::move(bundle)), m_work(m_bundle.parent + u"/Morvane-update-"_s + uuidText(newUuid()))
{
}

BundleInstallation::~BundleInstallation()
{
    if (!m_lock.isOpen() || !m_oldApp.isEmpty())
        return;
    std::error_code ignored; // what is left is removed by the next start
    fs::remove_all(systemPath(m_work), ignored);
}

QString BundleInstallation::staged() const
{
    return m_work + u"/stage/Morvane.app"_s;
}

Result BundleInstallation::replace(const QString &image)
{
    Result result = prepare();
    if (result)
        result = stage(image);
    if (result)
        result = swap();
    return result;
}

Result BundleInstallation::prepare()
{
    if (m_bundle.path.isEmpty() || ::access(systemPath(m_bundle.parent).c_str(), W_OK | X_OK) != 0)
        return failure(u"Morvane does not have permission to replace itself in %1."_s.arg(m_bundle.parent));
    const std::string work = systemPath(m_work);
    if (::mkdir(work.c_str(), S_IRWXU) != 0)
        return failure(sentenceOf(errno));
    m_lock = FileDescriptor(::open(work.c_str(), folderFlags));
    if (!m_lock.isOpen() || ::flock(m_lock.get(), LOCK_EX | LOCK_NB) != 0 ||
        ::mkdir((work + "/stage").c_str(), S_IRWXU) != 0)
        return failure(sentenceOf(errno));
    return {};
}

Result BundleInstallation::stage(const QString &image)
{
    const auto unpacked = unpackArchive({image, m_work + u"/stage"_s, maximumUnpackedBytes, maximumEntries});
    if (!unpacked)
        return failureOf(unpacked.error());
    if (const Result checked = checkStaged(); !checked)
        return checked;
    // Half a bundle must not be found in the place after a power failure either.
    if (!syncVolume(m_work))
        return failure(sentenceOf(errno));
    return {};
}

Result BundleInstallation::checkStaged() const
{
    const QFileInfo bundle(staged());
    if (!bundle.isDir() || bundle.isSymLink())
        return failure(u"The downloaded update did not contain the app."_s);
    try {
        if (!linksStayWithin(systemPath(staged())))
            return notOpened();
    } catch (const fs::filesystem_error &error) {
        return failure(sentenceOf(error.code().value()));
    }
    const QFileInfo program(staged() + u'/' + QString::fromLatin1(RunningBundle::programPlace));
    if (!program.isFile() || program.isSymLink() || !program.isExecutable())
        return failure(u"Could not install the update: the copied app is incomplete"_s);
    return {};
}

Result BundleInstallation::swap()
{
    if (::renameat2(AT_FDCWD, systemPath(staged()).c_str(), AT_FDCWD, systemPath(m_bundle.path).c_str(),
                    RENAME_EXCHANGE) == 0)
        m_oldApp = staged();
    else if (errno != EINVAL && errno != ENOSYS)
        return failure(u"Could not move the current app: "_s + sentenceOf(errno));
    else if (const Result moved = swapInTwoMoves(); !moved)
        return moved;
    const FileDescriptor parent(::open(systemPath(m_bundle.parent).c_str(), folderFlags));
    if (parent.isOpen())
        ::fsync(parent.get());
    return {};
}

Result BundleInstallation::swapInTwoMoves()
{
    // By its name there it finds back to its place, should the power fail in between.
    const QString oldApp = m_work + u"/old/"_s + QFileInfo(m_bundle.path).fileName();
    if (::mkdir(systemPath(m_work + u"/old"_s).c_str(), S_IRWXU) != 0)
        return failure(u"Could not move the current app: "_s + sentenceOf(errno));
    const MovesInTurn moves = moveInTurn(m_bundle.path, oldApp, staged());
    // What could not be moved back is not removed either.
    if (QFileInfo::exists(oldApp))
        m_oldApp = oldApp;
    if (moves.first != 0)
        return failure(u"Could not move the current app: "_s + sentenceOf(moves.first));
    if (moves.second != 0)
        return failure(u"Could not install the update: "_s + sentenceOf(moves.second));
    return {};
}

Result BundleInstallation::scheduleRelaunch(const QList<QByteArray> &environment)
{
    const QString relauncher = InstalledFiles(m_oldApp + u"/Contents"_s).helper(u"morvane-relauncher"_s);
    const FileDescriptor thisProcess(static_cast<int>(::syscall(SYS_pidfd_open, ::getpid(), 0)));
    if (!thisProcess.isOpen() || ::access(systemPath(relauncher).c_str(), X_OK) != 0)
        return failure(sentenceOf(errno));
    const auto started = startDetached(relauncher, {m_bundle.path, m_work}, environment, thisProcess.get());
    if (!started)
        return failure(started.error() + u'.');
    return {};
}

} // namespace morvane
