#pragma once

#include <QString>

namespace morvane {

class MachineFacts;

/// The machine in words, for the model and for the choice of a local model.
struct MacInfo {
    QString modelIdentifier;
    QString marketingName; ///< The friendly name of the identifier, or the identifier itself.
    QString chip;
    int ramGB = 1; ///< Physical memory in GiB, cut down to a whole number, at least 1.
    QString osVersion;
    bool isAppleSilicon = false;

    bool operator==(const MacInfo &) const = default;

    /// Asks the platform. May read files.
    static MacInfo read(const MachineFacts &facts);

    /// One sentence for the system prompt.
    QString summary() const;
};

} // namespace morvane
