#include "ui/conversation/ReadingAnchor.h"

#include "ui/conversation/ConversationLayout.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <limits>

namespace morvane {

namespace {

constexpr qsizetype wordsLength = 40;
/// Segments on both sides in which a line may have got through formatting.
constexpr qsizetype reach = 2;

/// The letters and digits of a text, which formatting leaves alone, with their places.
struct Letters {
    QString text;
    QList<int> places;
};

Letters lettersOf(QStringView text)
{
    Letters letters;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isLetterOrNumber()) {
            letters.text += text[i];
            letters.places += static_cast<int>(i);
        }
    }
    return letters;
}

qsizetype letterCount(QStringView text)
{
    return std::count_if(text.begin(), text.end(), [](QChar unit) { return unit.isLetterOrNumber(); });
}

/// The line of a document in which `position` lies, from the document's top.
struct Line {
    int start = 0;
    double top = 0;
    double height = 0;
};

Line lineOf(const QTextDocument &document, int position)
{
    const QTextBlock block = document.findBlock(position);
    const double blockTop = document.documentLayout()->blockBoundingRect(block).top();
    const QTextLine line = block.layout()->lineForTextPosition(position - block.position());
    if (!line.isValid())
        return {block.position(), blockTop, 0};
    return {block.position() + line.textStart(), blockTop + line.y(), line.height()};
}

} // namespace

ScrollAnchor ReadingAnchor::lineAt(const ConversationItem &item, qsizetype segment, int textTop,
                                   int offset) const
{
    const QTextDocument &document = *m_layout.laidOut(item, segment);
    const auto lineNear = [&document](double y) {
        return lineOf(document, qMax(0, document.documentLayout()->hitTest({0, y}, Qt::FuzzyHit)));
    };
    const double y = qMax(0, offset - textTop);
    Line line = lineNear(y);
    // A line of which most is out of sight is not the one that is read.
    if (line.top + line.height / 2 < y)
        line = lineNear(y + line.height);
    const SegmentLayout &layout = m_layout.peek(item).segments.at(segment);
    const QString text = document.toRawText();
    return {.item = item,
            .part = layout.part,
            .from = layout.segment.from,
            .position = line.start,
            .words = lettersOf(QStringView(text).sliced(line.start)).text.left(wordsLength),
            .before = letterCount(QStringView(text).first(line.start)),
            .screenY = textTop + qRound(line.top) - offset};
}

ScrollAnchor ReadingAnchor::at(int offset, int height) const
{
    const ConversationContent &content = m_layout.content();
    const qsizetype firstRow = m_layout.rowAt(offset);
    if (firstRow < 0)
        return {};
    for (qsizetype row = firstRow; row < content.count() && m_layout.top(row) < offset + height; ++row) {
        const ConversationItem item = content.item(row);
        const RowLayout &layout = m_layout.peek(item);
        int top = m_layout.top(row) + m_layout.rowFrame(item).top;
        for (qsizetype i = 0; i < layout.segments.size() && top < offset + height; ++i) {
            const SegmentLayout &segment = layout.segments.at(i);
            const bool isVisible = top + segment.height > offset && segment.isMeasured;
            if (isVisible && m_layout.laidOut(item, i) != nullptr) {
                const SegmentFrame frame = m_layout.segmentFrame(item, i);
                return lineAt(item, i, top + frame.gap + frame.header, offset);
            }
            top += segment.height;
        }
    }
    const ConversationItem item = content.item(firstRow);
    const int y = offset - m_layout.top(firstRow);
    if (!m_layout.peek(item).isSplit())
        return {.item = item, .within = static_cast<double>(y) / qMax(1, m_layout.rowHeight(item))};
    const qsizetype index = m_layout.segmentAt(item, y);
    const SegmentLayout &segment = m_layout.peek(item).segments.at(index);
    const int inSegment = y - m_layout.segmentTop(item, index);
    return {.item = item,
            .part = segment.part,
            .from = segment.segment.from,
            .within = static_cast<double>(inSegment) / qMax(1, segment.height)};
}

std::optional<int> ReadingAnchor::offsetOf(ScrollAnchor &anchor)
{
    const qsizetype row = m_layout.content().position(anchor.item);
    if (row < 0)
        return std::nullopt;
    if (anchor.from < 0)
        return m_layout.top(row) + qRound(anchor.within * m_layout.rowHeight(anchor.item)) - anchor.screenY;
    const Place place = find(anchor);
    const SegmentLayout &segment = m_layout.row(anchor.item).segments.at(place.segment);
    anchor.part = segment.part;
    anchor.from = segment.segment.from;
    anchor.position = place.position;
    const SegmentFrame frame = m_layout.segmentFrame(anchor.item, place.segment);
    double inSegment = anchor.within * segment.height;
    if (place.position >= 0) {
        const QTextDocument &document = m_layout.document(anchor.item, place.segment);
        inSegment = frame.gap + frame.header + lineOf(document, place.position).top;
    }
    return m_layout.top(row) + m_layout.segmentTop(anchor.item, place.segment) + qRound(inSegment) -
           anchor.screenY;
}

ReadingAnchor::Place ReadingAnchor::find(const ScrollAnchor &anchor)
{
    const auto &segments = m_layout.row(anchor.item).segments;
    for (qsizetype i = 0; i < segments.size(); ++i) {
        if (segments.at(i).part != anchor.part || segments.at(i).segment.from != anchor.from)
            continue;
        if (anchor.position < 0)
            return {i, -1};
        const QString text = m_layout.document(anchor.item, i).toRawText();
        const bool isThere =
            anchor.position <= text.size() &&
            lettersOf(QStringView(text).sliced(anchor.position)).text.startsWith(anchor.words);
        if (isThere)
            return {i, anchor.position};
    }
    return search(anchor);
}

ReadingAnchor::Place ReadingAnchor::search(const ScrollAnchor &anchor)
{
    // By reference this would change under the search: looking into a segment lays it out.
    const QList<SegmentLayout> segments = m_layout.row(anchor.item).segments;
    const qsizetype source = anchor.from + qMax(0, anchor.position);
    qsizetype nearest = 0;
    for (qsizetype i = 0; i < segments.size(); ++i)
        if (segments.at(i).part == anchor.part && segments.at(i).segment.from <= source)
            nearest = i;
    if (anchor.words.isEmpty())
        return {nearest, 0};

    const QString text = m_layout.content().text(anchor.item);
    const qsizetype wanted =
        letterCount(QStringView(text).first(qMin(anchor.from, text.size()))) + anchor.before;
    Place best{nearest, -1};
    qsizetype smallest = std::numeric_limits<qsizetype>::max();
    for (qsizetype i = qMax<qsizetype>(0, nearest - reach); i < qMin(segments.size(), nearest + reach + 1);
         ++i) {
        if (segments.at(i).part != anchor.part)
            continue;
        const Letters letters = lettersOf(m_layout.document(anchor.item, i).toRawText());
        const qsizetype above =
            letterCount(QStringView(text).first(qMin(segments.at(i).segment.from, text.size())));
        for (qsizetype at = letters.text.indexOf(anchor.words); at >= 0;
             at = letters.text.indexOf(anchor.words, at + 1)) {
            if (const qsizetype distance = std::abs(above + at - wanted); distance < smallest) {
                smallest = distance;
                best = {i, letters.places.at(at)};
            }
        }
    }
    return best;
}

} // namespace morvane
