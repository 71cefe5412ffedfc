#pragma once

#include <QtGlobal>
#include <vector>

namespace morvane {

/// The heights of a column of rows, with quick answers to where a row stands and which row stands at a place.
/// Sums are brought up to date lazily from the first row that changed, so that changes at the end, where a
/// conversation grows, cost nothing that depends on the number of rows.
class HeightIndex {
public:
    qsizetype count() const { return static_cast<qsizetype>(m_heights.size()); }
    void clear();
    void append(int height);
    /// Drops all rows but the first `count`.
    void truncate(qsizetype count);
    void setHeight(qsizetype row, int height);

    int height(qsizetype row) const { return m_heights[static_cast<std::size_t>(row)]; }
    /// Distance from the top of the first row to that of `row`; `row` may equal count().
    int top(qsizetype row) const;
    int total() const { return top(count()); }
    /// The row that covers `y`; the nearest one for a `y` outside. -1 without rows.
    qsizetype rowAt(int y) const;

private:
    void updateTops(qsizetype upTo) const;

    std::vector<int> m_heights;
    mutable std::vector<int> m_tops{0}; ///< One more than heights; valid up to and with m_valid.
    mutable qsizetype m_valid = 0;
};

} // namespace morvane
