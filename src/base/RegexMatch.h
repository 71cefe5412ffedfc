#pragma once

#include <QList>
#include <QStringView>

namespace morvane {

/// One match of an expression in a text, in UTF-16 offsets.
class RegexMatch {
public:
    struct Range {
        qsizetype start = -1; ///< -1 for a group that took no part in the match.
        qsizetype end = -1;
    };

    explicit RegexMatch(QList<Range> groups) : m_groups(std::move(groups)) {}

    qsizetype start() const { return m_groups.front().start; }
    qsizetype end() const { return m_groups.front().end; }

    /// Number of capture groups, the whole match not counted.
    qsizetype groupCount() const { return m_groups.size() - 1; }

    /// Where group `group` matched; group 0 is the whole match.
    Range range(qsizetype group) const { return m_groups.at(group); }

    /// The part of `text` (the one that was searched) in a group; null for a group that took no part.
    QStringView captured(QStringView text, qsizetype group = 0) const;

private:
    QList<Range> m_groups;
};

} // namespace morvane
