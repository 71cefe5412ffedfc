#include "ui/sheets/Sheet.h"

#include "ui/controls/AccessibleEvents.h"
#include "ui/sheets/SheetCard.h"
#include "ui/theme/ThemeColors.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <algorithm>

namespace morvane {

namespace {

constexpr int widestMargin = 20;

bool isReturn(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

bool isModifier(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt || key == Qt::Key_AltGr ||
           key == Qt::Key_Meta || key == Qt::Key_CapsLock;
}

void tell(QWidget *widget, QAccessible::Event what)
{
    QAccessibleEvent event(widget, what);
    QAccessible::updateAccessibility(&event);
}

bool takesTab(const QWidget &widget, const QWidget *window)
{
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.focusProxy() == nullptr &&
           widget.isEnabled() && widget.isVisibleTo(window);
}

/// Closes the menus of `window` that are open: they would take what is meant for the sheet.
void closePopups(const QWidget &window)
{
    const auto belongsToWindow = [&window](const QWidget *widget) {
        while (widget != nullptr && widget != &window)
            widget = widget->parentWidget();
        return widget != nullptr;
    };
    QWidget *popup = QApplication::activePopupWidget();
    while (popup != nullptr && belongsToWindow(popup) && popup->close())
        popup = QApplication::activePopupWidget();
}

bool isPlain(const QKeyEvent &event)
{
    return (event.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

/// Where nothing of what scrolls can have the focus, this is how the keyboard gets to its end.
void scrollPages(SheetCard &card, const QKeyEvent &event)
{
    if (event.key() == Qt::Key_PageUp || event.key() == Qt::Key_PageDown)
        card.scrollPages(event.key() == Qt::Key_PageUp ? -1 : 1);
}

} // namespace

Sheet::Sheet(QWidget *window, SteadyNow now)
    : QWidget(window), m_card(new SheetCard(this)), m_guard(std::move(now))
{
    hide();
    // Nothing may be dropped onto what lies below either.
    setAcceptDrops(true);
    setFocusPolicy(Qt::NoFocus);
    window->installEventFilter(this);
}

Sheet::~Sheet()
{
    setPhase(Phase::closed);
}

void Sheet::setPhase(Phase phase)
{
    const bool watches = m_phase != Phase::closed;
    m_phase = phase;
    if (watches && phase == Phase::closed)
        qApp->removeEventFilter(this);
    if (!watches && phase != Phase::closed)
        qApp->installEventFilter(this);
}

bool Sheet::isOnTop() const
{
    const Sheet *top = nullptr;
    for (QObject *child : parentWidget()->children())
        if (const auto *sheet = qobject_cast<const Sheet *>(child); sheet != nullptr && sheet->isOpen())
            top = sheet;
    return top == this;
}

void Sheet::openSheet(QWidget *first)
{
    m_guard.restart();
    const bool hadFocus = isOpen() && first->hasFocus();
    if (!isOpen()) {
        closePopups(*parentWidget());
        m_previousFocus = parentWidget()->focusWidget();
        setGeometry(parentWidget()->rect());
        raiseByRank();
        setPhase(Phase::open);
    }
    appear();
    arrange();
    m_card->scrollToStart();
    m_focus = first;
    first->setFocus(Qt::OtherFocusReason);
    if (hadFocus)
        tell(first, QAccessible::Focus);
}

void Sheet::raiseByRank()
{
    raise();
    for (Sheet *other : parentWidget()->findChildren<Sheet *>(Qt::FindDirectChildrenOnly))
        if (other->isOpen() && other->rank() > rank())
            other->raise();
}

void Sheet::appear()
{
    // A reader would take the next request for the one that it has read out already.
    renewAccessibility(m_card);
    {
        const AccessibleSilence silence(this);
        show();
    }
    tell(m_card, QAccessible::ObjectShow);
}

void Sheet::closeSheet()
{
    if (!isOpen())
        return;
    setPhase(m_guard.isQuiet() ? Phase::closed : Phase::leaving);
    m_guard.lingerOn();
    giveFocusBack();
    hide();
}

void Sheet::giveFocusBack()
{
    const auto others = parentWidget()->findChildren<Sheet *>(Qt::FindDirectChildrenOnly);
    for (Sheet *other : others) {
        // A sheet above this one would give the focus back to this one.
        if (other->isOpen() && other->m_previousFocus && isAncestorOf(other->m_previousFocus))
            other->m_previousFocus = m_previousFocus;
    }
    const QWidget *current = parentWidget()->focusWidget();
    if (current && !isAncestorOf(current))
        return;
    if (m_previousFocus && m_previousFocus->isEnabled() && m_previousFocus->isVisibleTo(parentWidget()))
        m_previousFocus->setFocus(Qt::OtherFocusReason);
    else
        focusNextPrevChild(true);
}

bool Sheet::holds(const QWidget &widget)
{
    const auto sheets = widget.window()->findChildren<Sheet *>(Qt::FindDirectChildrenOnly);
    return std::any_of(sheets.begin(), sheets.end(), [&widget](const Sheet *sheet) {
        return sheet->isOpen() && sheet->isOnTop() && sheet->isBehind(&widget);
    });
}

bool Sheet::isBehind(const QWidget *widget) const
{
    return parentWidget()->isAncestorOf(widget) && widget != parentWidget() && widget != this &&
           !isAncestorOf(widget) && qobject_cast<const QMenuBar *>(widget) == nullptr;
}

void Sheet::takeFocusBack()
{
    if (m_focus && isAncestorOf(m_focus) && m_focus->isEnabled() && m_focus->isVisibleTo(this))
        m_focus->setFocus(Qt::OtherFocusReason);
    else
        focusNextPrevChild(true);
}

bool Sheet::focusNextPrevChild(bool next)
{
    if (!isOpen())
        return QWidget::focusNextPrevChild(next);
    QWidget *const focus = parentWidget()->focusWidget();
    QWidget *const start = isAncestorOf(focus) ? focus : this;
    const auto follow = [next](const QWidget *part) {
        return next ? part->nextInFocusChain() : part->previousInFocusChain();
    };
    for (QWidget *part = follow(start); part != start; part = follow(part)) {
        if (!isAncestorOf(part) || !takesTab(*part, this))
            continue;
        part->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        return true;
    }
    return false;
}

bool Sheet::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    if (m_phase == Phase::closed)
        return false;
    auto *widget = qobject_cast<QWidget *>(watched->isWidgetType() ? watched : watched->parent());
    if (m_phase == Phase::leaving)
        return watched == widget && widget->window() == parentWidget() && dropsSecondAnswer(*event);
    switch (event->type()) {
    case QEvent::Shortcut:
        return isBehind(widget) && isOnTop();
    case QEvent::FocusIn:
        return watched == widget && isOnTop() && handleFocusIn(*widget);
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::LayoutRequest:
        return watched == widget && (widget == this || isAncestorOf(widget)) && isOnTop() &&
               handleInput(*event);
    default:
        return false;
    }
}

bool Sheet::dropsSecondAnswer(QEvent &event)
{
    const bool isKey = event.type() == QEvent::KeyPress || event.type() == QEvent::ShortcutOverride;
    if (!isKey && event.type() != QEvent::MouseButtonPress && event.type() != QEvent::MouseButtonDblClick)
        return false;
    const int key = isKey ? static_cast<const QKeyEvent &>(event).key() : 0;
    const bool couldAnswer = !isKey || isReturn(key) || key == Qt::Key_Escape || key == Qt::Key_Space;
    const auto sheets = parentWidget()->findChildren<Sheet *>(Qt::FindDirectChildrenOnly);
    const bool isOver = !couldAnswer || std::any_of(sheets.begin(), sheets.end(), [](const Sheet *sheet) {
        return sheet->isOpen(); // it has a guard of its own
    });
    if (!isModifier(key) && (isOver || m_guard.takesInput()))
        setPhase(Phase::closed);
    const bool drops = m_phase == Phase::leaving && couldAnswer;
    if (drops)
        event.accept(); // or it would be a shortcut
    return drops;
}

bool Sheet::handleFocusIn(QWidget &widget)
{
    if (isBehind(&widget)) {
        takeFocusBack();
        return true;
    }
    if (isAncestorOf(&widget)) {
        m_focus = &widget;
        // The scroll area follows the focus only where it came from within.
        m_card->bringIntoSight(&widget);
    }
    return false;
}

bool Sheet::handleInput(QEvent &event)
{
    switch (event.type()) {
    case QEvent::KeyPress:
        return handleKeyPress(static_cast<const QKeyEvent &>(event));
    case QEvent::ShortcutOverride:
        if (!overridesShortcut(static_cast<const QKeyEvent &>(event)))
            return false;
        event.accept();
        return true;
    case QEvent::LayoutRequest:
        QMetaObject::invokeMethod(this, &Sheet::arrange, Qt::QueuedConnection);
        return false;
    default:
        return !m_guard.takesInput();
    }
}

bool Sheet::handleKeyPress(const QKeyEvent &event)
{
    const int key = event.key();
    if (isModifier(key))
        return false;
    if (!m_guard.takesInput())
        return true;
    if (!isReturn(key) && key != Qt::Key_Escape)
        return false;
    // A key that is held down was pressed for something else.
    if (event.isAutoRepeat() || !isPlain(event))
        return true;
    if (key == Qt::Key_Escape) {
        escapePressed();
    } else if (auto *button = qobject_cast<QPushButton *>(parentWidget()->focusWidget());
               button && isAncestorOf(button)) {
        button->click();
    } else {
        returnPressed();
    }
    return true;
}

bool Sheet::overridesShortcut(const QKeyEvent &event) const
{
    return isReturn(event.key()) || event.key() == Qt::Key_Escape;
}

bool Sheet::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        scrollPages(*m_card, static_cast<const QKeyEvent &>(*event));
        event->accept();
        return true;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
        // Nothing passes through to the window.
        event->accept();
        return true;
    default:
        return QWidget::event(event);
    }
}

void Sheet::resizeEvent(QResizeEvent *)
{
    arrange();
}

void Sheet::arrange()
{
    const int margin = std::min({widestMargin, width() / 40, height() / 40});
    const QSize room = size() - QSize(2 * margin, 2 * margin);
    m_card->fitInto(room);
    m_card->move((width() - m_card->width()) / 2, (height() - m_card->height()) / 2);
}

void Sheet::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QColor shade = Qt::black;
    shade.setAlphaF(ThemeColors::fromPalette(palette()).isDark() ? 0.5F : 0.4F);
    painter.fillRect(rect(), shade);
}

} // namespace morvane
