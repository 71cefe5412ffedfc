#pragma once

#include "ui/conversation/ConversationItem.h"

#include <QObject>
#include <optional>

class QKeyEvent;
class QWidget;

namespace morvane {

class ConversationLayout;
class ConversationScroll;

/// The row that the keyboard is on, and where the keys take it.
class RowCursor : public QObject {
    Q_OBJECT
public:
    /// `height` of the page is that of `viewport`; all must outlive this.
    RowCursor(ConversationLayout &layout, ConversationScroll &scroll, const QWidget &viewport);

    const std::optional<ConversationItem> &item() const { return m_item; }
    /// Its place among the rows, or -1.
    qsizetype row() const;

    /// Takes a row without a word and without scrolling.
    void set(const ConversationItem &item) { m_item = item; }
    void clear() { m_item.reset(); }
    /// Goes to a row and brings it into sight; nothing without such a row.
    void moveTo(qsizetype row);
    /// Whether the key was one that moves, or scrolls, and was followed.
    bool takeKey(const QKeyEvent &key);
    /// So many rows down, or up; from no row to the last.
    void moveBy(qsizetype rows);
    /// Scrolls a page down (1) or up (-1) and goes to the first row that begins in sight.
    void movePage(int direction);

Q_SIGNALS:
    /// The keyboard is on another row, or on the same again.
    void moved(qsizetype row);

private:
    ConversationLayout &m_layout;
    ConversationScroll &m_scroll;
    const QWidget &m_viewport;
    std::optional<ConversationItem> m_item;
};

} // namespace morvane
