#pragma once

#include "update/ProgramVersion.h"
#include "update/UpdateInfo.h"

namespace morvane {

/// Whether version `a` comes after `b`: number by number between the dots, missing ones and what is no number
/// counting as 0. Only digits count, so that "1.2-beta3" is 1 and 23.
bool isNewer(const QString &a, const QString &b);

/// Whether the manifest offers something to the program that runs: a newer version, or a higher build of the
/// very same one.
bool isOnOffer(const UpdateInfo &update, const ProgramVersion &current);

/// Whether the program that runs must not go on without this update. Never for one that is not on offer, so
/// that an old manifest cannot lock up a newer program.
bool isUpdateRequired(const UpdateInfo &update, const ProgramVersion &current);

} // namespace morvane
