#pragma once

#include <QUrl>

namespace morvane {

/// Shows a page to the user outside of Morvane. Main thread.
class UrlOpener {
public:
    virtual ~UrlOpener() = default;

    /// Opens `url` in the program that the user has chosen for it, without waiting for that program. Whether
    /// it could be asked to.
    virtual bool open(const QUrl &url) = 0;
};

} // namespace morvane
