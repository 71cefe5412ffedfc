#pragma once

#include "archive/UnpackError.h"

#include <QString>
#include <atomic>
#include <expected>
#include <memory>

namespace morvane {

/// Where the runtime that Morvane installs lies: its tree below Morvane's data folder, and beside it the link
/// to its program, which finds its libraries by where it really is. Blocks; any thread but the main one.
class RuntimeFolder {
public:
    explicit RuntimeFolder(QString dataFolder) : m_dataFolder(std::move(dataFolder)) {}

    /// The place where the program is looked for.
    QString program() const { return m_dataFolder + QStringLiteral("/ollama"); }

    /// Removes what interrupted installations left.
    void removeRemains() const;

    /// Unpacks the archive beside the place, and puts it there as a whole, in the place of an older one. When
    /// it fails, everything is as before.
    std::expected<void, UnpackError> install(const QString &archive,
                                             std::shared_ptr<const std::atomic<bool>> stop) const;

private:
    std::expected<void, UnpackError> place(const QString &unpacked) const;

    QString m_dataFolder;
};

} // namespace morvane
