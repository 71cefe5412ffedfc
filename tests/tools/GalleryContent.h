#pragma once

#include "app/ActivityLog.h"
#include "app/Transcript.h"

namespace morvane {

/// Fills a conversation with one of everything that the view can show.
void fillShowcase(Transcript &transcript, ActivityLog &activity);

} // namespace morvane
