#pragma once

#include "platform/InputEvents.h"

#include <mutex>

namespace morvane {

/// Mouse and keyboard of an X server that knows the XTest extension. Keys that programs have not read yet
/// stay lent when a source goes (XLentKeys.h); they are given back with a later one, at the latest when this
/// goes. Those that a crash has left lent or down are given back before the keyboard is first used.
class LinuxInputEvents final : public InputEvents {
public:
    LinuxInputEvents() = default;
    ~LinuxInputEvents() override;
    LinuxInputEvents(const LinuxInputEvents &) = delete;
    LinuxInputEvents &operator=(const LinuxInputEvents &) = delete;

    bool isTrusted(const std::stop_token &stop) override;
    /// Nothing: an X server lets everyone, and there is nobody to ask on others.
    void requestTrust() override {}
    std::unique_ptr<InputSource> newSource(const std::stop_token &stop) override;
    QList<QString> layoutCharacters() override;

private:
    void begin(const std::stop_token &stop);

    std::mutex m_mutex;
    bool m_isBegun = false;
};

} // namespace morvane
