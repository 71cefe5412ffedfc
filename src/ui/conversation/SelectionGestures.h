#pragma once

#include "ui/conversation/SelectionCopy.h"
#include "ui/conversation/TextHit.h"
#include "ui/conversation/TextSelection.h"

#include <QBasicTimer>
#include <QObject>
#include <QPoint>
#include <QTextCursor>

class QHelpEvent;
class QMouseEvent;
class QWidget;

namespace morvane {

class ConversationLayout;
class ConversationScroll;

/// What the mouse does to the conversation: it selects by dragging, by a double and a triple click, and
/// presses links and the activity's header; what it rests on tells all of itself. Takes the events of the
/// view's viewport.
class SelectionGestures : public QObject {
    Q_OBJECT
public:
    /// `viewport` shows what the layout holds, scrolled; all must outlive this.
    SelectionGestures(ConversationLayout &layout, ConversationScroll &scroll, QWidget &viewport);

    const TextSelection &selection() const { return m_selection; }
    QString selectedText() const { return SelectionReader::wholeText(m_selection.rows(m_layout)); }
    /// Puts what is selected on the clipboard.
    void copy() { m_clipboard.copy(m_selection.rows(m_layout)); }
    void clear();
    void select(const TextPlace &from, const TextPlace &to);
    /// Selects whole rows, from one to another in whatever order.
    void selectRows(const ConversationItem &from, const ConversationItem &to);

Q_SIGNALS:
    void selectionChanged();
    void rowPressed(const ConversationItem &item);
    void linkPressed(const QString &address);
    void headerPressed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    QPoint inContent(const QPoint &position) const;
    std::optional<TextHit> hitAt(const QPoint &position) const;
    void press(const QMouseEvent &event);
    void doubleClick(const QMouseEvent &event);
    void move(const QMouseEvent &event);
    void followDrag();
    void selectAround(const TextPlace &place, QTextCursor::SelectionType unit);
    void release();
    void showToolTip(const QHelpEvent &event) const;

    ConversationLayout &m_layout;
    ConversationScroll &m_scroll;
    QWidget &m_viewport;
    TextSelection m_selection;
    SelectionCopy m_clipboard{QClipboard::Clipboard};
    SelectionCopy m_primary{QClipboard::Selection}; ///< What the middle mouse button pastes.
    QBasicTimer m_tripleClickTimer;
    QBasicTimer m_dragTimer; ///< Scrolls on while a drag is outside the viewport.
    QPoint m_pressedAt;
    QPoint m_draggedTo; ///< Of the viewport, or outside it.
    QString m_pressedLink;
    bool m_pressedHeader = false;
    bool m_isDragging = false;
};

} // namespace morvane
