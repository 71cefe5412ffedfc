#include "ui/window/DetailColumn.h"

#include "ui/window/ComposerView.h"

#include <QEvent>
#include <QVBoxLayout>
#include <utility>

namespace morvane {

namespace {

int heightOf(const QWidget &part, int width)
{
    return part.hasHeightForWidth() ? part.heightForWidth(width) : part.sizeHint().height();
}

} // namespace

DetailColumn::DetailColumn(const QList<QWidget *> &parts, QWidget *conversation, ComposerView *composer)
    : m_parts(parts), m_conversation(conversation), m_composer(composer)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    for (QWidget *part : parts)
        column->addWidget(part, part == conversation ? 1 : 0);
}

bool DetailColumn::event(QEvent *event)
{
    const bool isHandled = QWidget::event(event);
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Resize)
        fitComposer();
    return isHandled;
}

void DetailColumn::fitComposer()
{
    int room = height() - m_conversation->minimumSizeHint().height();
    for (const QWidget *part : std::as_const(m_parts))
        if (part != m_conversation && part != m_composer && !part->isHidden())
            room -= heightOf(*part, width());
    m_composer->setRoom(room);
}

} // namespace morvane
