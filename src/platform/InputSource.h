#pragma once

#include <QPoint>
#include <QString>

namespace morvane {

enum class MouseButton { left, right };

/// Who is given what is typed.
enum class KeyboardHolder {
    sameWindow, ///< The window that was given it when the source was first asked.
    otherWindow,
    ownWindow, ///< One of this program, whichever it was before.
};

/// One sequence of mouse and keyboard events, posted as if the user's devices had made them. Points are those
/// of ScreenCapture.h. What cannot be posted is skipped. When it goes, it lets go of every button and key
/// that it still holds and takes back what it changed, as far as no program needs it any more. One thread.
class InputSource {
public:
    virtual ~InputSource() = default;

    virtual void warp(QPoint point) = 0;
    virtual void mouseMoved(QPoint point) = 0;
    virtual void buttonDown(MouseButton button, QPoint point) = 0;
    virtual void buttonUp(MouseButton button, QPoint point) = 0;
    /// A move with the left button held.
    virtual void dragged(QPoint point) = 0;
    /// Turns the wheel; positive is up.
    virtual void scroll(int pixels) = 0;

    /// `code` is a virtual key code and `flags` are modifier flags, both as in tools/screen/KeyTable.h.
    virtual void keyDown(int code, quint32 flags) = 0;
    virtual void keyUp(int code, quint32 flags) = 0;

    virtual KeyboardHolder keyboardHolder() = 0;

    /// Makes ready for the characters of `text`, which follow one by one. May block for parts of a second.
    virtual void prepareText(const QString &text) = 0;
    /// False, and nothing is done, while the program in front has still to read what was typed before it: to
    /// be tried again.
    virtual bool characterDown(char32_t character) = 0;
    virtual void characterUp(char32_t character) = 0;
};

} // namespace morvane
