#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

namespace morvane {

/// Whole lines, back to back in one buffer, without their ends.
struct LineBatch {
    QByteArray bytes;
    std::vector<qsizetype> ends; ///< For each line the offset behind its last byte.

    qsizetype count() const { return static_cast<qsizetype>(ends.size()); }
    QByteArrayView line(qsizetype index) const
    {
        const auto position = static_cast<std::size_t>(index);
        const qsizetype begin = index == 0 ? 0 : ends[position - 1];
        return QByteArrayView(bytes).sliced(begin, ends[position] - begin);
    }
};

} // namespace morvane
