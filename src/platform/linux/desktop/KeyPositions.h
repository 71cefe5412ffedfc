#pragma once

#include <cstdint>
#include <optional>
#include <xkbcommon/xkbcommon.h>

namespace morvane {

/// The X key code of the key at the place that a virtual key code means on a US keyboard; nothing for the
/// number pad and for keys that keyboards here do not have.
std::optional<uint8_t> keyAtPosition(int virtualKeyCode);

/// What a key of the number pad types: its meaning must not hang on whether Num Lock is on.
std::optional<xkb_keysym_t> numberPadSymbol(int virtualKeyCode);

} // namespace morvane
