#pragma once

#include <QCheckBox>

namespace morvane {

/// A check box whose text wraps instead of widening the window, with a box that grows with the font.
class WrappingCheckBox : public QCheckBox {
    Q_OBJECT
public:
    explicit WrappingCheckBox(const QString &text, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;
    bool hasHeightForWidth() const override { return true; }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

private:
    void drawBox(QPainter &painter, const QRect &box) const;
    int boxSide() const;
    int textOffset() const;
};

} // namespace morvane
