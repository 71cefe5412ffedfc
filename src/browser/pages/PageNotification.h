#pragma once

#include <QString>

namespace morvane {

/// What a page lets the user know beside itself, as the page has written it.
struct PageNotification {
    QString site; ///< The host of the page; may be empty.
    QString title;
    QString message;

    bool operator==(const PageNotification &) const = default;
};

} // namespace morvane
