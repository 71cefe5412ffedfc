#include "ui/sheets/HeldButtons.h"

#include <utility>

namespace morvane {

void HeldButtons::hold(const QList<QAbstractButton *> &buttons)
{
    for (QAbstractButton *button : buttons) {
        if (button->isCheckable() || button->signalsBlocked())
            continue;
        button->blockSignals(true);
        m_buttons.append(button);
    }
}

void HeldButtons::release()
{
    for (const QPointer<QAbstractButton> &button : std::exchange(m_buttons, {}))
        if (button)
            button->blockSignals(false);
}

} // namespace morvane
