#include "attachments/reader/Cage.h"

#include "attachments/reader/PathRestriction.h"
#include "attachments/reader/SystemCallFilter.h"
#include "attachments/reader/TrappedCalls.h"

namespace morvane {

bool closeCage(const DataFiles &files)
{
    return answerTrappedCalls(files) && restrictPaths() != PathRestriction::failed && filterSystemCalls();
}

} // namespace morvane
