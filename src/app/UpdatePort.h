#pragma once

#include <QString>
#include <optional>

namespace morvane {

/// A version that is newer than this one.
struct UpdateInfo {
    QString version;
    int build = 0;
};

/// What the agent asks of the self-update. Main thread.
class UpdatePort {
public:
    virtual ~UpdatePort() = default;

    /// Whether this build can look for updates at all.
    virtual bool isAvailable() const = 0;
    virtual std::optional<UpdateInfo> availableUpdate() const = 0;
    /// Whether an update is known without which this build must not go on working.
    virtual bool isUpdateRequired() const = 0;
};

/// A build that does not look for updates, and so knows of none.
class NoUpdates final : public UpdatePort {
public:
    bool isAvailable() const override { return false; }
    std::optional<UpdateInfo> availableUpdate() const override { return std::nullopt; }
    bool isUpdateRequired() const override { return false; }
};

} // namespace morvane
