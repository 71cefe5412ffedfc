#include "ui/controls/MenuPickerAccessible.h"

#include "ui/controls/MenuPicker.h"

#include <QAbstractItemView>

namespace morvane {

MenuPickerAccessible::MenuPickerAccessible(MenuPicker *picker)
    : QAccessibleWidget(picker, QAccessible::ComboBox)
{
}

MenuPicker &MenuPickerAccessible::picker() const
{
    return *static_cast<MenuPicker *>(widget());
}

bool MenuPickerAccessible::isOpen() const
{
    return picker().view()->isVisible();
}

void *MenuPickerAccessible::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    return QAccessibleWidget::interface_cast(type);
}

int MenuPickerAccessible::childCount() const
{
    return isOpen() ? 1 : 0;
}

QAccessibleInterface *MenuPickerAccessible::child(int index) const
{
    return index == 0 && isOpen() ? QAccessible::queryAccessibleInterface(picker().view()) : nullptr;
}

int MenuPickerAccessible::indexOfChild(const QAccessibleInterface *child) const
{
    return child && child->object() == picker().view() ? 0 : -1;
}

QString MenuPickerAccessible::text(QAccessible::Text type) const
{
    if (type == QAccessible::Value)
        return picker().currentText();
    return QAccessibleWidget::text(type);
}

QAccessible::State MenuPickerAccessible::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.expandable = true;
    state.hasPopup = true;
    state.expanded = isOpen();
    state.collapsed = !state.expanded;
    return state;
}

QStringList MenuPickerAccessible::actionNames() const
{
    return QStringList{showMenuAction(), pressAction()} + QAccessibleWidget::actionNames();
}

void MenuPickerAccessible::doAction(const QString &name)
{
    if (name != showMenuAction() && name != pressAction())
        QAccessibleWidget::doAction(name);
    else if (isOpen())
        picker().hidePopup();
    else
        picker().showPopup();
}

void MenuPickerAccessible::selection(int, int *start, int *end) const
{
    *start = 0;
    *end = 0;
}

QString MenuPickerAccessible::text(int start, int end) const
{
    const QString text = picker().currentText();
    const int last = end < 0 ? static_cast<int>(text.size()) : end;
    return text.mid(start, last - start);
}

int MenuPickerAccessible::characterCount() const
{
    return static_cast<int>(picker().currentText().size());
}

QString MenuPickerAccessible::attributes(int, int *start, int *end) const
{
    *start = 0;
    *end = characterCount();
    return {};
}

} // namespace morvane
