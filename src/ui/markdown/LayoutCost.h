#pragma once

#include <QStringView>

namespace morvane {

/// What it costs to lay out and draw a text, in usual letters: marks, emoji and scripts that are shaped cost
/// many times as much, measured with the toolkit's text layout. Linear, under a nanosecond for a Latin
/// letter.
qsizetype layoutCost(QStringView text);

/// What it costs beyond that where two letters stand side by side: of different scripts they are shaped one
/// by one. The cost of a text is that of its parts and of the seams between them.
qsizetype seamCost(QChar before, QChar after);

/// Length of the longest beginning of `text` that costs no more than `budget`; at least 1 unless the text is
/// empty. Reads no further than that.
qsizetype affordableLength(QStringView text, qsizetype budget);

/// Whether text of so many UTF-16 units is dear: of emoji and marks above all, which cost as much again each
/// time that they are measured or drawn.
inline bool isDear(qsizetype cost, qsizetype units)
{
    return cost > 3 * units;
}

} // namespace morvane
