#pragma once

#include "ui/markdown/TextSegment.h"

#include <QList>
#include <QRect>
#include <QString>

namespace morvane {

/// The texts that a row shows one below the other. All but the first are lines of a message's own.
enum class RowPart : quint8 { body, attachments, responding, error };

/// A segment with what is known of its place. Heights are estimates until the segment was laid out.
struct SegmentLayout {
    TextSegment segment;
    RowPart part = RowPart::body;
    bool isMeasured = false;
    int lineEnds = 0;     ///< Between the lines of its text.
    int height = 0;       ///< With everything around the text that belongs to the segment.
    int naturalWidth = 0; ///< Of the text, once measured.
};

/// The parts of one row. Without segments while the row was never near the viewport.
struct RowLayout {
    QList<SegmentLayout> segments;
    QString references; ///< Link definitions of a formatted message.

    bool isSplit() const { return !segments.isEmpty(); }
};

/// The space around a segment's text within its row, in logical pixels.
struct SegmentFrame {
    int gap = 0;    ///< Above the segment.
    int header = 0; ///< Above the text, on the segment's own ground.
    int footer = 0; ///< Below the text, on the segment's own ground.
    int left = 0;   ///< From the row's text edge to the text.
    int width = 0;  ///< Of the text.
};

/// Where a row's text stands in the view, relative to the row's top left corner.
struct RowFrame {
    int left = 0;
    int top = 0;
    int width = 0;
    int bottom = 0; ///< Space below the text.
};

} // namespace morvane
