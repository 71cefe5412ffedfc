#pragma once

#include <QPointer>
#include <QScrollArea>

class QHBoxLayout;

namespace morvane {

/// Things side by side in one row, as high as they are. It scrolls where it has no room for all of them, also
/// by the wheel and by dragging beyond its ends.
class ScrollStrip : public QScrollArea {
    Q_OBJECT
public:
    explicit ScrollStrip(QWidget *parent = nullptr);

    /// Where the things go.
    QHBoxLayout *row() const { return m_row; }
    /// Scrolls to one of the things, and keeps it in sight when others come and go, until the user scrolls.
    void bringIntoSight(QWidget *thing);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fitHeight();

    void showWanted();

    QHBoxLayout *m_row;
    QPointer<QWidget> m_wanted;
};

} // namespace morvane
