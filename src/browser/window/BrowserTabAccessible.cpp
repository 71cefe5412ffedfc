#include "browser/window/BrowserTabAccessible.h"

#include "browser/window/BrowserTabButton.h"

namespace morvane {

namespace {

QAccessibleInterface *createInterface(const QString &, QObject *object)
{
    auto *button = qobject_cast<BrowserTabButton *>(object);
    return button ? new BrowserTabAccessible(button) : nullptr;
}

} // namespace

BrowserTabAccessible::BrowserTabAccessible(BrowserTabButton *button)
    : QAccessibleWidget(button, QAccessible::PageTab)
{
}

void BrowserTabAccessible::install()
{
    QAccessible::installFactory(&createInterface);
}

BrowserTabButton &BrowserTabAccessible::button() const
{
    return *static_cast<BrowserTabButton *>(widget());
}

QAccessible::State BrowserTabAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.selectable = true;
    state.selected = button().isChecked();
    return state;
}

QStringList BrowserTabAccessible::actionNames() const
{
    return QStringList{pressAction()} + QAccessibleWidget::actionNames();
}

void BrowserTabAccessible::doAction(const QString &name)
{
    if (name == pressAction())
        button().click();
    else
        QAccessibleWidget::doAction(name);
}

} // namespace morvane
