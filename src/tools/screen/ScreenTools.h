#pragma once

#include "async/Task.h"
#include "tools/screen/Desktop.h"

#include <QPoint>
#include <QString>
#include <functional>
#include <memory>
#include <mutex>

namespace morvane {

class InputControl;
class LayoutKeycodes;
class ScreenInventory;

/// The tools that see the screen and act on it: capture, mouse, keyboard, clipboard, programs. They answer
/// what the model is told and never throw. What takes time runs on background threads, one sequence of events
/// at a time; cancelling a task ends its sequence between two events. Main thread.
class ScreenTools {
public:
    explicit ScreenTools(Desktop desktop);

    /// Asks for the user's keyboard layout, so that shortcuts reach the right keys.
    Task<void> warmKeyboardLayout();

    Task<QString> captureScreen();

    Task<QString> clickAt(QPoint point);
    Task<QString> axClick(qint64 index);
    Task<QString> axType(qint64 index, QString text);
    Task<QString> typeText(QString text);
    Task<QString> pressKey(QString key);
    Task<QString> moveCursor(QPoint point);
    Task<QString> mouseDoubleClick(QPoint point);
    Task<QString> mouseRightClick(QPoint point);
    Task<QString> mouseDrag(QPoint from, QPoint to);
    Task<QString> mouseScroll(qint64 amount);

    Task<QString> pasteText(QString text);
    Task<QString> clipboardRead();
    Task<QString> clipboardSet(QString text);

    Task<QString> frontmostApp();
    Task<QString> openURL(QString url, QString application);
    Task<QString> openApplication(QString name);
    Task<QString> activateApp(QString name);

private:
    /// Shared with work that outlasts the tools.
    struct Shared {
        Desktop desktop;
        std::shared_ptr<ScreenInventory> inventory;
        std::shared_ptr<LayoutKeycodes> layout;
        std::mutex sequence; ///< Held by the one whose events are on their way.
    };

    using Sequence = std::function<QString(InputControl &)>;

    Task<QString> runSequence(Sequence sequence);

    std::shared_ptr<Shared> m_shared;
};

} // namespace morvane
