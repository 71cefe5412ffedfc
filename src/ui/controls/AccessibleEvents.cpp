#include "ui/controls/AccessibleEvents.h"

#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QVariant>

namespace morvane {

namespace {

constexpr auto silentProperty = "morvaneSilent";
/// A hidden widget got another name. Readers that knew it before are told when it is shown again.
constexpr auto renamedProperty = "morvaneRenamed";
/// Of the application object: the identifier of what was last told of as having the focus.
constexpr auto toldFocusProperty = "morvaneToldFocus";
/// The same, where the toolkit is going to tell of it still.
constexpr auto toldEarlyProperty = "morvaneToldEarly";

void forward(QAccessibleEvent &event)
{
    // Either a handler or the desktop's bridge gets an event; stepping aside is the only way on.
    const QAccessible::UpdateHandler handler = QAccessible::installUpdateHandler(nullptr);
    QAccessible::updateAccessibility(&event);
    QAccessible::installUpdateHandler(handler);
}

bool isOf(const char *property, QAccessibleInterface *focused)
{
    return qApp->property(property).toUInt() == QAccessible::uniqueId(focused);
}

void forwardFocus(QAccessibleInterface *focused)
{
    qApp->setProperty(toldFocusProperty, QAccessible::uniqueId(focused));
    QAccessibleEvent event(focused, QAccessible::Focus);
    forward(event);
}

/// The widget that an event comes from, or in which the row lies that it comes from.
QWidget *sourceOf(const QAccessibleEvent &event)
{
    auto *const widget = qobject_cast<QWidget *>(event.object());
    return widget != nullptr ? widget : widgetOf(event.accessibleInterface());
}

bool isSilenced(const QWidget *widget)
{
    for (; widget != nullptr; widget = widget->isWindow() ? nullptr : widget->parentWidget())
        if (widget->property(silentProperty).isValid())
            return true;
    return false;
}

bool isToldWhileHidden(const QAccessibleEvent &event, const QWidget &widget)
{
    if (widget.isWindow())
        return event.type() == QAccessible::ObjectHide || event.type() == QAccessible::StateChanged;
    // What is hidden in a hidden part was told of with that.
    return event.type() == QAccessible::ObjectHide && widget.parentWidget()->isVisible();
}

/// Whoever was given the focus may have had to hand it back at once. Menus have it without the toolkit's
/// knowledge.
bool isFocusGone(const QAccessibleEvent &event, const QWidget &widget)
{
    return event.type() == QAccessible::Focus && widget.focusPolicy() != Qt::NoFocus && !widget.hasFocus();
}

bool isWorthTelling(const QAccessibleEvent &event, const QWidget *widget)
{
    // Taken in by the list itself before it comes here, and must not be taken in twice.
    if (event.type() == QAccessible::TableModelChanged)
        return false;
    if (widget == nullptr)
        return true;
    if (const auto *bar = qobject_cast<const QScrollBar *>(widget))
        return event.type() == QAccessible::ValueChanged && bar->isSliderDown();
    if (!widget->isVisible())
        return isToldWhileHidden(event, *widget);
    if (isFocusGone(event, *widget))
        return false;
    return widget->isWindow() || !isSilenced(widget);
}

/// What has the focus: of a list that takes it, the current row, and of what shows a document the part of
/// that.
QAccessibleInterface *focusIn(QAccessibleInterface *source)
{
    const bool hasParts =
        source != nullptr && (source->role() == QAccessible::List || source->role() == QAccessible::Client);
    QAccessibleInterface *part = hasParts ? source->focusChild() : nullptr;
    return part != nullptr ? part : source;
}

QAccessibleInterface *currentFocus()
{
    return focusIn(QAccessible::queryAccessibleInterface(QApplication::focusWidget()));
}

bool isOfCaret(const QAccessibleEvent &event)
{
    return event.type() == QAccessible::TextCaretMoved || event.type() == QAccessible::TextSelectionChanged;
}

/// A field that takes the focus tells of its caret before it tells of the focus. A reader then knows where
/// the user is already, and does not say the field's name.
void tellFocusBeforeCaret(const QAccessibleEvent &event, const QWidget *widget)
{
    if (!isOfCaret(event) || widget == nullptr || !widget->hasFocus())
        return;
    QAccessibleInterface *focused = currentFocus();
    if (focused == nullptr || isOf(toldFocusProperty, focused))
        return;
    forwardFocus(focused);
    qApp->setProperty(toldEarlyProperty, QAccessible::uniqueId(focused));
}

/// The same of a field in a document, which does not know yet that it has the focus. A reader asks for the
/// caret when it hears of the focus.
bool comesBeforeFocus(const QAccessibleEvent &event)
{
    QAccessibleInterface *source = isOfCaret(event) ? event.accessibleInterface() : nullptr;
    return source != nullptr && qobject_cast<QWidget *>(source->object()) == nullptr &&
           source->state().editable && !isOf(toldFocusProperty, source);
}

void tell(QAccessibleEvent *event)
{
    QWidget *widget = sourceOf(*event);
    if (!isWorthTelling(*event, widget)) {
        if (event->type() == QAccessible::NameChanged && event->object() == widget && widget != nullptr)
            widget->setProperty(renamedProperty, true);
        return;
    }
    if (event->type() == QAccessible::Focus) {
        QAccessibleInterface *focused = focusIn(event->accessibleInterface());
        // A reader leaves out the first of two alike.
        const bool isTold = focused == nullptr || isOf(toldEarlyProperty, focused);
        qApp->setProperty(toldEarlyProperty, QVariant());
        if (!isTold)
            forwardFocus(focused);
        return;
    }
    if (comesBeforeFocus(*event))
        return;
    tellFocusBeforeCaret(*event, widget);
    forward(*event);
    if (event->type() == QAccessible::ObjectShow && widget != nullptr &&
        widget->property(renamedProperty).isValid()) {
        widget->setProperty(renamedProperty, QVariant());
        QAccessibleEvent renamed(widget, QAccessible::NameChanged);
        forward(renamed);
    }
}

void renew(QWidget *widget)
{
    widget->setProperty(renamedProperty, QVariant());
    if (QAccessibleInterface *known = QAccessible::queryAccessibleInterface(widget))
        QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(known));
}

} // namespace

