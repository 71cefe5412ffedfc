#pragma once

#include <QWidget>

namespace morvane {

/// Shows `text`, plain or HTML, over `widget` while the pointer rests on it; an empty one shows nothing. For
/// what the accessible name says already: the toolkit's own tool tips are descriptions to assistive
/// technology, which would say it a second time.
void setHoverText(QWidget *widget, const QString &text);

/// What setHoverText() has set.
QString hoverText(const QWidget *widget);

} // namespace morvane
