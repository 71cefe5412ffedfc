#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

/// A page that the user has marked.
struct BrowserBookmark {
    QUuid id;
    QString title;
    QString url; ///< The absolute address.

    bool operator==(const BrowserBookmark &) const = default;
};

} // namespace morvane
