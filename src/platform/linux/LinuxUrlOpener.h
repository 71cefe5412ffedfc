#pragma once

#include "platform/UrlOpener.h"

namespace morvane {

/// Opens pages as the desktop does, through the portal or `xdg-open`.
class LinuxUrlOpener final : public UrlOpener {
public:
    /// Pages of the web only; anything else could start a program.
    bool open(const QUrl &url) override;
};

} // namespace morvane
