#pragma once

#include <QString>
#include <QUrl>

namespace morvane {

/// Where an entry of the address field, or the model's argument, leads.
struct BrowserTarget {
    QString spelling; ///< The address as it was typed, with what it lacked.
    QUrl url;         ///< http or https, with a host.

    /// The host as it was typed.
    QString host() const;

    bool operator==(const BrowserTarget &) const = default;
};

/// Makes an address of any text: one that is typed, one that lacks its scheme, or else a search for the text.
/// Never fails. Any thread.
BrowserTarget resolveTarget(const QString &text);

} // namespace morvane
