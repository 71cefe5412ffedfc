#pragma once

#include <QAbstractButton>
#include <QUuid>

class QToolButton;

namespace morvane {

class BrowserTab;

/// A tab on the tab bar: icon and title of its page, and a button that closes it. It is checked while its tab
/// is the active one.
class BrowserTabButton : public QAbstractButton {
    Q_OBJECT
public:
    /// `tab` outlives the button.
    explicit BrowserTabButton(const BrowserTab &tab, QWidget *parent = nullptr);

    QUuid id() const { return m_id; }
    /// Marks it as that of the active tab.
    void setActive(bool active);
    /// Whether the Tab key stops at it. The mouse leaves the keyboard where it is.
    void setTabStop(bool stops);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void closeRequested();
    /// The mouse drags the tab; `x` is its place in the bar.
    void dragged(int x);
    /// A key wants the focus on another tab: so many further on, or beyond all of them.
    void focusMoveRequested(int step);
    /// A key wants the tab in another place: one further on, or back.
    void placeMoveRequested(int step);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;
    void nextCheckState() override {} // the manager tells which one is active

private:
    enum class Press { none, left, middle, dragging };

    void update();
    void placeClose();
    void moveBy(int step, Qt::KeyboardModifiers modifiers);
    int iconSide() const;
    int padding() const;

    const BrowserTab &m_tab;
    const QUuid m_id;
    QToolButton *m_close;
    Press m_press = Press::none;
    QPoint m_pressedAt;
};

} // namespace morvane
