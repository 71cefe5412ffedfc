#pragma once

#include <QFrame>

class QHBoxLayout;
class QScrollArea;
class QVBoxLayout;

namespace morvane {

class ScrollingText;

/// The card in the middle of a sheet: a column of content that scrolls when the window is too small for it,
/// and under it a row of buttons that never leaves the view. To assistive technology it is the dialog.
class SheetCard : public QFrame {
    Q_OBJECT
public:
    explicit SheetCard(QWidget *parent = nullptr);

    QVBoxLayout *content() const { return m_contentLayout; }
    QHBoxLayout *buttons() const { return m_buttonLayout; }

    /// The part of the content that gives way first when room is short. Belongs to the content.
    void setYieldingText(ScrollingText *text) { m_yielding = text; }

    /// Takes the size that fits best into `room`.
    void fitInto(const QSize &room);

    /// Scrolls the content so far that `part` of it is seen; anything else stays where it is.
    void bringIntoSight(QWidget *part);
    /// Scrolls the content back to its beginning.
    void scrollToStart();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QScrollArea *m_scroll;
    QWidget *m_content;
    QWidget *m_buttonRow;
    QVBoxLayout *m_contentLayout;
    QHBoxLayout *m_buttonLayout;
    ScrollingText *m_yielding = nullptr;
};

} // namespace morvane
