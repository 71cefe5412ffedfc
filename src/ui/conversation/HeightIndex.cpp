#include "ui/conversation/HeightIndex.h"

#include <algorithm>

namespace morvane {

void HeightIndex::clear()
{
    m_heights.clear();
    m_tops.assign(1, 0);
    m_valid = 0;
}

void HeightIndex::truncate(qsizetype count)
{
    m_heights.resize(static_cast<std::size_t>(count));
    m_tops.resize(static_cast<std::size_t>(count) + 1);
    m_valid = qMin(m_valid, count);
}

void HeightIndex::append(int height)
{
    m_heights.push_back(height);
    m_tops.push_back(0);
}

void HeightIndex::setHeight(qsizetype row, int height)
{
    int &current = m_heights[static_cast<std::size_t>(row)];
    if (current != height) {
        current = height;
        m_valid = std::min(m_valid, row);
    }
}

int HeightIndex::top(qsizetype row) const
{
    updateTops(row);
    return m_tops[static_cast<std::size_t>(row)];
}

qsizetype HeightIndex::rowAt(int y) const
{
    if (m_heights.empty())
        return -1;
    updateTops(count());
    const auto after = std::upper_bound(m_tops.begin(), m_tops.end(), y);
    return std::clamp<qsizetype>(after - m_tops.begin() - 1, 0, count() - 1);
}

void HeightIndex::updateTops(qsizetype upTo) const
{
    for (; m_valid < upTo; ++m_valid) {
        const auto at = static_cast<std::size_t>(m_valid);
        m_tops[at + 1] = m_tops[at] + m_heights[at];
    }
}

} // namespace morvane
