#include "ui/window/MarkedHeading.h"

#include "ui/theme/AppMark.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int markSize = 64;
constexpr int spacing = 8;

} // namespace

MarkedHeading::MarkedHeading(const QString &text, QWidget *parent)
    : HeadingLabel(text, Level::welcome, parent)
{
    setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    setContentsMargins(0, markSize + spacing, 0, 0);
}

void MarkedHeading::paintEvent(QPaintEvent *event)
{
    HeadingLabel::paintEvent(event);
    QPainter painter(this);
    paintAppMark(painter, QRect((width() - markSize) / 2, 0, markSize, markSize));
}

} // namespace morvane
