#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace morvane {

/// The secret store of the desktop, in which old versions kept their API keys. It is only read and emptied;
/// nothing writes to it. Any thread; calls may block, so the main thread makes none.
class KeychainStore {
public:
    virtual ~KeychainStore() = default;

    /// The bytes stored for `key` under `service`; nothing if there are none or the store does not answer.
    virtual std::optional<QByteArray> read(const QString &key, const QString &service) = 0;

    /// Removes them; nothing happens if there are none.
    virtual void remove(const QString &key, const QString &service) = 0;
};

} // namespace morvane
