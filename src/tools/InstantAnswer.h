#pragma once

#include <QByteArrayView>
#include <QString>

namespace morvane {

/// Reads the search service's instant answers. Any thread.
class InstantAnswer {
public:
    /// The answer's summary, its source and the related topics, as lines, at most 12; empty if `json` holds
    /// none of these or is no JSON object.
    static QString text(QByteArrayView json);
};

} // namespace morvane
