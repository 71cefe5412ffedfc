#pragma once

#include "ui/sheets/VisibleText.h"

#include <QWidget>

class QPlainTextEdit;

namespace morvane {

class NoteLabel;

/// A text that someone else wrote, as plain text in a read-only field: it can be read line by line, selected
/// and copied. It takes the height that it needs up to a limit; beyond that it scrolls, and a line below says
/// how much there is, so that nothing stays out of sight unnoticed.
class ScrollingText : public QWidget {
    Q_OBJECT
public:
    enum class Style {
        prose,
        command ///< Fixed width, with a mark at each line's end, so that line feeds differ from wrapping.
    };

    explicit ScrollingText(const QString &accessibleName, QWidget *parent = nullptr);

    void setContent(const VisibleText &content, Style style);
    /// The widget that takes the focus and holds the text.
    QPlainTextEdit *field() const { return m_field; }
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
    void changeEvent(QEvent *event) override;

private:
    bool isLimited(int width) const;
    int extentHeight(int width) const;
    void arrange();
    void updateFont();
    void markEscapes();

    QPlainTextEdit *m_field;
    NoteLabel *m_extent;
    QList<VisibleText::Range> m_escapes;
    Style m_style = Style::prose;
    int m_heightLimit = -1;
    mutable int m_measuredWidth = -1; ///< The width that `m_measuredHeight` is for; measuring is costly.
    mutable int m_measuredHeight = 0;
};

} // namespace morvane
