#pragma once

#include "ui/sheets/LongTextField.h"

#include <QHash>
#include <QWidget>

namespace morvane {

class NoteLabel;

/// A text that someone else wrote, as plain text in a read-only field: it can be read line by line, selected
/// and copied. It takes the height that it needs up to a limit; beyond that it scrolls, and a line below says
/// how much there is, so that nothing stays out of sight unnoticed.
class ScrollingText : public QWidget {
    Q_OBJECT
public:
    using Style = LongTextField::Style;
    using Hidden = LongTextField::Hidden;

    explicit ScrollingText(const QString &accessibleName, QWidget *parent = nullptr);

    /// A command has letters of one width.
    void setContent(const QString &text, Style style, Hidden hidden);
    /// The widget that takes the focus and holds the text.
    LongTextField *field() const { return m_field; }
    /// What is said about the extent of a text that does not fit; empty while it fits.
    QString extent() const;

    /// The height in logical pixels that shows everything at `width`.
    int naturalHeight(int width) const;
    /// The height of a few lines, below which the text should not be pressed.
    int leastHeight(int width) const;
    /// Limits the height to `height` logical pixels; a negative value takes the limit away.
    void setHeightLimit(int height);

    int heightForWidth(int width) const override;
    bool hasHeightForWidth() const override { return true; }
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    bool isLimited(int width) const;
    int extentHeight(int width) const;
    void arrange();
    void updateFont();
    void takeText();
    int measured(int width) const;

    LongTextField *m_field;
    NoteLabel *m_extent;
    Style m_style = Style::prose;
    int m_heightLimit = -1;
    mutable QHash<int, int> m_heights; ///< For the widths asked for; measuring is costly.
};

} // namespace morvane
