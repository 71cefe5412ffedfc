#include "ui/controls/WrappedText.h"

#include "ui/markdown/LayoutCost.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTextLayout>
#include <QtMath>
#include <algorithm>
#include <limits>

namespace morvane {

namespace {

struct Lines {
    QStringList texts;
    int width = 0;
    bool isCut = false;
};

Lines linesOf(const WrappedText &wrapped, int width)
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
    Lines lines;
    lines.isCut = isTooLong;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        lines.width = std::max(lines.width, qCeil(line.naturalTextWidth()));
        if (lines.texts.size() + 1 == wrapped.maximumLines &&
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

QSize WrappedText::size(int width) const
{
    const Lines lines = linesOf(*this, std::max(width, 1));
    const int rows = std::max(1, static_cast<int>(lines.texts.size()));
    return {std::min(lines.width, width), rows * QFontMetrics(font).lineSpacing()};
}

int WrappedText::naturalWidth() const
{
    // By the layout that breaks the lines: the font's own sum can be a fraction less.
    constexpr int noLimit = 1'000'000;
    return linesOf({text, font, std::numeric_limits<int>::max(), costliest}, noLimit).width + 1;
}

bool WrappedText::isElided(int width) const
{
    return linesOf(*this, std::max(width, 1)).isCut;
}

void WrappedText::draw(QPainter &painter, const QRect &rect, Qt::Alignment alignment) const
{
    const Lines lines = linesOf(*this, std::max(rect.width(), 1));
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
