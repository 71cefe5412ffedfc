#pragma once

#include "model/AITool.h"

#include <QList>

namespace morvane {

/// The 41 built-in tools as the model sees them, in the order in which they are offered. Names, descriptions
/// and parameters are part of the program's behaviour: models are guided by their wording. Built on first use
/// and shared from then on. Any thread.
const QList<AITool> &toolTable();

} // namespace morvane
