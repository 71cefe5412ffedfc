#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

/// A visit of a page, with those that followed it at once.
struct BrowserHistoryEntry {
    QUuid id;
    QString title;        ///< As the page told it; the host where it told none.
    QString url;          ///< The absolute address.
    QString host;         ///< The address's host.
    double visitedAt = 0; ///< The last visit, in seconds since 2001-01-01T00:00:00Z.
    qint64 visitCount = 1;

    bool operator==(const BrowserHistoryEntry &) const = default;
};

} // namespace morvane
