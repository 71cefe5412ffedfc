#pragma once

#include "recognition/GrayPicture.h"

namespace morvane {

/// The picture with dark text on a light ground, as the engine takes light text on a dark one for the ground.
/// Each small part is looked at by itself, since a screen has windows of both kinds beside each other.
GrayPicture plainPicture(const GrayPicture &picture);

} // namespace morvane
