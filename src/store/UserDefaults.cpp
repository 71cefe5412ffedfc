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
    if (readInto(m_values) == Condition::damaged) {
        setAside();
        for (auto value = m_values.cbegin(); value != m_values.cend(); ++value)
            m_changes.insert(value.key(), *value);
    }
}

UserDefaults::~UserDefaults()
{
    write();
    if (m_syncTimer.isActive())
        static_cast<void>(syncFile(m_path));
    m_disk.waitForDone();
}

UserDefaults::Condition UserDefaults::readInto(QVariantMap &values)
{
    values.clear();
    QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner);
    m_identity = FileIdentity::ofPath(m_path);
    if (!m_identity || m_identity->size == 0)
        return Condition::whole;
    const QSettings file(m_path, QSettings::IniFormat);
    const QStringList keys = file.allKeys();
    for (const QString &key : keys)
        values.insert(key, file.value(key));
    return file.status() == QSettings::NoError ? Condition::whole : Condition::damaged;
}

void UserDefaults::setAside()
{
    const QString aside = m_path + QStringLiteral(".damaged");
    QFile::remove(aside);
    QFile::rename(m_path, aside);
    m_identity.reset();
}

void UserDefaults::adoptForeignChanges()
{
    const auto identity = FileIdentity::ofPath(m_path);
    if (!identity || identity->size == 0 || identity == m_identity)
        return;
    QVariantMap values;
    if (readInto(values) == Condition::damaged) {
        setAside();
        return;
    }
    m_values = std::move(values);
    for (auto change = m_changes.cbegin(); change != m_changes.cend(); ++change) {
        if (*change)
            m_values.insert(change.key(), **change);
        else
            m_values.remove(change.key());
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
    adoptForeignChanges();
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
