#pragma once

#include "ui/controls/LineLabel.h"

namespace morvane {

/// A word or two that mark something, on a rounded ground.
class BadgeLabel : public LineLabel {
    Q_OBJECT
public:
    explicit BadgeLabel(const QString &text, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace morvane
