#pragma once

#include "platform/KeychainStore.h"

namespace morvane {

/// For desktops on which no old version ever kept a key: no secret service is asked.
class NoKeychain final : public KeychainStore {
public:
    std::optional<QByteArray> read(const QString &, const QString &) override { return std::nullopt; }
    void remove(const QString &, const QString &) override {}
};

} // namespace morvane
