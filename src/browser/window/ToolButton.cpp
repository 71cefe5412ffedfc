#include "browser/window/ToolButton.h"

#include "ui/controls/HoverText.h"

#include <QEvent>
#include <QToolButton>
#include <algorithm>

namespace morvane {

namespace {

constexpr int smallestIcon = 18;

class SymbolButton : public QToolButton {
public:
    SymbolButton() { fitIcon(); }

protected:
    void changeEvent(QEvent *event) override
    {
        QToolButton::changeEvent(event);
        if (event->type() == QEvent::FontChange)
            fitIcon();
    }

private:
    void fitIcon()
    {
        const int side = std::max(smallestIcon, fontMetrics().height());
        setIconSize({side, side});
    }
};

} // namespace

QToolButton *toolButton(Symbol symbol, const QString &name, const QString &hint)
{
    auto *button = new SymbolButton;
    button->setIcon(symbolIcon(symbol));
    button->setText(name);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(name);
    button->setAccessibleDescription(hint);
    setHoverText(button, name);
    return button;
}

} // namespace morvane
