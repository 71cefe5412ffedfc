#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace morvane {

class PrivateDesktop;

/// The portal of a desktop, as far as it tells programs which colours its user prefers.
class DesktopColors : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
public:
    /// By the numbers of the portal.
    enum class Preference : uint { dark = 1, light = 2 };

    /// Stands on the session bus of `desktop`, which must outlive it.
    DesktopColors(const PrivateDesktop &desktop, Preference preference);

public Q_SLOTS:
    // By the portal's name.
    QDBusVariant Read(const QString &group, const QString &key) const;

private:
    Preference m_preference;
    QDBusConnection m_bus;
};

} // namespace morvane
