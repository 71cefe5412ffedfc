#pragma once

#include <QBoxLayout>
#include <QWidget>

namespace morvane {

/// Something wide with buttons at its right, or below it where they would take too much of the width.
class ButtonsBeside : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    /// To be called once. `buttons` holds widgets only, in the direction that they take at the right.
    void setParts(QLayout *wide, QBoxLayout *buttons);

    /// As narrow as all of it one below the other.
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;

private:
    struct Widths {
        int inRow = 0;
        int inColumn = 0;
    };
    Widths buttonWidths() const;
    void arrange();

    QBoxLayout *m_parts = nullptr;
    QBoxLayout *m_buttons = nullptr;
    QBoxLayout::Direction m_atTheRight = QBoxLayout::LeftToRight;
};

} // namespace morvane
