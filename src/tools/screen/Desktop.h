#pragma once

#include <memory>

namespace morvane {

class AccessibilityTree;
class Applications;
class Clipboard;
class InputEvents;
class ScreenCapture;
class SequenceClock;
class TextRecognizer;

/// What the tools that see and act on the screen work with. Shared with the work on background threads, which
/// may outlast whoever began it.
struct Desktop {
    std::shared_ptr<ScreenCapture> screen;
    std::shared_ptr<TextRecognizer> recognizer;
    std::shared_ptr<AccessibilityTree> elements;
    std::shared_ptr<Applications> applications;
    std::shared_ptr<InputEvents> input;
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<SequenceClock> clock;
};

} // namespace morvane
