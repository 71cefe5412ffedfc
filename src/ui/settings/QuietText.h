#pragma once

#include "ui/controls/WrappedText.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QWidget>
#include <optional>

namespace morvane {

/// A drawn text that wraps anywhere and says nothing to assistive technology: a control beside it says all of
/// it.
class QuietText : public QWidget {
    Q_OBJECT
public:
    /// Shows no more than this of a text: the lines, and its length as in WrappedText.
    struct Most {
        int lines;
        qsizetype cost = 1'000;
    };
    explicit QuietText(Most most, QWidget *parent = nullptr);

    /// The symbol stands in front of the first line, in the text's colour.
    void setContent(const QString &text, QColor ThemeColors::*color, std::optional<Symbol> symbol = {});

    const QString &text() const { return m_text; }
    /// Whether a part of the text is not shown at the present width.
    bool isElided() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;
    bool hasHeightForWidth() const override { return true; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    WrappedText wrapped() const;
    int symbolRoom() const;

    QString m_text;
    QColor ThemeColors::*m_color = &ThemeColors::text;
    std::optional<Symbol> m_symbol;
    const Most m_most;
    mutable QSize m_measured; ///< The last answer of heightForWidth; layouts ask again and again.
};

} // namespace morvane
