#pragma once

#include <QString>

namespace morvane {

/// A size as users read it, with a "GB" of 2^30 bytes: "477 MB", "1.4 GB".
QString byteString(qint64 bytes);

} // namespace morvane
