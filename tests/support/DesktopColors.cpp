#include "support/DesktopColors.h"

#include "support/PrivateDesktop.h"

using namespace Qt::StringLiterals;

namespace morvane {

DesktopColors::DesktopColors(const PrivateDesktop &desktop, Preference preference)
    : m_preference(preference),
      m_bus(QDBusConnection::connectToBus(desktop.sessionBusAddress(), u"colours of the desktop"_s))
{
    m_bus.registerObject(u"/org/freedesktop/portal/desktop"_s, this, QDBusConnection::ExportAllSlots);
    m_bus.registerService(u"org.freedesktop.portal.Desktop"_s);
}

QDBusVariant DesktopColors::Read(const QString &, const QString &) const
{
    return QDBusVariant(uint(m_preference));
}

} // namespace morvane
