#include "platform/linux/desktop/XInputSource.h"

#include "platform/DisplaySilent.h"
#include "platform/Log.h"
#include "platform/linux/desktop/KeyPositions.h"

#include <algorithm>
#include <chrono>
#include <tuple>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// How long the end of a sequence may wait for a program to say that it has read its keys.
constexpr auto timeToGiveBack = 300ms;

constexpr uint8_t leftButton = 1;
constexpr uint8_t rightButton = 3;
constexpr uint8_t wheelUp = 4;
constexpr uint8_t wheelDown = 5;
/// What the eight events of one step of the scrolling tool come to.
constexpr int pixelsPerNotch = 96;
constexpr int mostNotches = 100;

/// Modifier flags as the tools give them.
constexpr quint32 controlFlags = 0x100000 | 0x40000;
constexpr quint32 shiftFlag = 0x20000;
constexpr quint32 optionFlag = 0x80000;

/// Modifiers that change what a key does; Caps Lock and Num Lock stay as they are.
constexpr uint16_t effectiveModifiers = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 |
                                        XCB_MOD_MASK_3 | XCB_MOD_MASK_4 | XCB_MOD_MASK_5;

/// Keys that are the same on every layout, by what is on them: users move some of them.
std::optional<xkb_keysym_t> fixedSymbol(int code)
{
    switch (code) {
    case 36:
        return XKB_KEY_Return;
    case 48:
        return XKB_KEY_Tab;
    case 49:
        return XKB_KEY_space;
    case 51:
        return XKB_KEY_BackSpace;
    case 53:
        return XKB_KEY_Escape;
    case 115:
        return XKB_KEY_Home;
    case 116:
        return XKB_KEY_Prior;
    case 119:
        return XKB_KEY_End;
    case 121:
        return XKB_KEY_Next;
    case 123:
        return XKB_KEY_Left;
    case 124:
        return XKB_KEY_Right;
    case 125:
        return XKB_KEY_Down;
    case 126:
        return XKB_KEY_Up;
    default:
        return numberPadSymbol(code);
    }
}

/// Where the state of pointer and keyboard has the number of the layout.
constexpr int layoutShift = 13;

int16_t coordinate(qint64 value)
{
    return int16_t(std::clamp<qint64>(value, -32768, 32767));
}

} // namespace

XInputSource::XInputSource(std::unique_ptr<XDisplay> display)
    : m_display(std::move(display)), m_origin(m_display->origin()), m_changes(m_display->stop()),
      m_keyboard(XKeyboard::read(*m_display)), m_lentKeys(*m_display), m_heldNote(*m_display)
{
    m_display->hasExtension(&xcb_test_id); // Who posts the first event waits for nothing then.
}

XInputSource::~XInputSource()
{
    for (const uint8_t button : std::as_const(m_heldButtons))
        send(XCB_BUTTON_RELEASE, button);
    while (!m_heldKeys.isEmpty())
        releaseKey(m_heldKeys.last());
    if (m_capsIsToBeLocked)
        pressCapsLock();
    m_heldNote.takeOff();
    try {
        m_lentKeys.giveBackOnceRead(timeToGiveBack);
        m_display->synchronize();
    } catch (const DisplaySilent &) {
        // What was let go of is on its way, and a later source knows of the keys by their note.
        qCWarning(platformLog) << "keys stay lent: the display does not answer";
    }
}

QPoint XInputSource::fromRoot(QPoint point) const
{
    return {coordinate(qint64(point.x()) + m_origin.x()), coordinate(qint64(point.y()) + m_origin.y())};
}

void XInputSource::send(uint8_t type, uint8_t detail, QPoint place)
{
    xcb_test_fake_input(m_display->connection(), type, detail, XCB_CURRENT_TIME, m_display->root(),
                        int16_t(place.x()), int16_t(place.y()), 0);
    xcb_flush(m_display->connection());
}

void XInputSource::warp(QPoint point)
{
    const QPoint place = fromRoot(point);
    xcb_warp_pointer(m_display->connection(), XCB_NONE, m_display->root(), 0, 0, 0, 0, int16_t(place.x()),
                     int16_t(place.y()));
    m_display->synchronize();
}

void XInputSource::mouseMoved(QPoint point)
{
    send(XCB_MOTION_NOTIFY, 0, fromRoot(point));
}

uint8_t XInputSource::physicalButton(uint8_t logicalButton) const
{
    // Left-handed users swap the buttons; posted ones are swapped as well.
    const auto reply =
        m_display->reply<xcb_get_pointer_mapping_reply_t>(xcb_get_pointer_mapping(m_display->connection()));
    if (!reply)
        return logicalButton;
    const uint8_t *const map = xcb_get_pointer_mapping_map(reply.get());
    const uint8_t *const end = map + xcb_get_pointer_mapping_map_length(reply.get());
    const uint8_t *const found = std::find(map, end, logicalButton);
    return found != end ? uint8_t(found - map + 1) : logicalButton;
}

