#pragma once

#include <QString>

namespace morvane {

/// What the computer is made of. Each text is "Unknown" where the platform does not tell. The calls may read
/// files; they are asked once. Any thread.
class MachineFacts {
public:
    virtual ~MachineFacts() = default;

    /// The maker's name of the computer's model, such as "Mac16,1" or "ThinkPad X1 Carbon Gen 11".
    virtual QString modelIdentifier() const = 0;
    /// The processor's name, such as "Apple M4".
    virtual QString chip() const = 0;
    /// In bytes; 0 where the platform does not tell.
    virtual quint64 physicalMemory() const = 0;
    /// Name and version of the system as its maker writes them, such as "Debian GNU/Linux 12 (bookworm)".
    virtual QString osVersion() const = 0;
    /// Whether the processor is a 64-bit ARM one.
    virtual bool isArm64() const = 0;
};

} // namespace morvane
