#pragma once

#include <QtGlobal>
#include <random>

namespace morvane {

/// Chance that comes again with the same seed.
class Dice {
public:
    explicit Dice(unsigned seed) : m_engine(seed) {}

    /// 0 to `sides` - 1.
    int roll(qsizetype sides) { return static_cast<int>(m_engine() % static_cast<unsigned>(sides)); }
    bool oneIn(int sides) { return roll(sides) == 0; }

private:
    std::mt19937 m_engine;
};

} // namespace morvane
