#pragma once

#include <QString>
#include <QStringList>

namespace morvane {

/// Reads the search service's results page. Time grows with the size of the page, whatever it holds. Any
/// thread.
class SearchResults {
public:
    /// One entry for each result, in the page's order: "1. Title", then the snippet if it has one and the
    /// address, each on a line of its own behind three blanks. A snippet belongs to the link at the same
    /// position among the links. Empty for a page that looks different.
    static QStringList parseDDGResults(const QString &html);

    /// The address that a result's link leads to: the one that it wraps as "uddg=…", or the link itself, with
    /// "https:" in front of one that begins with "//".
    static QString resolvedAddress(const QString &link);
};

} // namespace morvane
