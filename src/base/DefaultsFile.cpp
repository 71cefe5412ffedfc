#include "base/DefaultsFile.h"

#include "base/AtomicFile.h"
#include "base/IniText.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <tuple>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using namespace std::chrono_literals;

constexpr auto updateLimit = 2s;
/// Changes take some tenths of a millisecond, so that a waiter soon has its turn.
constexpr auto retryTime = 200us;
constexpr qint64 nanosecondsPerMillisecond = 1'000'000;

/// QSettings keeps what it parsed and reads a file again only when its size or its modification time, to the
/// millisecond, has changed. Kernels count file times in ticks of some milliseconds, so that versions written
/// in quick succession look the same; each is given a time of its own, later than that of the last.
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

} // namespace

DefaultsFile::DefaultsFile(QString path) : m_path(std::move(path)) {}

DefaultsFile::Content DefaultsFile::read()
{
    // QSettings notes the size and time of whatever has the name after it has read the file; replaced in
    // between, the old values would pass for the new ones for good. By the descriptor both are of one
    // version.
    Content content;
    const FileDescriptor file(::open(QFile::encodeName(m_path).constData(), O_RDONLY | O_CLOEXEC));
    content.identity = FileIdentity::ofDescriptor(file.get());
    if (!content.identity || content.identity->size == 0)
        return content;
    const QSettings settings(u"/proc/self/fd/%1"_s.arg(file.get()), QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        content.values.insert(key, settings.value(key));
    // What it has parsed before it does not parse again, and then says nothing of faults.
    if (settings.status() != QSettings::NoError)
        m_damaged = content.identity;
    content.isDamaged = m_damaged == content.identity;
    return content;
}

DefaultsFile::Lock DefaultsFile::lock(std::chrono::milliseconds limit) const
{
    // The folder is locked and not the file, which is replaced at every change.
    const QString folder = QFileInfo(m_path).path();
    Lock lock;
    std::ignore = ensurePrivateFolder(folder);
    lock.m_folder =
        FileDescriptor(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (::flock(lock.m_folder.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EWOULDBLOCK && std::chrono::steady_clock::now() >= deadline)
            return lock;
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
    if (!writeFileAtomically(m_path, iniText(values), Durability::processCrash))
        return std::nullopt;
    auto after = FileIdentity::ofPath(m_path);
    makeDistinguishable(m_path, before, after);
    return after;
}

void DefaultsFile::setAside() const
{
    const QString aside = m_path + u".damaged"_s;
    QFile::remove(aside);
    QFile::rename(m_path, aside);
}

bool DefaultsFile::update(const std::function<void(QVariantMap &)> &change)
{
    const Lock held = lock(updateLimit);
    Content content = read();
    if (content.isDamaged)
        setAside();
    change(content.values);
    return write(content.values).has_value();
}

} // namespace morvane
