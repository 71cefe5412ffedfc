#pragma once

#include <QString>

namespace morvane {

/// Plays the program's own short sounds. Main thread.
class SoundPlayer {
public:
    virtual ~SoundPlayer() = default;

    /// Plays the sound with this name ("MorvaneDone", "MorvaneError", "MorvaneCancelled"). Returns at once;
    /// nothing is heard for an unknown name or where there is no audio.
    virtual void play(const QString &name) = 0;
};

} // namespace morvane
