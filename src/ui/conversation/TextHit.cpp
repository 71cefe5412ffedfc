#include "ui/conversation/TextHit.h"

#include "ui/conversation/ConversationLayout.h"

#include <QAbstractTextDocumentLayout>

namespace morvane {

std::optional<TextHit> hitTest(ConversationLayout &layout, const QPoint &place)
{
    const qsizetype row = layout.rowAt(place.y());
    if (row < 0)
        return std::nullopt;
    const ConversationItem item = layout.content().item(row);
    const int inRow = place.y() - layout.top(row);
    const qsizetype segment = layout.segmentAt(item, inRow);
    const RowFrame rowFrame = layout.rowFrame(item);
    const SegmentFrame frame = layout.segmentFrame(item, segment);
    const QPointF inText(place.x() - rowFrame.left - frame.left,
                         inRow - layout.segmentTop(item, segment) - frame.gap - frame.header);
    const QAbstractTextDocumentLayout *text = layout.document(item, segment).documentLayout();
    const int position = qMax(0, text->hitTest(inText, Qt::FuzzyHit));
    return TextHit{.place = {.item = item, .position = {.segment = segment, .position = position}},
                   .link = text->anchorAt(inText)};
}

} // namespace morvane