void XInputSource::buttonDown(MouseButton button, QPoint point)
{
    letGoOfForeignModifiers(stateNow());
    const uint8_t physical = physicalButton(button == MouseButton::left ? leftButton : rightButton);
    m_heldNote.write();
    // The user's hand may have moved the pointer since it was brought there.
    mouseMoved(point);
    send(XCB_BUTTON_PRESS, physical);
    m_heldButtons.append(physical);
}

void XInputSource::buttonUp(MouseButton, QPoint point)
{
    if (m_heldButtons.isEmpty())
        return;
    mouseMoved(point);
    send(XCB_BUTTON_RELEASE, m_heldButtons.takeLast());
}

void XInputSource::scroll(int pixels)
{
    m_scrolled = std::clamp(pixels, -mostNotches * pixelsPerNotch, mostNotches * pixelsPerNotch) + m_scrolled;
    letGoOfForeignModifiers(stateNow());
    const uint8_t wheel = physicalButton(m_scrolled > 0 ? wheelUp : wheelDown);
    for (; std::abs(m_scrolled) >= pixelsPerNotch;
         m_scrolled -= m_scrolled > 0 ? pixelsPerNotch : -pixelsPerNotch) {
        send(XCB_BUTTON_PRESS, wheel);
        send(XCB_BUTTON_RELEASE, wheel);
    }
}

void XInputSource::pressKey(uint8_t code)
{
    m_lentKeys.use(code);
    m_heldNote.write();
    send(XCB_KEY_PRESS, code);
    m_heldKeys.append(code);
}

void XInputSource::releaseKey(uint8_t code)
{
    if (!m_heldKeys.removeOne(code))
        return;
    send(XCB_KEY_RELEASE, code);
}

std::optional<QList<uint8_t>> XInputSource::modifierKeys(quint32 flags) const
{
    QList<uint8_t> keys;
    // Users have layouts turned by the key on one side.
    for (const auto &[wanted, left, right] : {std::tuple(controlFlags, XKB_KEY_Control_L, XKB_KEY_Control_R),
                                              std::tuple(optionFlag, XKB_KEY_Alt_L, XKB_KEY_Alt_R),
                                              std::tuple(shiftFlag, XKB_KEY_Shift_L, XKB_KEY_Shift_R)}) {
        if ((flags & wanted) == 0)
            continue;
        auto key = keyOf(left);
        if (!key || key->shifted)
            key = keyOf(right);
        if (!key || key->shifted)
            return std::nullopt;
        keys.append(key->code);
    }
    return keys;
}

std::optional<uint8_t> XInputSource::keyForCode(int code)
{
    if (const auto symbol = fixedSymbol(code); symbol && m_keyboard) {
        const bool isNumberPad = numberPadSymbol(code).has_value();
        auto key = m_keyboard->keyFor(*symbol);
        if (isNumberPad && (!key || key->shifted)) {
            lend(m_keyboard->spareKeys(), {*symbol});
            key = m_keyboard->keyFor(*symbol);
        }
        if (key && !key->shifted)
            return key->code;
    }
    return keyAtPosition(code);
}

void XInputSource::keyDown(int code, quint32 flags)
{
    const uint16_t state = stateNow();
    followUser(state);
    const std::optional<uint8_t> key = keyForCode(code);
    // By itself the key would do something else.
    const auto modifiers = modifierKeys(flags);
    if (!key || !modifiers)
        return;
    letGoOfForeignModifiers(state);
    for (const uint8_t modifier : *modifiers)
        pressKey(modifier);
    pressKey(*key);
}

void XInputSource::keyUp(int, quint32)
{
    while (!m_heldKeys.isEmpty())
        releaseKey(m_heldKeys.last());
}

uint16_t XInputSource::stateNow() const
{
    const auto pointer = m_display->reply<xcb_query_pointer_reply_t>(
        xcb_query_pointer(m_display->connection(), m_display->root()));
    return pointer ? pointer->mask : 0;
}

void XInputSource::letGoOfForeignModifiers(uint16_t state)
{
    if ((state & effectiveModifiers) == 0 || !m_heldKeys.isEmpty())
        return;
    xcb_connection_t *const connection = m_display->connection();
    const auto pressed = m_display->reply<xcb_query_keymap_reply_t>(xcb_query_keymap(connection));
    const auto modifiers =
        m_display->reply<xcb_get_modifier_mapping_reply_t>(xcb_get_modifier_mapping(connection));
    if (!pressed || !modifiers)
        return;
    const xcb_keycode_t *const codes = xcb_get_modifier_mapping_keycodes(modifiers.get());
    for (int at = 0; at < xcb_get_modifier_mapping_keycodes_length(modifiers.get()); ++at) {
        const xcb_keycode_t code = codes[at];
        if (code != 0 && (pressed->keys[code / 8] >> (code % 8) & 1) != 0)
            send(XCB_KEY_RELEASE, code);
    }
    m_display->synchronize();
}

