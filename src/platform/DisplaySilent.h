#pragma once

namespace morvane {

/// Thrown by whatever asks the display or acts on it (ScreenCapture, AccessibilityTree, Applications,
/// InputEvents but for layoutCharacters, InputSource, Clipboard::text), when the display has not answered in
/// its time, or a stop was asked for meanwhile: a program that hangs may have the display to itself. How far
/// it came is not known.
class DisplaySilent {};

} // namespace morvane
