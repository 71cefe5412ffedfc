#include "browser/window/ScrollStrip.h"

#include "ui/controls/FocusInSight.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QWheelEvent>

namespace morvane {

ScrollStrip::ScrollStrip(QWidget *parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto *content = new QWidget;
    m_row = new QHBoxLayout(content);
    m_row->setContentsMargins({});
    m_row->setSpacing(4);
    setWidget(content);
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    content->installEventFilter(this);
    keepFocusInSight(*this);
    connect(horizontalScrollBar(), &QScrollBar::rangeChanged, this, [this] {
        fitHeight();
        showWanted();
    });
}

QSize ScrollStrip::sizeHint() const
{
    const bool scrolls = horizontalScrollBar()->maximum() > 0;
    return {widget()->sizeHint().width(),
            widget()->sizeHint().height() + (scrolls ? horizontalScrollBar()->sizeHint().height() : 0)};
}

QSize ScrollStrip::minimumSizeHint() const
{
    return {0, sizeHint().height()};
}

void ScrollStrip::fitHeight()
{
    setFixedHeight(sizeHint().height());
}

void ScrollStrip::bringIntoSight(QWidget *thing)
{
    m_wanted = thing;
    showWanted();
}

void ScrollStrip::showWanted()
{
    if (!m_wanted)
        return;
    m_row->activate(); // what is new has no place yet
    ensureWidgetVisible(m_wanted, 0, 0);
}

void ScrollStrip::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    fitHeight(); // what came while it was hidden has told nobody
}

void ScrollStrip::wheelEvent(QWheelEvent *event)
{
    m_wanted = nullptr;
    const QPoint turn = event->angleDelta();
    QScrollBar *bar = horizontalScrollBar();
    bar->setValue(bar->value() - (turn.x() != 0 ? turn.x() : turn.y()));
    event->accept();
}

bool ScrollStrip::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        fitHeight();
    if (watched == widget() && event->type() == QEvent::Resize)
        showWanted();
    return QScrollArea::eventFilter(watched, event);
}

} // namespace morvane
