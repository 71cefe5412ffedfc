#pragma once

#include <QPushButton>

namespace morvane {

/// A push button whose label wraps instead of widening the window. A label of more than a few lines is
/// elided; the tool tip then tells all of it. No character of the label makes a mnemonic.
class WrappingButton : public QPushButton {
    Q_OBJECT
public:
    enum class Alignment { centre, leading };

    explicit WrappingButton(const QString &label, Alignment alignment = Alignment::centre,
                            QWidget *parent = nullptr);

    const QString &label() const { return m_label; }
    /// Also sets the accessible name; set another one afterwards where it has to differ.
    void setLabel(const QString &label);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;
    bool hasHeightForWidth() const override { return true; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void updateToolTip();

    QString m_label;
    Alignment m_alignment;
};

} // namespace morvane
