#pragma once

#include "platform/ColorScheme.h"

class QDBusVariant;
class QVariant;

namespace morvane {

/// Asks the desktop's settings portal (`org.freedesktop.appearance`, `color-scheme`: 1 dark, 2 light) without
/// waiting for it, and follows its changes. Without a portal the preference stays `none`. Main thread.
class LinuxColorScheme final : public ColorScheme {
    Q_OBJECT
public:
    explicit LinuxColorScheme(QObject *parent = nullptr);

    Preference preference() const override { return m_preference; }

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void take(const QVariant &value);

    Preference m_preference = Preference::none;
};

} // namespace morvane
