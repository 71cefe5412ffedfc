#pragma once

#include "ui/controls/Wrapping.h"

#include <QCheckBox>

namespace morvane {

/// A check box whose text wraps instead of widening the window, with a box that grows with the font.
class WrappingCheckBox : public Wrapping<QCheckBox> {
    Q_OBJECT
public:
    explicit WrappingCheckBox(const QString &text, QWidget *parent = nullptr);

protected:
    WrappedText wrappedText() const override;
    QMargins textMargins() const override;
    int leastHeight() const override { return boxSide(); }
    void paintEvent(QPaintEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

private:
    void drawBox(QPainter &painter, const QRect &box) const;
    int boxSide() const;
    int textOffset() const;
};

} // namespace morvane
