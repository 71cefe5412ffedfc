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
    explicit QuietText(int maximumLines, QWidget *parent = nullptr);

    /// The symbol stands in front of the first line, in the text's colour.
    void setContent(const QString &text, QColor ThemeColors::*color, std::optional<Symbol> symbol = {});

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
    int m_maximumLines;
};

} // namespace morvane
