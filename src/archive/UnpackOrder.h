#pragma once

#include <QString>
#include <atomic>
#include <memory>

namespace morvane {

/// An archive and where its content goes.
struct UnpackOrder {
    QString archive;
    QString folder; ///< Exists, and nobody else writes to it.
    qint64 maximumBytes = 0;
    qint64 maximumEntries = 0;
    /// Set by whoever no longer wants it; looked at between blocks.
    std::shared_ptr<const std::atomic<bool>> stop = std::make_shared<std::atomic<bool>>(false);
};

} // namespace morvane
