#pragma once

#include <QByteArray>
#include <QString>
#include <sys/mount.h>

namespace morvane {

/// A small volume of its own, in memory; as root only, and where the system allows it.
class SmallVolume {
public:
    SmallVolume(const QString &place, qint64 bytes) : m_place(place.toUtf8())
    {
        const QByteArray size = "size=" + QByteArray::number(bytes);
        m_mounted = ::mount("tmpfs", m_place.constData(), "tmpfs", 0, size.constData()) == 0;
    }
    ~SmallVolume()
    {
        if (m_mounted)
            ::umount2(m_place.constData(), MNT_DETACH);
    }
    SmallVolume(const SmallVolume &) = delete;
    SmallVolume &operator=(const SmallVolume &) = delete;

    bool isMounted() const { return m_mounted; }

private:
    QByteArray m_place;
    bool m_mounted = false;
};

} // namespace morvane
