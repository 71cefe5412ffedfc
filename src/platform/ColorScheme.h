#pragma once

#include <QObject>

namespace morvane {

/// Whether the desktop asks programs to be light or dark. Main thread.
class ColorScheme : public QObject {
    Q_OBJECT
public:
    enum class Preference { none, dark, light };

    using QObject::QObject;

    /// `none` until the desktop has answered, and where it does not say.
    virtual Preference preference() const = 0;

Q_SIGNALS:
    void preferenceChanged();
};

} // namespace morvane
