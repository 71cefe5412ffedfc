#pragma once

#include <QObject>
#include <QString>

namespace morvane {

/// A page asks for something of the computer. It waits until it is answered; destroying it refuses. Main
/// thread.
class PagePermission : public QObject {
    Q_OBJECT
public:
    enum class Kind { location, microphone, camera, microphoneAndCamera, notifications, screen };

    virtual Kind kind() const = 0;
    /// The host of the page that asks.
    virtual QString site() const = 0;
    virtual void grant() = 0;
    virtual void refuse() = 0;

Q_SIGNALS:
    /// Nobody needs an answer any more: the page is gone.
    void withdrawn();
};

} // namespace morvane
