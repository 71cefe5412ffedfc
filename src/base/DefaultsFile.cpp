#include "base/DefaultsFile.h"

#include "base/AtomicFile.h"
#include "base/IniReader.h"
#include "base/IniText.h"
#include "base/Log.h"
#include "base/RegularFile.h"

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <tuple>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

/// Changes take some tenths of a millisecond, so that a waiter soon has its turn.
constexpr auto retryTime = 200us;
constexpr qint64 nanosecondsPerMillisecond = 1'000'000;
/// Whoever has so many damaged files has something that damages them.
constexpr int mostDamagedFiles = 1000;

/// Those who keep what they have read tell by its identity whether the file is still the same. Kernels count
/// file times in ticks of some milliseconds and use inodes again, so that versions written in quick
/// succession may look the same; each is given a time of its own, later than that of the last.
void makeDistinguishable(const QString &path, const std::optional<FileIdentity> &before,
                         std::optional<FileIdentity> &after)
{
    if (!before || !after ||
        before->modifiedNanoseconds / nanosecondsPerMillisecond <
            after->modifiedNanoseconds / nanosecondsPerMillisecond)
        return;
    const qint64 time = before->modifiedNanoseconds + nanosecondsPerMillisecond;
    constexpr qint64 perSecond = 1'000'000'000;
    const timespec times[2]{{.tv_sec = 0, .tv_nsec = UTIME_OMIT},
                            {.tv_sec = time / perSecond, .tv_nsec = time % perSecond}};
    ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
    after = FileIdentity::ofPath(path);
}

bool renameUnlessTaken(const QByteArray &from, const QByteArray &to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return true;
    // Network file systems know no such renaming.
    return errno == EINVAL && ::link(from.constData(), to.constData()) == 0 &&
           ::unlink(from.constData()) == 0;
}

} // namespace

DefaultsFile::DefaultsFile(QString path) : m_path(std::move(path)) {}

DefaultsFile::Content DefaultsFile::read() const
{
    Content content;
    auto file = RegularFile::open(QFile::encodeName(m_path).constData());
    if (!file) {
        content.isDamaged = FileIdentity::ofPath(m_path).has_value(); // what holds values and is kept from us
        return content;
    }
    content.identity = FileIdentity::ofDescriptor(file->descriptor());
    if (file->size() == 0) // the kernel's own files too, some of which never end
        return content;
    const auto text = file->readUpTo(maximumBytes);
    content.isDamaged = !text || text->size() > maximumBytes;
    if (content.isDamaged)
        return content;
    IniReader::Content values = IniReader(*text).read();
    content.values = std::move(values.values);
    content.isDamaged = values.isDamaged;
    return content;
}

void DefaultsFile::tidy() const
{
    removeAbandonedTemporaryFiles(QFileInfo(m_path).path());
    if (QFileInfo(m_path).isSymLink())
        removeAbandonedTemporaryFiles(QFileInfo(QFileInfo(m_path).canonicalFilePath()).path());
    if (const auto file = RegularFile::open(QFile::encodeName(m_path).constData()))
        file->makePrivate();
}

DefaultsFile::Lock DefaultsFile::lock(std::chrono::milliseconds limit) const
{
    // The folder is locked and not the file, which is replaced at every change.
    const QString folder = QFileInfo(m_path).path();
    Lock lock;
    if (const auto folderIsThere = ensurePrivateFolder(folder); !folderIsThere)
        qCWarning(baseLog) << "no folder for the settings:" << folderIsThere.error();
    lock.m_folder =
        FileDescriptor(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (::flock(lock.m_folder.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK && std::chrono::steady_clock::now() >= deadline) {
            qCInfo(baseLog) << "the settings stay locked by another for longer than" << limit.count() << "ms";
            return lock;
        }
        if (errno != EWOULDBLOCK && errno != EINTR)
            break;
        std::this_thread::sleep_for(retryTime);
    }
    lock.m_isHeld = true;
    return lock;
}

std::optional<FileIdentity> DefaultsFile::write(const QVariantMap &values) const
{
    const auto before = FileIdentity::ofPath(m_path);
    const QByteArray text = iniText(values);
    if (text.size() > maximumBytes || iniItems(values) > IniReader::maximumItems) {
        qCWarning(baseLog) << "the settings are too large to be written";
        return std::nullopt;
    }
    if (const auto written =
            writeFileAtomically(m_path, text, Durability::processCrash, privateFile, LinkRule::follow);
        !written) {
        qCWarning(baseLog) << "the settings could not be written:" << written.error();
        return std::nullopt;
    }
    auto after = FileIdentity::ofPath(m_path);
    makeDistinguishable(m_path, before, after);
    return after;
}

bool DefaultsFile::setAside() const
{
    const QFileInfo link(m_path);
    const QByteArray file = QFile::encodeName(link.isSymLink() ? link.canonicalFilePath() : m_path);
    for (int number = 1; number <= mostDamagedFiles; ++number) {
        const QByteArray name = file + ".damaged" + (number > 1 ? '-' + QByteArray::number(number) : "");
        if (renameUnlessTaken(file, name))
            return true;
        if (errno != EEXIST)
            break;
    }
    const bool isGone = errno == ENOENT;
    if (!isGone)
        qCWarning(baseLog) << "damaged settings could not be set aside";
    return isGone;
}

bool DefaultsFile::update(const std::function<void(QVariantMap &)> &change,
                          std::chrono::milliseconds limit) const
{
    const Lock held = lock(limit);
    Content content = read();
    if (content.isDamaged && !(held.isHeld() && setAside()))
        return false;
    change(content.values);
    return held.isHeld() && write(content.values).has_value();
}

} // namespace morvane
