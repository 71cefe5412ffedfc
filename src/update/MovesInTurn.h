#pragma once

#include <QString>

namespace morvane {

/// What became of two moves that follow each other: error numbers of the system, 0 where all went well.
struct MovesInTurn {
    int first = 0;
    int second = 0; ///< The first was undone then, where that was possible.
};

/// Moves what is at `place` to `away`, and then `next` to `place`. In a process of its own, which goes on
/// where this one is killed in between. Blocks; any thread.
MovesInTurn moveInTurn(const QString &place, const QString &away, const QString &next);

} // namespace morvane
