#pragma once

#include "ui/markdown/TextSegment.h"

#include <QList>
#include <QStringView>

namespace morvane {

/// Cuts `text` into plain segments at line ends, and lines that are too long between words. The segments
/// cover the whole text without gaps; an empty text has one empty segment.
///
/// `segments` are those of an earlier, shorter state of the text, or empty: only the last one is cut again,
/// so that a text that grows costs only what is new. Returns the index of the first segment that changed.
qsizetype extendPlainSegments(QList<TextSegment> &segments, QStringView text);

/// Where a text that must be cut within its first `limit` units is best cut: after a line end, else after a
/// blank, else between two characters as a user perceives them, unless one alone is longer. Between 1 and
/// `limit`.
qsizetype cutPosition(QStringView text, qsizetype limit);

} // namespace morvane
