#pragma once

#include <QFrame>

class QBoxLayout;
class QHBoxLayout;
class QScrollArea;
class QVBoxLayout;

namespace morvane {

class ScrollingText;

/// The card in the middle of a sheet: a column of content that scrolls when the window is too small for it,
/// and under it a row of buttons that stays in view, unless it would take more than half of it. To assistive
/// technology it is the dialog.
class SheetCard : public QFrame {
    Q_OBJECT
public:
    explicit SheetCard(QWidget *parent = nullptr);

    QVBoxLayout *content() const { return m_contentLayout; }
    QHBoxLayout *buttons() const { return m_buttonLayout; }

    /// The part of the content that gives way first when room is short. Belongs to the content.
    void setYieldingText(ScrollingText *text) { m_yielding = text; }

    /// Buttons that end a part of the content, the last in its box layout. While the content scrolls they
    /// stand between it and the row of buttons, and so stay in view.
    void setHeldButtons(QWidget *buttons);

    /// Takes the size that fits best into `room`.
    void fitInto(const QSize &room);

    /// Scrolls the content so far that `part` of it is seen; anything else stays where it is.
    void bringIntoSight(QWidget *part);
    /// Scrolls the content by as many pages, back if there are less than none.
    void scrollPages(int pages);
    /// Scrolls the content back to its beginning.
    void scrollToStart();
    /// Scrolls the content so far that a part of it is in view.
    void scrollTo(QWidget *part);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    /// Below that the buttons stand one below the other.
    int leastButtonWidth() const;
    void placeButtons(QWidget *place);
    void placeHeldButtons(QWidget *place);
    /// Puts the held buttons to where they are in view; tells the height that they take outside the content.
    int holdButtons(int width, int room);

    QScrollArea *m_scroll;
    QWidget *m_content;
    QWidget *m_buttonRow;
    QVBoxLayout *m_contentLayout;
    QHBoxLayout *m_buttonLayout;
    ScrollingText *m_yielding = nullptr;
    QWidget *m_held = nullptr;
    QBoxLayout *m_heldHome = nullptr; ///< The layout of the content that has the held buttons.
};

} // namespace morvane
