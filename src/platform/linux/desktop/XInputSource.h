#pragma once

#include "platform/InputEvents.h"
#include "platform/linux/desktop/XDisplay.h"
#include "platform/linux/desktop/XHeldNote.h"
#include "platform/linux/desktop/XKeyboard.h"
#include "platform/linux/desktop/XKeyboardChanges.h"
#include "platform/linux/desktop/XKeyboardTarget.h"
#include "platform/linux/desktop/XLentKeys.h"

#include <QList>
#include <memory>
#include <optional>

namespace morvane {

/// Events through the XTest extension. Characters that the layout lacks are put on spare keys beforehand, as
/// many at once as there are, and stay there until the program has read them (XLentKeys). Modifiers that the
/// user holds are let go of, so that they do not change what is typed, and a text comes out as it is whatever
/// layout the user turns to meanwhile.
class XInputSource final : public InputSource {
public:
    explicit XInputSource(std::unique_ptr<XDisplay> display);
    ~XInputSource() override;

    void warp(QPoint point) override;
    void mouseMoved(QPoint point) override;
    void buttonDown(MouseButton button, QPoint point) override;
    void buttonUp(MouseButton button, QPoint point) override;
    void dragged(QPoint point) override { mouseMoved(point); }
    void scroll(int pixels) override;

    void keyDown(int code, quint32 flags) override;
    void keyUp(int code, quint32 flags) override;

    KeyboardHolder keyboardHolder() override;

    void prepareText(const QString &text) override;
    bool characterDown(char32_t character) override;
    void characterUp(char32_t character) override;

private:
    void send(uint8_t type, uint8_t detail, QPoint place = {});
    void pressKey(uint8_t code);
    void releaseKey(uint8_t code);
    uint8_t physicalButton(uint8_t logicalButton) const;
    /// Nothing if the keyboard lacks one of them.
    std::optional<QList<uint8_t>> modifierKeys(quint32 flags) const;
    std::optional<uint8_t> keyForCode(int code);
    /// Of pointer and keyboard: the modifiers, and the number of the layout.
    uint16_t stateNow() const;
    void letGoOfForeignModifiers(uint16_t state);
    void pressCapsLock();
    /// The user's Caps Lock and layout may be others at each character.
    void followUser(uint16_t state);
    void readKeyboardAgain();

    std::optional<XKey> keyOf(xkb_keysym_t symbol) const;
    bool symbolDown(xkb_keysym_t symbol);
    /// Puts the symbols that come next and have no key on the spare ones, and on those of `keys` that what
    /// comes next does not need.
    void lendAhead(QList<uint8_t> keys = {});
    void lend(QList<uint8_t> keys, const QList<xkb_keysym_t> &symbols);
    QPoint fromRoot(QPoint point) const;

    const std::unique_ptr<XDisplay> m_display;
    const QPoint m_origin;
    XKeyboardChanges m_changes; ///< From before m_keyboard is read.
    std::optional<XKeyboard> m_keyboard;
    XLentKeys m_lentKeys;
    std::optional<XKeyboardTarget> m_target; ///< Once it has been asked for.
    XHeldNote m_heldNote;
    QList<uint8_t> m_heldKeys;
    QList<uint8_t> m_heldButtons;
    int m_scrolled = 0;              ///< Pixels that made no whole notch of the wheel yet.
    bool m_capsIsToBeLocked = false; ///< By the user's will, when the source goes.

    std::u32string m_text;      ///< What is being typed.
    std::size_t m_position = 0; ///< Of the next character in it.
};

} // namespace morvane
