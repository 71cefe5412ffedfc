#pragma once

#include <QDateTime>

namespace morvane {

// Stored dates are seconds since 2001-01-01T00:00:00Z, as a double.

/// 2001-01-01T00:00:00Z in seconds since 1970.
inline constexpr qint64 referenceDateUnixSeconds = 978'307'200;

/// The current time, to a fraction of a microsecond.
double referenceDateNow();

/// Seconds of the reference date for a point in time (milliseconds are kept).
double referenceDateFromDateTime(const QDateTime &dateTime);

/// The point in time in UTC, to the millisecond; invalid for what is not finite or beyond any calendar
/// (more than a million years away).
QDateTime dateTimeFromReferenceDate(double seconds);

} // namespace morvane
