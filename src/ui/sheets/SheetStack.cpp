#include "ui/sheets/SheetStack.h"

#include "ui/controls/AccessibleEvents.h"
#include "ui/sheets/Sheet.h"

#include <QMenuBar>
#include <QVariant>
#include <QWidget>

namespace morvane {

namespace {

/// Marks what was disabled here, so that a part that was disabled before stays so afterwards.
constexpr auto disabledBySheet = "morvaneDisabledBySheet";

const Sheet *topSheet(const QWidget *window)
{
    const Sheet *top = nullptr;
    for (QObject *child : window->children()) {
        const auto *sheet = qobject_cast<const Sheet *>(child);
        if (sheet && sheet->isOpen())
            top = sheet;
    }
    return top;
}

} // namespace

void updateSheetStack(QWidget *window)
{
    const Sheet *top = topSheet(window);
    const auto parts = window->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (QWidget *part : parts) {
        if (part->isWindow() || qobject_cast<QMenuBar *>(part))
            continue;
        const auto *sheet = qobject_cast<const Sheet *>(part);
        const bool isClosedSheet = sheet && !sheet->isOpen();
        const bool isOurs = part->property(disabledBySheet).toBool();
        const bool isBlocked = top && part != top && !isClosedSheet;
        // The dialog tells the reader as much as it needs to know of what lies below.
        const AccessibleSilence silence(part);
        if (isBlocked && !isOurs && !part->testAttribute(Qt::WA_ForceDisabled)) {
            part->setProperty(disabledBySheet, true);
            part->setEnabled(false);
        } else if (!isBlocked && isOurs) {
            part->setProperty(disabledBySheet, QVariant());
            part->setEnabled(true);
        }
    }
}

} // namespace morvane
