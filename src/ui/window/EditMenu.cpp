#include "ui/window/EditMenu.h"

#include "ui/controls/LineFieldMenu.h"
#include "ui/conversation/ChatScrollView.h"

#include <QAbstractItemView>
#include <QLineEdit>
#include <QPlainTextEdit>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

bool isPossibleIn(const QPlainTextEdit &field, const QByteArray &command)
{
    const bool isEditable = !field.isReadOnly();
    if (command == "undo")
        return isEditable && field.document()->isUndoAvailable();
    if (command == "redo")
        return isEditable && field.document()->isRedoAvailable();
    if (command == "cut")
        return isEditable && field.textCursor().hasSelection();
    if (command == "copy")
        return field.textCursor().hasSelection();
    if (command == "selectAll")
        return !field.document()->isEmpty();
    return isEditable;
}

bool isPossibleIn(const QLineEdit &field, const QByteArray &command)
{
    const bool isEditable = !field.isReadOnly();
    const bool isLegible = field.echoMode() == QLineEdit::Normal;
    if (command == "undo")
        return isEditable && field.isUndoAvailable();
    if (command == "redo")
        return isEditable && field.isRedoAvailable();
    if (command == "cut")
        return isEditable && isLegible && field.hasSelectedText();
    if (command == "copy")
        return isLegible && field.hasSelectedText();
    if (command == "selectAll")
        return !field.text().isEmpty();
    return isEditable;
}

} // namespace

EditMenu::EditMenu(QWidget &window) : m_window(window)
{
    setTitle(u"&Edit"_s);
    addCommand(u"Undo"_s, QKeySequence::Undo, "undo");
    addCommand(u"Redo"_s, QKeySequence::Redo, "redo");
    addSeparator();
    addCommand(u"Cut"_s, QKeySequence::Cut, "cut");
    addCommand(u"Copy"_s, QKeySequence::Copy, "copy");
    // Whether there is something to paste is not asked: the program that owns it may be slow to answer.
    addCommand(u"Paste"_s, QKeySequence::Paste, "paste");
    addCommand(u"Select All"_s, QKeySequence::SelectAll, "selectAll");
    connect(this, &QMenu::aboutToShow, this, &EditMenu::update);
}

void EditMenu::addCommand(const QString &text, QKeySequence::StandardKey key, const char *slot)
{
    QAction *action = addAction(text, this, [this, slot] {
        QWidget *focus = m_window.focusWidget();
        if (isInOtherPlace(focus))
            return m_otherCommand(slot);
        if (!focus || !isPossible(*focus, slot))
            return;
        if (auto *line = qobject_cast<QLineEdit *>(focus); line && slot == QByteArray("paste"))
            LineFieldMenu::pressPaste(*line);
        else
            QMetaObject::invokeMethod(focus, slot);
    });
    // Shown for orientation; the focused field handles its own keys.
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setData(QByteArray(slot));
}

void EditMenu::update()
{
    const QWidget *focus = m_window.focusWidget();
    for (QAction *action : actions())
        if (const QByteArray slot = action->data().toByteArray(); !slot.isEmpty())
            action->setEnabled(isInOtherPlace(focus) || (focus && isPossible(*focus, slot)));
}

void EditMenu::setOtherPlace(QWidget &place, std::function<void(const QByteArray &slot)> command)
{
    m_otherPlace = &place;
    m_otherCommand = std::move(command);
}

bool EditMenu::isInOtherPlace(const QWidget *focus) const
{
    return focus && m_otherPlace && m_otherPlace->isAncestorOf(focus);
}

bool EditMenu::isPossible(const QWidget &widget, const QByteArray &slot)
{
    if (widget.metaObject()->indexOfSlot((slot + "()").constData()) < 0)
        return false;
    if (const auto *field = qobject_cast<const QPlainTextEdit *>(&widget))
        return isPossibleIn(*field, slot);
    if (const auto *field = qobject_cast<const QLineEdit *>(&widget))
        return isPossibleIn(*field, slot);
    if (const auto *view = qobject_cast<const ChatScrollView *>(&widget))
        return view->content().count() > 0;
    // A list has such commands too, but nothing in it to select.
    return qobject_cast<const QAbstractItemView *>(&widget) == nullptr;
}

} // namespace morvane
