#pragma once

#include <QKeySequence>
#include <QMenu>
#include <QPointer>
#include <functional>

namespace morvane {

/// What can be done with the text of whatever has the focus. Offers only what would do something.
class EditMenu : public QMenu {
    Q_OBJECT
public:
    /// `window` is the one whose focus counts; must outlive the menu.
    explicit EditMenu(QWidget &window);

    /// Does these commands, by the names of the toolkit's slots, where something in `place` has the focus
    /// that is no field of the toolkit.
    void setOtherPlace(QWidget &place, std::function<void(const QByteArray &slot)> command);

private:
    void addCommand(const QString &text, QKeySequence::StandardKey key, const char *slot);
    void update();
    bool isInOtherPlace(const QWidget *focus) const;
    /// Whether the command with this slot would do something for the widget.
    static bool isPossible(const QWidget &widget, const QByteArray &slot);

    QWidget &m_window;
    QPointer<QWidget> m_otherPlace;
    std::function<void(const QByteArray &slot)> m_otherCommand;
};

} // namespace morvane
