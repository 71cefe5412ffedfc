#pragma once

#include "ui/theme/Icons.h"

#include <QWidget>

namespace morvane {

class HeadingLabel;

/// The head of a sheet: a symbol on a circle of its own colour, and the title. The symbol is decoration, so
/// it is painted instead of being a widget that assistive technology would find.
class SheetHeader : public QWidget {
    Q_OBJECT
public:
    enum class Tone { neutral, caution, danger };

    explicit SheetHeader(QWidget *parent = nullptr);

    void setContent(Symbol symbol, Tone tone, const QString &title);
    QString title() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    HeadingLabel *m_title;
    Symbol m_symbol = Symbol::question;
    Tone m_tone = Tone::neutral;
};

} // namespace morvane
