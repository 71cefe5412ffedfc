#pragma once

#include "async/Task.h"
#include "browser/pages/WebPage.h"
#include "net/FetchResult.h"
#include "net/HttpRequest.h"

#include <QCache>
#include <QImage>
#include <QPointer>
#include <QString>
#include <functional>
#include <optional>

namespace morvane {

/// Fetches the icons of sites and keeps them for this run. What comes from a site is bounded and decoded by
/// someone who can bear whatever it is. Errors are swallowed, and nothing is kept of them. The scheduler is
/// shut down before it goes. Main thread.
class Favicons {
public:
    /// As HttpClient::fetch.
    using Fetch = std::function<Task<FetchResult>(HttpRequest request, qint64 maximumBytes)>;
    /// Gives a null image for what is none.
    using Decode = std::function<Task<QImage>(QByteArray bytes)>;

    static constexpr qint64 mostIconBytes = 256 * 1024;
    static constexpr qsizetype mostSites = 500;

    Favicons(Fetch fetch, Decode decode);

    /// The icon of a site: that which its page names, or the one in the site's usual place. A null image if
    /// there is none. The page may go meanwhile.
    Task<QImage> fetchFavicon(QString host, QPointer<WebPage> page);

    /// What is there without the network; a null image if it was not fetched in this run.
    QImage cached(const QString &host) const;

private:
    Task<std::optional<QImage>> icon(QUrl address);

    Fetch m_fetch;
    Decode m_decode;
    QCache<QString, QImage> m_icons{mostSites};
};

} // namespace morvane
