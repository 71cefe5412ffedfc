#pragma once

#include "platform/SoundPlayer.h"

#include <chrono>
#include <memory>
#include <thread>

namespace morvane {

/// Plays WAV files as event sounds of the desktop through libcanberra (PulseAudio, PipeWire or ALSA), on a
/// thread of its own that the first sound starts. Without audio nothing is heard and nothing else happens.
class LinuxSoundPlayer final : public SoundPlayer {
public:
    /// `folder` holds the files, "{name}.wav" each.
    explicit LinuxSoundPlayer(QString folder);
    /// Stops what plays. A sound server that hangs is not waited for.
    ~LinuxSoundPlayer() override;

    void play(const QString &name) override;

    /// Blocks until all that was given to play has been heard or has failed, for programs that end with their
    /// sound; at most for `limit`.
    void waitUntilHeard(std::chrono::milliseconds limit) const;

private:
    class Worker;

    QString m_folder;
    std::shared_ptr<Worker> m_worker;
    std::thread m_thread;
};

} // namespace morvane
