#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <QMap>
#include <xkbcommon/xkbcommon.h>

namespace morvane {

/// Puts the symbols on their keys, XKB_KEY_NoSymbol for nothing, in one change for all programs: each is told
/// of every change, and a window manager takes tens of milliseconds for it. Does what a user does who sets
/// the layout of all keyboards; what is on other keys stays as each keyboard has it. Nothing happens where
/// the server does not know keyboards of that kind. Returns before it is done. Throws DisplaySilent.
void putOnKeys(const XDisplay &display, const QMap<uint8_t, xkb_keysym_t> &symbols);

} // namespace morvane
