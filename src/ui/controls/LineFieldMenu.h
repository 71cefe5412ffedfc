#pragma once

#include <QMenu>

class QContextMenuEvent;
class QLineEdit;

namespace morvane {

/// The menu of a line of text. As the toolkit's, but for what can be pasted: that is not asked, since the
/// program that has it may be slow to answer.
class LineFieldMenu : public QMenu {
    Q_OBJECT
public:
    /// Opens it for `line`, where `event` asks for it. It deletes itself.
    static void open(QLineEdit &line, const QContextMenuEvent &event);
    /// Asks `line` to paste as its key does, so that whoever looks at its keys sees it.
    static void pressPaste(QLineEdit &line);

private:
    explicit LineFieldMenu(QLineEdit &line);
};

} // namespace morvane
