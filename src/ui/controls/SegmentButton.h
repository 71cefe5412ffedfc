#pragma once

#include <QRadioButton>

namespace morvane {

/// One segment of a SegmentedPicker.
class SegmentButton : public QRadioButton {
    Q_OBJECT
public:
    SegmentButton(const QString &label, QWidget *parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
};

} // namespace morvane
