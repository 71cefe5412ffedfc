#include "ui/conversation/ConversationPainter.h"

#include "ui/markdown/SegmentText.h"
#include "ui/theme/AppMark.h"
#include "ui/theme/Icons.h"
#include "ui/theme/MorvaneStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QTextCursor>

namespace morvane {

namespace {

using Kind = ConversationItem::Kind;

struct StepLook {
    Symbol symbol;
    QColor color;
};

StepLook lookOf(ActivityStep::Kind kind, const ThemeColors &colors)
{
    switch (kind) {
    case ActivityStep::Kind::info:
        return {Symbol::arrowRight, colors.secondaryText};
    case ActivityStep::Kind::tool:
        return {Symbol::wrench, colors.accent};
    case ActivityStep::Kind::success:
        return {Symbol::checkCircle, colors.success};
    case ActivityStep::Kind::error:
        return {Symbol::crossCircle, colors.error};
    }
    Q_UNREACHABLE();
}

void drawSymbol(QPainter &painter, Symbol symbol, const QColor &color, const QPoint &at, int size)
{
    painter.drawPixmap(at, symbolPixmap(symbol, size, color, painter.device()->devicePixelRatioF()));
}

} // namespace

void ConversationPainter::paint(QPainter &painter, const QRect &exposed, const State &state)
{
    const ConversationContent &content = m_layout.content();
    const qsizetype first = m_layout.rowAt(state.offset + exposed.top());
    for (qsizetype row = qMax<qsizetype>(0, first); row < content.count(); ++row) {
        const int top = m_layout.top(row) - state.offset;
        if (top > exposed.bottom())
            break;
        const ConversationItem item = content.item(row);
        paintRow(painter, item, top, exposed);
        if (row == state.focusRow) {
            const QRect around(m_layout.columnLeft() - style().margin / 2, top,
                               m_layout.columnWidth() + style().margin, m_layout.rowHeight(item));
            MorvaneStyle::drawFocusRing(painter, around, ConversationStyle::codeRadius, m_palette);
        }
    }
}

void ConversationPainter::paintRow(QPainter &painter, const ConversationItem &item, int top,
                                   const QRect &exposed)
{
    if (item.kind == Kind::message)
        paintGround(painter, item, top);
    else
        paintActivity(painter, item, top);
    paintSegments(painter, item, top, exposed);
}

void ConversationPainter::paintGround(QPainter &painter, const ConversationItem &item, int top) const
{
    const RowFrame frame = m_layout.rowFrame(item);
    const int half = style().rowGap / 2;
    if (m_layout.isUser(item)) {
        const int padding = style().bubblePadding;
        const QRect bubble(frame.left - padding, top + half, frame.width + 2 * padding,
                           m_layout.rowHeight(item) - 2 * half);
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(style().colors.userBubble);
        painter.drawRoundedRect(bubble, ConversationStyle::bubbleRadius, ConversationStyle::bubbleRadius);
        painter.restore();
    } else {
        const int rise = (style().markSize - style().lineHeight) / 2;
        paintAppMark(painter, QRectF(m_layout.columnLeft(), top + frame.top - rise, style().markSize,
                                     style().markSize));
    }
}

void ConversationPainter::paintActivity(QPainter &painter, const ConversationItem &item, int top) const
{
    const ConversationContent &content = m_layout.content();
    const RowFrame frame = m_layout.rowFrame(item);
    const int symbolLeft = m_layout.columnLeft() + style().markSize + style().markGap;
    const int symbolTop = top + frame.top + (style().captionLineHeight - style().symbolSize) / 2;
    if (item.kind == Kind::activityHeader) {
        drawSymbol(painter, Symbol::list, style().colors.secondaryText, {symbolLeft, symbolTop},
                   style().symbolSize);
        const int side = style().symbolSize;
        paintFoldMark(painter, {frame.left + frame.width - side, symbolTop}, side);
        const QRect count(frame.left, top + frame.top, frame.width - side - style().markGap / 2,
                          style().captionLineHeight);
        painter.setFont(style().captionFont);
        painter.setPen(style().colors.secondaryText);
        painter.drawText(count, Qt::AlignRight | Qt::AlignVCenter, QString::number(content.stepCount()));
        return;
    }
    const ActivityStep &step = content.step(item);
    const StepLook look = lookOf(step.kind, style().colors);
    drawSymbol(painter, look.symbol, look.color, {symbolLeft, symbolTop}, style().symbolSize);
    if (m_layout.timeWidth() == 0)
        return;
    const int right = m_layout.columnLeft() + m_layout.columnWidth();
    const QRect time(right - style().timeWidth, top + frame.top, style().timeWidth,
                     style().captionLineHeight);
    painter.setFont(style().captionFont);
    painter.setPen(style().colors.secondaryText);
    painter.drawText(time, Qt::AlignRight | Qt::AlignVCenter, ConversationContent::timeText(step));
}

void ConversationPainter::paintFoldMark(QPainter &painter, const QPoint &at, int side) const
{
    painter.save();
    painter.translate(at + QPointF(side, side) / 2);
    if (m_layout.content().isActivityFolded())
        painter.rotate(-90);
    drawSymbol(painter, Symbol::chevronDown, style().colors.secondaryText, {-side / 2, -side / 2}, side);
    painter.restore();
}

void ConversationPainter::paintSegments(QPainter &painter, const ConversationItem &item, int top,
                                        const QRect &exposed)
{
    const RowLayout &row = m_layout.peek(item);
    const RowFrame rowFrame = m_layout.rowFrame(item);
    int y = top + rowFrame.top;
    for (qsizetype i = 0; i < row.segments.size() && y <= exposed.bottom(); ++i) {
        const SegmentLayout &segment = row.segments.at(i);
        if (y + segment.height >= exposed.top()) {
            const SegmentFrame frame = m_layout.segmentFrame(item, i);
            if (segment.segment.kind == TextSegment::Kind::code)
                paintCodeGround(painter, item, i, y);
            if (QTextDocument *document = m_layout.laidOut(item, i)) {
                const QPoint origin(rowFrame.left + frame.left, y + frame.gap + frame.header);
                const auto range = m_selection.range(item, i);
                if (SegmentPicture *picture = m_layout.picture(item, i))
                    paintPicture(painter, *document, *picture, range, origin, groundOf(item, segment));
                else
                    paintDocument(painter, *document, range, origin, exposed);
            }
        }
        y += segment.height;
    }
}

void ConversationPainter::paintCodeGround(QPainter &painter, const ConversationItem &item, qsizetype index,
                                          int top) const
{
    const SegmentLayout &segment = m_layout.peek(item).segments.at(index);
    const SegmentFrame frame = m_layout.segmentFrame(item, index);
    const int padding = style().codePadding;
    const int left = m_layout.rowFrame(item).left + frame.left - padding;
    const QRect ground(left, top + frame.gap, frame.width + 2 * padding, segment.height - frame.gap);
    constexpr int radius = ConversationStyle::codeRadius;

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(style().colors.codeGround);
    // Only the block's own ends are round: the pieces between them stand edge to edge.
    painter.setClipRect(ground);
    painter.drawRoundedRect(ground.adjusted(0, segment.segment.startsBlock ? 0 : -radius, 0,
                                            segment.segment.endsBlock ? 0 : radius),
                            radius, radius);
    if (segment.segment.startsBlock) {
        const QRect header(left + padding, ground.top(), frame.width, style().codeHeaderHeight);
        painter.setFont(style().captionFont);
        painter.setPen(style().colors.secondaryText);
        const QString language = codeLanguage(m_layout.content().text(item), segment.segment);
        const QFontMetrics metrics(style().captionFont);
        painter.drawText(header, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(language, Qt::ElideRight, header.width() / 2));
    }
    painter.restore();
}

QColor ConversationPainter::groundOf(const ConversationItem &item, const SegmentLayout &segment) const
{
    if (segment.segment.kind == TextSegment::Kind::code)
        return style().colors.codeGround;
    return m_layout.isUser(item) ? style().colors.userBubble : m_palette.color(QPalette::Base);
}

void ConversationPainter::paintPicture(QPainter &painter, QTextDocument &document, SegmentPicture &picture,
                                       const std::optional<SelectedRange> &range, const QPoint &origin,
                                       const QColor &ground) const
{
    // Marks without a letter have no width of their own.
    const int width = qMax(style().lineHeight, qCeil(document.textWidth()));
    const QSize size(width, qCeil(document.size().height()));
    const qreal ratio = painter.device()->devicePixelRatioF();
    if (picture.pixmap.isNull() || picture.pixmap.devicePixelRatioF() != ratio || picture.selected != range) {
        picture.pixmap = QPixmap(size * ratio);
        picture.pixmap.setDevicePixelRatio(ratio);
        picture.selected = range;
        // On its own ground, so that letters look as they do where they are drawn directly.
        picture.pixmap.fill(ground);
        QPainter inner(&picture.pixmap);
        inner.setPen(painter.pen());
        inner.setFont(painter.font());
        paintDocument(inner, document, range, {}, QRect({}, size));
    }
    painter.drawPixmap(origin, picture.pixmap);
}

void ConversationPainter::paintDocument(QPainter &painter, QTextDocument &document,
                                        const std::optional<SelectedRange> &range, const QPoint &origin,
                                        const QRect &exposed) const
{
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = m_palette;
    context.palette.setColor(QPalette::Text, style().colors.text);
    context.clip = QRectF(exposed).translated(-origin);
    if (range) {
        QAbstractTextDocumentLayout::Selection selection;
        const int last = document.characterCount() - 1;
        selection.cursor = QTextCursor(&document);
        selection.cursor.setPosition(qMin(range->from, last));
        selection.cursor.setPosition(range->to < 0 ? last : qMin(range->to, last), QTextCursor::KeepAnchor);
        selection.format.setBackground(style().colors.selection);
        selection.format.setForeground(style().colors.onSelection);
        context.selections.append(selection);
    }
    painter.save();
    painter.translate(origin);
    document.documentLayout()->draw(&painter, context);
    painter.restore();
}

} // namespace morvane
