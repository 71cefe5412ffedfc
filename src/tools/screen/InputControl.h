#pragma once

#include "platform/InputEvents.h"
#include "tools/screen/AXElementInfo.h"
#include "tools/screen/Desktop.h"

#include <QPoint>
#include <QString>
#include <chrono>
#include <expected>
#include <memory>
#include <stop_token>

namespace morvane {

class LayoutKeycodes;
class ScreenInventory;

/// The user wants no more events.
struct SequenceStopped {};

/// One sequence of mouse and keyboard events, with the waits that programs need between them. Every function
/// blocks, answers what the model is told, and throws SequenceStopped between two events once `stop` is asked
/// for. One object for each call of a tool; its caller sees to it that sequences do not mix.
class InputControl {
public:
    InputControl(Desktop desktop, std::shared_ptr<ScreenInventory> inventory,
                 std::shared_ptr<const LayoutKeycodes> layout, std::stop_token stop);

    QString clickAt(QPoint point);
    QString axClick(qint64 index);
    QString axType(qint64 index, const QString &text);
    QString typeText(const QString &text);
    QString pressKey(const QString &key);
    /// Presses the key that pastes, and waits for the program to ask for what is on the clipboard: what is
    /// put there next would be pasted instead. Not for long, since there may be nothing that takes it.
    void pressPasteKey();
    QString moveCursor(QPoint point);
    QString mouseDoubleClick(QPoint point);
    QString mouseRightClick(QPoint point);
    QString mouseDrag(QPoint from, QPoint to);
    QString mouseScroll(qint64 amount);

    /// Empty if events can be posted, else what the model is told. Asks the user once.
    QString permissionProblem();
    /// Empty if what is typed now reaches another program, else what the model is told.
    QString ownWindowProblem();

private:
    QString click(QPoint point);
    QString type(const QString &text);
    /// Presses the key of a character; empty, or why the rest of the text is not typed.
    QString characterProblem(InputSource &source, char32_t character);
    QString ownWindowProblem(InputSource &source);
    /// Where a click reaches the element, or what the model is told instead.
    std::expected<QPoint, QString> reachableCenter(const AXElementInfo &info, qint64 index);
    QString elementAtPointDescription(QPoint point);
    /// A new source that has brought the pointer there.
    std::unique_ptr<InputSource> pointerAt(QPoint point);
    void press(InputSource &source, MouseButton button, QPoint point, std::chrono::milliseconds held);
    void pause(std::chrono::milliseconds duration);

    const Desktop m_desktop;
    const std::shared_ptr<ScreenInventory> m_inventory;
    const std::shared_ptr<const LayoutKeycodes> m_layout;
    const std::stop_token m_stop;
};

} // namespace morvane
