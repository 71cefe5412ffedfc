#pragma once

#include <QObject>
#include <QString>
#include <optional>

namespace morvane {

/// A version that is newer than this one.
struct UpdateInfo {
    QString version;
    int build = 0;

    bool operator==(const UpdateInfo &) const = default;
};

/// What is known of a newer version: the windows show it, and a required one stops new requests. Main thread.
class UpdateModel : public QObject {
    Q_OBJECT
public:
    /// Whether this build can work on without the newer version.
    enum class Necessity { optional, required };

    using QObject::QObject;

    const std::optional<UpdateInfo> &availableUpdate() const { return m_availableUpdate; }
    /// Whether an update is known without which this build must not go on working.
    bool isUpdateRequired() const { return m_availableUpdate && m_necessity == Necessity::required; }

    void setAvailableUpdate(const UpdateInfo &update, Necessity necessity);

Q_SIGNALS:
    void changed();

private:
    std::optional<UpdateInfo> m_availableUpdate;
    Necessity m_necessity = Necessity::optional;
};

} // namespace morvane
