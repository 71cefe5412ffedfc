#include "ui/controls/WrappedText.h"

#include "ui/markdown/LayoutCost.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>
#include <algorithm>

namespace morvane {

namespace {

/// The width of a text that is not to be wrapped.
constexpr int noLimit = 1'000'000;
/// Widths that are remembered; a window that is resized asks for many.
constexpr qsizetype mostKnown = 8;

WrappedLines linesOf(const WrappedText &wrapped, int width)
{
    const qsizetype affordable = affordableLength(wrapped.text, wrapped.costliest);
    const bool isTooLong = wrapped.text.size() > affordable;
    QString text = isTooLong ? wrapped.text.first(affordable) + u'…' : wrapped.text;
    text.replace(u'\n', QChar::LineSeparator);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(text, wrapped.font);
    layout.setTextOption(option);

    const QFontMetrics metrics(wrapped.font);
    WrappedLines lines;
    lines.isCut = isTooLong;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        lines.width = std::max(lines.width, qCeil(line.naturalTextWidth()));
        if (width < noLimit && lines.texts.size() + 1 == wrapped.maximumLines &&
            line.textStart() + line.textLength() < text.size()) {
            QString rest = text.mid(line.textStart());
            rest.replace(QChar::LineSeparator, u' ');
            lines.texts.append(metrics.elidedText(rest, Qt::ElideRight, width));
            lines.width = width;
            lines.isCut = true;
            break;
        }
        QString shown = text.mid(line.textStart(), line.textLength());
        if (shown.endsWith(QChar::LineSeparator))
            shown.chop(1);
        lines.texts.append(shown);
    }
    layout.endLayout();
    return lines;
}

} // namespace

const WrappedLines &WrappedText::lines(int width) const
{
    const int asked = std::max(width, 1);
    if (const auto found = known.constFind(asked); found != known.constEnd())
        return *found;
    const auto unwrapped = known.constFind(noLimit);
    if (unwrapped != known.constEnd() && unwrapped->width < asked && unwrapped->texts.size() <= maximumLines)
        return *unwrapped;
    if (known.size() >= mostKnown)
        known.clear();
    return *known.insert(asked, linesOf(*this, asked));
}

QSize WrappedText::size(int width) const
{
    const WrappedLines &lines = this->lines(width);
    const int rows = std::max(1, static_cast<int>(lines.texts.size()));
    return {std::min(lines.width, width), rows * QFontMetrics(font).lineSpacing()};
}

int WrappedText::naturalWidth() const
{
    // By the layout that breaks the lines: the font's own sum can be a fraction less.
    return lines(noLimit).width + 1;
}

bool WrappedText::isElided(int width) const
{
    return lines(width).isCut;
}

void WrappedText::draw(QPainter &painter, const QRect &rect, Qt::Alignment alignment) const
{
    const WrappedLines &lines = this->lines(rect.width());
    const int lineHeight = QFontMetrics(font).lineSpacing();
    const int height = static_cast<int>(lines.texts.size()) * lineHeight;
    QRect line(rect.left(), rect.top() + std::max(0, rect.height() - height) / 2, rect.width(), lineHeight);
    painter.setFont(font);
    for (const QString &shown : lines.texts) {
        painter.drawText(line, static_cast<int>(alignment | Qt::AlignVCenter) | Qt::TextSingleLine, shown);
        line.translate(0, lineHeight);
    }
}

} // namespace morvane
