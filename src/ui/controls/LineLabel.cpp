#include "ui/controls/LineLabel.h"

#include <QTextDocumentFragment>
#include <algorithm>

namespace morvane {

LineLabel::LineLabel(Qt::TextFormat format, QWidget *parent) : QLabel(parent)
{
    setTextFormat(format);
    setWordWrap(true);
}

QSize LineLabel::sizeHint() const
{
    QLabel line;
    line.setFont(font());
    line.setTextFormat(textFormat());
    line.setContentsMargins(contentsMargins());
    line.setText(text());
    return line.sizeHint();
}

QSize LineLabel::minimumSizeHint() const
{
    const bool isRich = textFormat() == Qt::RichText;
    const QString words = isRich ? QTextDocumentFragment::fromHtml(text()).toPlainText() : text();
    QFont widest = font();
    widest.setBold(isRich); // it may be
    const QFontMetrics metrics(widest);
    int width = 0;
    for (const QString &word : words.simplified().split(u' '))
        width = std::max(width, metrics.horizontalAdvance(word));
    const QMargins margins = contentsMargins();
    return {width + margins.left() + margins.right(), metrics.height() + margins.top() + margins.bottom()};
}

} // namespace morvane
