#pragma once

#include <QString>

namespace morvane {

/// The maker's published name for a model identifier such as "Mac16,1", or the identifier itself if the table
/// does not hold it. Any thread.
QString marketingName(const QString &identifier);

} // namespace morvane
