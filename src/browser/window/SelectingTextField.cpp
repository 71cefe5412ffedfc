#include "browser/window/SelectingTextField.h"

#include <QFocusEvent>
#include <utility>

namespace morvane {

void SelectingTextField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    // Neither a menu nor another window that was in front for a while is a reason to select anew.
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason)
        return;
    selectAll();
    m_isEntered = event->reason() == Qt::MouseFocusReason;
}

void SelectingTextField::mouseReleaseEvent(QMouseEvent *event)
{
    QLineEdit::mouseReleaseEvent(event);
    // The press has set the caret; but a drag has selected what the user wants.
    if (std::exchange(m_isEntered, false) && !hasSelectedText())
        selectAll();
}

} // namespace morvane
