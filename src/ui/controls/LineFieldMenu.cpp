#include "ui/controls/LineFieldMenu.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace morvane {

LineFieldMenu::LineFieldMenu(QLineEdit &line) : QMenu(&line)
{
    const bool isLegible = line.echoMode() == QLineEdit::Normal;
    const auto add = [this](const QString &text, QKeySequence::StandardKey key, bool isPossible,
                            auto command) {
        QAction *action = addAction(text, this, command);
        action->setShortcut(key);
        action->setShortcutContext(Qt::WidgetShortcut);
        action->setEnabled(isPossible);
    };
    add(u"&Undo"_s, QKeySequence::Undo, line.isUndoAvailable(), [&line] { line.undo(); });
    add(u"&Redo"_s, QKeySequence::Redo, line.isRedoAvailable(), [&line] { line.redo(); });
    addSeparator();
    add(u"Cu&t"_s, QKeySequence::Cut, isLegible && line.hasSelectedText(), [&line] { line.cut(); });
    add(u"&Copy"_s, QKeySequence::Copy, isLegible && line.hasSelectedText(), [&line] { line.copy(); });
    add(u"&Paste"_s, QKeySequence::Paste, true, [&line] { pressPaste(line); });
    add(u"Delete"_s, QKeySequence::Delete, line.hasSelectedText(), [&line] { line.del(); });
    addSeparator();
    add(u"Select All"_s, QKeySequence::SelectAll, !line.text().isEmpty(), [&line] { line.selectAll(); });
}

void LineFieldMenu::open(QLineEdit &line, const QContextMenuEvent &event)
{
    auto *menu = new LineFieldMenu(line);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event.globalPos());
}

void LineFieldMenu::pressPaste(QLineEdit &line)
{
    QKeyEvent press(QEvent::KeyPress, Qt::Key_V, Qt::ControlModifier);
    QApplication::sendEvent(&line, &press);
}

} // namespace morvane
