#pragma once

#include "ui/controls/HeadingLabel.h"

namespace morvane {

/// A heading in the middle with the program's mark above it. The mark is decoration: the label draws it, so
/// that assistive technology finds one element only.
class MarkedHeading : public HeadingLabel {
    Q_OBJECT
public:
    explicit MarkedHeading(const QString &text, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace morvane
