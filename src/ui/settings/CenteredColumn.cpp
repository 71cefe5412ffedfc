#include "ui/settings/CenteredColumn.h"

#include <QHBoxLayout>
#include <QScrollArea>

namespace morvane {

QScrollArea *scrollCentered(QWidget *column)
{
    auto *content = new QWidget;
    auto *row = new QHBoxLayout(content);
    row->setContentsMargins(0, 0, 0, 0);
    row->addStretch(1);
    row->addWidget(column, 100);
    row->addStretch(1);
    auto *scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(content);
    return scroll;
}

} // namespace morvane
