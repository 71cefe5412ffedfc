#pragma once

#include <QDateTime>
#include <QString>

namespace morvane {

/// The tool that tells the date and time. Any thread.
class DateTimeTool {
public:
    /// The current moment in the system's time zone.
    static QString currentDateTime();

    /// As currentDateTime for a given moment: English words whatever the locale, the moment's own time zone
    /// and that zone's identifier.
    static QString describeDateTime(const QDateTime &moment);
};

} // namespace morvane
