#pragma once

#include "platform/InputEvents.h"

namespace morvane {

/// Mouse and keyboard of an X server that knows the XTest extension.
class LinuxInputEvents final : public InputEvents {
public:
    bool isTrusted() override;
    /// Nothing: an X server lets everyone, and there is nobody to ask on others.
    void requestTrust() override {}
    std::unique_ptr<InputSource> newSource() override;
    QList<QString> layoutCharacters() override;
};

} // namespace morvane
