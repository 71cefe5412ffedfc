#include "store/UserDefaults.h"

#include "base/AtomicFile.h"
#include "store/IniText.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>
#include <chrono>

namespace morvane {

namespace {

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

} // namespace

UserDefaults::UserDefaults(QString path) : m_path(std::move(path))
{
    m_disk.setMaxThreadCount(1);
    m_syncTimer.setSingleShot(true);
    m_syncTimer.setInterval(std::chrono::seconds(1));
    QObject::connect(&m_syncTimer, &QTimer::timeout, &m_syncTimer,
                     [this] { m_disk.start([path = m_path] { static_cast<void>(syncFile(path)); }); });
    static_cast<void>(ensurePrivateFolder(QFileInfo(m_path).path()));
    read();
}

UserDefaults::~UserDefaults()
{
    write();
    if (m_syncTimer.isActive())
        static_cast<void>(syncFile(m_path));
    m_disk.waitForDone();
}

void UserDefaults::read()
{
    m_values.clear();
    m_identity = FileIdentity::ofPath(m_path);
    if (!m_identity)
        return;
    QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner);
    const QSettings file(m_path, QSettings::IniFormat);
    const QStringList keys = file.allKeys();
    for (const QString &key : keys)
        m_values.insert(key, file.value(key));
    m_identity = FileIdentity::ofPath(m_path);

    if (file.status() != QSettings::NoError && m_identity && m_identity->size > 0) {
        const QString aside = m_path + QStringLiteral(".damaged");
        QFile::remove(aside);
        QFile::rename(m_path, aside);
        m_identity.reset();
        for (auto value = m_values.cbegin(); value != m_values.cend(); ++value)
            m_changes.insert(value.key(), *value);
    }
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
    if (m_changes.isEmpty())
        return true;
    if (FileIdentity::ofPath(m_path) != m_identity) {
        const auto ours = m_changes;
        read();
        for (auto change = ours.cbegin(); change != ours.cend(); ++change) {
            if (*change)
                m_values.insert(change.key(), **change);
            else
                m_values.remove(change.key());
            m_changes.insert(change.key(), *change);
        }
    }
    if (!ensurePrivateFolder(QFileInfo(m_path).path()) ||
        !writeFileAtomically(m_path, iniText(m_values), Durability::processCrash))
        return false;
    m_changes.clear();
    m_identity = FileIdentity::ofPath(m_path);
    if (!m_syncTimer.isActive()) // Changes without end do not put it off without end.
        m_syncTimer.start();
    return true;
}

} // namespace morvane
