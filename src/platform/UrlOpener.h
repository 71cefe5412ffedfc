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

    /// The same for a page that came with the program, by its path. False also where it is missing.
    virtual bool openOwnPage(const QString &path) = 0;

    /// Begins a message of this text in the user's mail program. Whether it could be asked to.
    virtual bool beginMail(const QString &text) = 0;
};

} // namespace morvane
