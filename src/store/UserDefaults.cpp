#include "store/UserDefaults.h"

#include "base/AtomicFile.h"
#include "store/Log.h"

#include <QFileInfo>
#include <QStringList>

namespace morvane {

namespace {

using namespace std::chrono_literals;

/// How long the main thread waits for another one's change to end, which is a matter of tenths of a
/// millisecond unless that program is stopped in its midst.
constexpr auto lockLimit = 4ms;
constexpr auto retryTime = 100ms;
/// At the end there is no later write.
constexpr auto lastLockLimit = 2s;

/// The value as it is after the file was written and read again.
QVariant asRead(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QStringList: {
        const QStringList list = value.toStringList();
        if (list.isEmpty())
            return QVariant();
        return list.size() == 1 ? QVariant(list.front()) : value;
    }
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
        return value.toString();
    default:
        return value;
    }
}

void bringToDisk(const QString &path)
{
    if (const auto synced = syncFile(path); !synced)
        qCWarning(storeLog) << "the settings may not outlive a power cut:" << synced.error();
}

} // namespace

UserDefaults::UserDefaults(QString path) : m_file(std::move(path))
{
    m_disk.setMaxThreadCount(1);
    m_syncTimer.setSingleShot(true);
    m_syncTimer.setInterval(1s);
    QObject::connect(&m_syncTimer, &QTimer::timeout, &m_syncTimer,
                     [this] { m_disk.start([path = m_file.path()] { bringToDisk(path); }); });
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(retryTime);
    QObject::connect(&m_retryTimer, &QTimer::timeout, &m_retryTimer, [this] { write(); });
    // The first write tries again, and tells why it fails.
    static_cast<void>(ensurePrivateFolder(QFileInfo(m_file.path()).path()));
    m_file.tidy();
    readFirst();
}

UserDefaults::~UserDefaults()
{
    writeWithin(lastLockLimit);
    if (m_syncTimer.isActive())
        bringToDisk(m_file.path());
    m_disk.waitForDone();
}

void UserDefaults::readFirst()
{
    DefaultsFile::Content content = m_file.read();
    if (content.isDamaged) {
        // Another program may be setting it aside now, and write a new one.
        const DefaultsFile::Lock lock = m_file.lock(lastLockLimit);
        content = m_file.read();
        if (content.isDamaged) {
            qCWarning(storeLog) << "the settings were damaged; what could be read is kept";
            // Another that holds it may be mending it: at the next write it is read once more.
            if (lock.isHeld()) {
                m_file.setAside();
                for (auto value = content.values.cbegin(); value != content.values.cend(); ++value)
                    m_changes.insert(value.key(), *value);
            }
            content.identity.reset();
        }
    }
    m_values = std::move(content.values);
    m_identity = content.identity;
}

/// False if the file holds what is nowhere else, and must not be replaced.
bool UserDefaults::adoptForeignChanges()
{
    const auto identity = FileIdentity::ofPath(m_file.path());
    if (!identity || identity->size == 0 || identity == m_identity)
        return true;
    DefaultsFile::Content content = m_file.read();
    if (content.isDamaged) {
        qCWarning(storeLog) << "the settings were damaged by another program";
        m_identity.reset();
        return m_file.setAside();
    }
    m_identity = content.identity;
    m_values = std::move(content.values);
    for (auto change = m_changes.cbegin(); change != m_changes.cend(); ++change)
        if (*change)
            m_values.insert(change.key(), **change);
        else
            m_values.remove(change.key());
    return true;
}

void UserDefaults::set(const QString &key, const QVariant &value)
{
    const QVariant normal = asRead(value);
    const auto present = m_values.constFind(key);
    if (present != m_values.cend() && *present == normal && present->typeId() == normal.typeId())
        return;
    m_values.insert(key, normal);
    m_changes.insert(key, normal);
}

void UserDefaults::remove(const QString &key)
{
    if (m_values.remove(key) > 0)
        m_changes.insert(key, std::nullopt);
}

bool UserDefaults::write()
{
    return writeWithin(lockLimit);
}

bool UserDefaults::writeWithin(std::chrono::milliseconds limit)
{
    if (m_changes.isEmpty())
        return true;
    const DefaultsFile::Lock lock = m_file.lock(limit);
    if (!lock.isHeld()) {
        m_retryTimer.start();
        return false;
    }
    const auto identity = adoptForeignChanges() ? m_file.write(m_values) : std::nullopt;
    if (!identity)
        return false;
    m_changes.clear();
    m_identity = identity;
    if (!m_syncTimer.isActive()) // Changes without end do not put it off without end.
        m_syncTimer.start();
    return true;
}

} // namespace morvane
