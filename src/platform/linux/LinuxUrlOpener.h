#pragma once

#include "platform/UrlOpener.h"

namespace morvane {

/// Opens pages and begins messages as the desktop does, through the portal or `xdg-open`.
class LinuxUrlOpener final : public UrlOpener {
public:
    /// Pages of the web only; anything else could start a program.
    bool open(const QUrl &url) override;
    bool openOwnPage(const QString &path) override;
    bool beginMail(const QString &text) override;
};

} // namespace morvane