QWidget *widgetOf(QAccessibleInterface *element)
{
    while (element != nullptr && qobject_cast<QWidget *>(element->object()) == nullptr)
        element = element->parent();
    return element != nullptr ? static_cast<QWidget *>(element->object()) : nullptr;
}

void installAccessibleEventFilter()
{
    QAccessible::installUpdateHandler(&tell);
}

bool isToldToReaders(const QAccessibleEvent &event)
{
    return isWorthTelling(event, sourceOf(event));
}

QAccessible::Id foundDocument()
{
    QAccessibleInterface *found = currentFocus();
    for (QAccessibleInterface *around = found; around != nullptr; around = around->parent())
        if (around->role() == QAccessible::WebDocument)
            found = around;
    return found != nullptr ? QAccessible::uniqueId(found) : 0;
}

void tellFocusAnew()
{
    QAccessibleInterface *focused = currentFocus();
    if (focused != nullptr && !isOf(toldFocusProperty, focused))
        forwardFocus(focused);
}

AccessibleSilence::AccessibleSilence(QWidget *widget) : m_widget(widget)
{
    widget->setProperty(silentProperty, true);
}

AccessibleSilence::~AccessibleSilence()
{
    if (m_widget)
        m_widget->setProperty(silentProperty, QVariant());
}

void renewAccessibility(QWidget *widget)
{
    for (QWidget *part : widget->findChildren<QWidget *>())
        renew(part);
    renew(widget);
}

} // namespace morvane
