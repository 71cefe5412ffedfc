#include "ui/conversation/FoundText.h"

#include "ui/conversation/ConversationLayout.h"

#include <QTextBlock>

namespace morvane {

namespace {

/// Letters before and behind the words.
constexpr int surroundings = 80;

qsizetype segmentOf(const QList<SegmentLayout> &segments, const FoundText &found)
{
    qsizetype nearest = 0;
    for (qsizetype i = 0; i < segments.size(); ++i)
        if (segments.at(i).part == found.part && segments.at(i).segment.from <= found.from)
            nearest = i;
    return nearest;
}

QString lineAround(const QTextDocument &document, int from, int length)
{
    const QTextBlock block = document.findBlock(from);
    const QString text = block.text();
    const int inBlock = from - block.position();
    const int start = qMax(0, inBlock - surroundings);
    const int end = qMin<int>(static_cast<int>(text.size()), inBlock + length + surroundings);
    return text.sliced(start, qMax(0, end - start)).simplified();
}

} // namespace

MatchPlace placeOf(ConversationLayout &layout, const FoundText &found, const QString &words)
{
    const ConversationItem item{.kind = ConversationItem::Kind::message, .index = found.message};
    const qsizetype segment = segmentOf(layout.row(item).segments, found);
    const QTextDocument &document = layout.document(item, segment);
    const QString text = document.toRawText();
    qsizetype at = text.indexOf(words, 0, Qt::CaseInsensitive);
    for (int i = 0; i < found.occurrence && at >= 0; ++i)
        at = text.indexOf(words, at + words.size(), Qt::CaseInsensitive);
    const int from = static_cast<int>(qMax<qsizetype>(0, at));
    const int length = at < 0 ? 0 : static_cast<int>(words.size());
    const auto place = [&](int position) {
        return TextPlace{.item = item, .position = {.segment = segment, .position = position}};
    };
    return {.from = place(from), .to = place(from + length), .line = lineAround(document, from, length)};
}

} // namespace morvane
