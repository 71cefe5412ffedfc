#pragma once

#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/ConversationScroll.h"
#include "ui/conversation/RowActions.h"
#include "ui/conversation/RowButtons.h"
#include "ui/conversation/RowCursor.h"
#include "ui/conversation/SelectionGestures.h"

#include <QAbstractScrollArea>
#include <QTimer>
#include <functional>
#include <optional>

class QUrl;

namespace morvane {

class ActivityLog;
class Announcer;
class Transcript;
struct FoundText;

/// Shows the messages, the activity of the current request and the answer that grows, and keeps the newest
/// text in sight without fighting a user who scrolled up. It draws only what is in sight; assistive
/// technology finds every row through ChatScrollViewAccessible. Main thread.
class ChatScrollView : public QAbstractScrollArea {
    Q_OBJECT
public:
    /// All must outlive the view.
    ChatScrollView(const Transcript &transcript, const ActivityLog &activity, Announcer &announcer,
                   QWidget *parent = nullptr);

    const ConversationContent &content() const { return m_content; }
    const ConversationLayout &rows() const { return m_layout; }
    const RowActions &actions() const { return m_actions; }
    bool isNearBottom() const { return m_scroll.isNearBottom(); }
    /// Whether every change is drawn and no scrolling is under way or waits for its time.
    bool isSettled() const { return !m_isDirty && m_scroll.isSettled() && !m_layout.splitter().isBusy(); }
    QString selectedText() { return m_gestures.selectedText(); }
    QList<QToolButton *> codeButtons() const { return m_buttons.code(); }
    /// All that can be pressed within the rows in sight.
    QList<QToolButton *> buttons() const { return m_buttons.all(); }
    /// The small pictures, which tell when one is to be opened.
    PictureButtons &pictures() { return m_buttons.pictures(); }

    /// The row that the keyboard is on, or -1.
    qsizetype currentRow() const { return m_cursor.row(); }
    /// Moves the keyboard to a row and brings it into sight.
    void setCurrentRow(qsizetype row) { m_cursor.moveTo(row); }
    /// The first message in sight, or behind the activity that is; -1 without messages.
    qsizetype firstVisibleMessage() const;
    /// Whether any of a row is selected.
    bool isSelected(const ConversationItem &item) const
    {
        return !m_gestures.selection().isEmpty() && m_gestures.selection().touches(item);
    }
    /// Selects a place where `words` were found and brings it into sight. Gives the line around it.
    QString showMatch(const FoundText &found, const QString &words);
    /// How large the text is: 100 for the font's own size.
    int zoom() const { return m_zoom; }
    void setZoom(int percent);
    /// A page down (1) or up (-1).
    void scrollPage(int direction) { m_scroll.scrollPage(direction); }
    /// To the newest text, which is followed from there on.
    void jumpToLatest();
    /// Shows the steps of the activity or their header alone.
    void setActivityFolded(bool folded);
    /// Where a row stands in the viewport; may lie outside it.
    QRect rowRect(qsizetype row) const;
    /// The row at a place of the viewport, or -1.
    qsizetype rowAt(const QPoint &position) const;

    /// Replaces what opens an address that the user pressed; by default the desktop does.
    void setLinkOpener(std::function<void(const QUrl &)> opener) { m_openLink = std::move(opener); }

public Q_SLOTS:
    /// The selected text, or the text of the current row.
    void copy();
    /// Selects the whole conversation.
    void selectAll();

Q_SIGNALS:
    /// For assistive technology: rows were replaced, added at their places, folded away, or one changed its
    /// words.
    void rowsReset();
    void rowsAdded();
    void stepsFolded();
    void rowChanged(qsizetype row);
    void currentRowChanged(qsizetype row);
    /// The newest text came into sight or left it.
    void nearBottomChanged(bool isNear);
    void selectionChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void connectContent(const Transcript &transcript, const ActivityLog &activity);
    void rebuild();
    void takeMessageChange(qsizetype row);
    void takeGrowth(qsizetype row, qsizetype from);
    void takeRows();
    void schedule();
    void flush();
    void placeButtons();
    void updateStyle();
    void prepareToTell();
    void tellCurrentRow();
    bool moveByKey(const QKeyEvent &event);
    void pressRow();
    void toggleActivity() { setActivityFolded(!m_content.isActivityFolded()); }
    void openMenu(const ConversationItem &item, const QPoint &globalPosition);
    void openMenuOnRow(qsizetype row);
    void openLink(const QString &address);

    ConversationContent m_content;
    ConversationLayout m_layout;
    ConversationScroll m_scroll;
    SelectionGestures m_gestures;
    RowCursor m_cursor;
    RowActions m_actions;
    RowButtons m_buttons;
    std::function<void(const QUrl &)> m_openLink;

    bool m_isDirty = false;
    std::optional<qsizetype> m_grownMessage;
    QTimer m_frameTimer;
    std::optional<ConversationItem> m_selectedFrom; ///< The first of the rows that the keyboard selects.
    int m_zoom = 100;
    bool m_showsFocus = false; ///< The keyboard, not the mouse, brought the focus.
};

} // namespace morvane
