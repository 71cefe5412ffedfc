#pragma once

#include <QKeySequence>
#include <QMenu>

namespace morvane {

/// What can be done with the text of whatever has the focus. Offers only what would do something.
class EditMenu : public QMenu {
    Q_OBJECT
public:
    /// `window` is the one whose focus counts; must outlive the menu.
    explicit EditMenu(QWidget &window);

private:
    void addCommand(const QString &text, QKeySequence::StandardKey key, const char *slot);
    void update();
    /// Whether the command with this slot would do something for the widget.
    static bool isPossible(const QWidget &widget, const QByteArray &slot);

    QWidget &m_window;
};

} // namespace morvane
