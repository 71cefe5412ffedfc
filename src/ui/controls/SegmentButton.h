#pragma once

#include <QRadioButton>

namespace morvane {

/// One segment of a SegmentedPicker. Its label stands on one line where there is room.
class SegmentButton : public QRadioButton {
    Q_OBJECT
public:
    SegmentButton(const QString &label, QWidget *parent);

    QSize sizeHint() const override;
    /// With one word on a line.
    QSize minimumSizeHint() const override;
    /// The size that it takes where this width is to be had; its words wrap, if need be.
    QSize sizeWithin(int width) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
};

} // namespace morvane
