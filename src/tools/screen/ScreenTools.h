#pragma once

#include "async/Task.h"
#include "model/ToolResult.h"
#include "tools/screen/Desktop.h"
#include "tools/screen/SequenceTurn.h"

#include <QPoint>
#include <QString>
#include <functional>
#include <memory>
#include <stop_token>

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

    Task<ToolResult> captureScreen();

    Task<ToolResult> clickAt(QPoint point);
    Task<ToolResult> axClick(qint64 index);
    Task<ToolResult> axType(qint64 index, QString text);
    Task<ToolResult> typeText(QString text);
    Task<ToolResult> pressKey(QString key);
    Task<ToolResult> moveCursor(QPoint point);
    Task<ToolResult> mouseDoubleClick(QPoint point);
    Task<ToolResult> mouseRightClick(QPoint point);
    Task<ToolResult> mouseDrag(QPoint from, QPoint to);
    Task<ToolResult> mouseScroll(qint64 amount);

    Task<ToolResult> pasteText(QString text);
    Task<ToolResult> clipboardRead();
    Task<ToolResult> clipboardSet(QString text);

    Task<ToolResult> frontmostApp();
    Task<ToolResult> openURL(QString url, QString application);
    Task<ToolResult> openApplication(QString name);
    Task<ToolResult> activateApp(QString name);

private:
    /// Shared with work that outlasts the tools.
    struct Shared {
        Desktop desktop;
        std::shared_ptr<ScreenInventory> inventory;
        std::shared_ptr<LayoutKeycodes> layout;
        SequenceTurn turn;
    };

    using Work = std::function<QString(Shared &, const std::stop_token &)>;
    using Sequence = std::function<QString(InputControl &)>;

    /// Runs `work` on a background thread; a stop, or a display that does not answer, is what is answered
    /// then.
    Task<ToolResult> runOnDesktop(Work work);
    Task<ToolResult> runSequence(Sequence sequence);

    std::shared_ptr<Shared> m_shared;
};

} // namespace morvane
