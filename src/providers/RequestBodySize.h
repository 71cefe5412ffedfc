#pragma once

#include "model/AIConfiguration.h"
#include "model/APIMessage.h"

#include <QList>

namespace morvane {

/// About how many bytes a request body takes, so that its buffer is reserved once.
qsizetype expectedBodySize(const QList<APIMessage> &context, const AIConfiguration &config);

/// Throws AIServiceError::Api if the configuration holds a number that JSON cannot express.
void requireWritable(const AIConfiguration &config);

} // namespace morvane