void XInputSource::pressCapsLock()
{
    const auto key = keyOf(XKB_KEY_Caps_Lock);
    if (!key)
        return;
    QList<uint8_t> keys{key->code};
    // Some users have it on both Shift keys together.
    for (const auto &shift : {keyOf(XKB_KEY_Shift_L), keyOf(XKB_KEY_Shift_R)})
        if (key->shifted && keys.size() == 1 && shift && !shift->shifted && shift->code != key->code)
            keys.prepend(shift->code);
    for (const uint8_t code : std::as_const(keys))
        send(XCB_KEY_PRESS, code);
    for (auto code = keys.crbegin(); code != keys.crend(); ++code)
        send(XCB_KEY_RELEASE, *code);
}

void XInputSource::followUser(uint16_t state)
{
    if (m_keyboard && (state & XCB_MOD_MASK_LOCK) != 0) {
        m_capsIsToBeLocked = !m_capsIsToBeLocked;
        pressCapsLock();
        m_display->synchronize();
    }
    if (m_keyboard && (m_changes.any() || state >> layoutShift != int(m_keyboard->layout())))
        readKeyboardAgain();
}

void XInputSource::readKeyboardAgain()
{
    if (auto now = XKeyboard::read(*m_display))
        m_keyboard = std::move(now);
}

KeyboardHolder XInputSource::keyboardHolder()
{
    if (!m_target)
        m_target.emplace(*m_display);
    return m_target->holder();
}

void XInputSource::prepareText(const QString &text)
{
    m_text = text.toStdU32String();
    m_position = 0;
    lendAhead();
}

void XInputSource::lendAhead(QList<uint8_t> keys)
{
    if (!m_keyboard)
        return;
    keys += m_keyboard->spareKeys();
    QList<xkb_keysym_t> missing;
    for (std::size_t at = m_position; at < m_text.size() && missing.size() < keys.size(); ++at) {
        const auto symbol = symbolOf(m_text[at]);
        if (!symbol || missing.contains(*symbol))
            continue;
        if (const auto key = m_keyboard->keyFor(*symbol))
            keys.removeOne(key->code);
        else
            missing.append(*symbol);
    }
    lend(keys, missing);
}

void XInputSource::lend(QList<uint8_t> keys, const QList<xkb_keysym_t> &symbols)
{
    const qsizetype used = std::min(symbols.size(), keys.size());
    if (used == 0)
        return;
    std::sort(keys.begin(), keys.end());
    m_lentKeys.lend(keys.first(used), symbols.first(used));
    // Its own changes are no news, and the user's may have come between them.
    if (m_changes.any())
        readKeyboardAgain();
}

std::optional<XKey> XInputSource::keyOf(xkb_keysym_t symbol) const
{
    return m_keyboard ? m_keyboard->keyFor(symbol) : std::nullopt;
}

bool XInputSource::characterDown(char32_t character)
{
    // A line end of two characters is one key.
    const bool endsPair = character == U'\n' && m_position > 0 && m_position <= m_text.size() &&
                          m_text[m_position - 1] == U'\r';
    const std::optional<xkb_keysym_t> symbol = endsPair ? std::nullopt : symbolOf(character);
    if (symbol && !symbolDown(*symbol))
        return false;
    ++m_position;
    return true;
}

bool XInputSource::symbolDown(xkb_keysym_t symbol)
{
    const uint16_t state = stateNow();
    followUser(state);
    std::optional<XKey> key = keyOf(symbol);
    if (!key) {
        lendAhead();
        key = keyOf(symbol);
    }
    if (!key && m_keyboard && !m_lentKeys.isEmpty()) {
        if (!m_lentKeys.areRead())
            return false;
        lendAhead(m_lentKeys.keys(*m_keyboard));
        key = keyOf(symbol);
    }
    const auto modifiers = modifierKeys(key && key->shifted ? shiftFlag : 0);
    if (key && modifiers) {
        letGoOfForeignModifiers(state);
        for (const uint8_t shift : *modifiers)
            pressKey(shift);
        pressKey(key->code);
    }
    return true;
}

void XInputSource::characterUp(char32_t)
{
    while (!m_heldKeys.isEmpty())
        releaseKey(m_heldKeys.last());
}

} // namespace morvane
