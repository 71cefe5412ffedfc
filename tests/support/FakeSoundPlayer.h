#pragma once

#include "platform/SoundPlayer.h"

#include <QStringList>

namespace morvane {

/// Remembers what was played.
class FakeSoundPlayer final : public SoundPlayer {
public:
    void play(const QString &name) override { played.append(name); }

    QStringList played;
};

} // namespace morvane
