#include "platform/linux/desktop/XInputSource.h"

#include "platform/linux/desktop/KeyPositions.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// A program hears of changed keys with its other events and asks for them when it comes to it.
constexpr auto timeToLearn = 60ms;
/// How long a program may take to read what was typed on keys that are then given back.
constexpr auto timeToRead = 300ms;

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

/// Gives each key its symbol. Keys that follow one another change together: all programs are told of each
/// change, and window managers take tens of milliseconds for it.
void changeKeys(XDisplay &display, const QList<uint8_t> &keys, const QList<xkb_keysym_t> &symbols)
{
    for (qsizetype from = 0, to = 0; from < keys.size(); from = to) {
        QList<xcb_keysym_t> levels;
        for (; to < keys.size() && keys.at(to) - keys.at(from) == to - from; ++to)
            // On both levels, so that neither Shift nor the server's own rules for capitals change it.
            levels << symbols.at(to) << symbols.at(to);
        xcb_change_keyboard_mapping(display.connection(), uint8_t(to - from), keys.at(from), 2,
                                    levels.constData());
    }
}

} // namespace

XInputSource::XInputSource(std::unique_ptr<XDisplay> display)
    : m_display(std::move(display)), m_origin(m_display->origin()), m_keyboard(XKeyboard::read(*m_display))
{
    if (m_keyboard)
        m_spareKeys = m_keyboard->spareKeys();
}

XInputSource::~XInputSource()
{
    for (const uint8_t button : std::as_const(m_heldButtons))
        send(XCB_BUTTON_RELEASE, button);
    while (!m_heldKeys.isEmpty())
        releaseKey(m_heldKeys.last());
    giveBackKeys();
    if (m_capsIsToBeLocked)
        toggleCapsLock();
    m_display->synchronize();
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
    xcb_connection_t *const connection = m_display->connection();
    const auto reply =
        xReply(xcb_get_pointer_mapping_reply(connection, xcb_get_pointer_mapping(connection), nullptr));
    if (!reply)
        return logicalButton;
    const uint8_t *const map = xcb_get_pointer_mapping_map(reply.get());
    const uint8_t *const end = map + xcb_get_pointer_mapping_map_length(reply.get());
    const uint8_t *const found = std::find(map, end, logicalButton);
    return found != end ? uint8_t(found - map + 1) : logicalButton;
}

void XInputSource::buttonDown(MouseButton button, QPoint)
{
    letGoOfForeignModifiers(stateNow());
    const uint8_t physical = physicalButton(button == MouseButton::left ? leftButton : rightButton);
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
    const uint8_t wheel = physicalButton(m_scrolled > 0 ? wheelUp : wheelDown);
    for (; std::abs(m_scrolled) >= pixelsPerNotch;
         m_scrolled -= m_scrolled > 0 ? pixelsPerNotch : -pixelsPerNotch) {
        send(XCB_BUTTON_PRESS, wheel);
        send(XCB_BUTTON_RELEASE, wheel);
    }
}

void XInputSource::pressKey(uint8_t code)
{
    send(XCB_KEY_PRESS, code);
    m_heldKeys.append(code);
}

void XInputSource::releaseKey(uint8_t code)
{
    if (!m_heldKeys.removeOne(code))
        return;
    send(XCB_KEY_RELEASE, code);
}

QList<uint8_t> XInputSource::modifierKeys(quint32 flags) const
{
    QList<uint8_t> keys;
    const auto add = [&](quint32 wanted, xkb_keysym_t symbol) {
        if ((flags & wanted) != 0)
            if (const auto key = m_keyboard ? m_keyboard->keyFor(symbol) : std::nullopt)
                keys.append(key->code);
    };
    add(controlFlags, XKB_KEY_Control_L);
    add(optionFlag, XKB_KEY_Alt_L);
    add(shiftFlag, XKB_KEY_Shift_L);
    return keys;
}

std::optional<uint8_t> XInputSource::keyForCode(int code)
{
    if (const auto symbol = fixedSymbol(code); symbol && m_keyboard) {
        const bool isNumberPad = numberPadSymbol(code).has_value();
        const auto key = keyForSymbol(*symbol);
        if (key && !key->shifted)
            return key->code;
        if (isNumberPad) {
            mapSymbols({*symbol});
            if (const auto mapped = m_mapped.constFind(*symbol); mapped != m_mapped.cend())
                return *mapped;
        }
    }
    return keyAtPosition(code);
}

void XInputSource::keyDown(int code, quint32 flags)
{
    const std::optional<uint8_t> key = keyForCode(code);
    if (!key)
        return;
    letGoOfForeignModifiers(stateNow());
    for (const uint8_t modifier : modifierKeys(flags))
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
    xcb_connection_t *const connection = m_display->connection();
    const auto pointer = xReply(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, m_display->root()), nullptr));
    return pointer ? pointer->mask : 0;
}

void XInputSource::letGoOfForeignModifiers(uint16_t state)
{
    if ((state & effectiveModifiers) == 0 || !m_heldKeys.isEmpty())
        return;
    xcb_connection_t *const connection = m_display->connection();
    const auto pressed = xReply(xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr));
    const auto modifiers =
        xReply(xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
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

void XInputSource::toggleCapsLock()
{
    if (const auto key = m_keyboard->keyFor(XKB_KEY_Caps_Lock)) {
        send(XCB_KEY_PRESS, key->code);
        send(XCB_KEY_RELEASE, key->code);
        m_display->synchronize();
    }
}

void XInputSource::followUser(uint16_t state)
{
    if (m_keyboard && (state & XCB_MOD_MASK_LOCK) != 0) {
        m_capsIsToBeLocked = !m_capsIsToBeLocked;
        toggleCapsLock();
    }
    if (m_keyboard && (m_changes.any() || state >> layoutShift != int(m_keyboard->layout())))
        readKeyboardAgain();
}

void XInputSource::readKeyboardAgain()
{
    auto now = XKeyboard::read(*m_display);
    if (!now)
        return;
    m_keyboard = std::move(now);
    // Another layout takes off the spare keys what was put on them.
    using Used = QMap<uint8_t, xkb_keysym_t>::iterator;
    m_usedSpares.removeIf([this](Used used) { return m_keyboard->symbol(used.key()) != used.value(); });
    using Mapped = QHash<xkb_keysym_t, uint8_t>::iterator;
    m_mapped.removeIf([this](Mapped mapped) { return !m_usedSpares.contains(*mapped); });
    m_spareKeys = m_usedSpares.keys() + m_keyboard->spareKeys();
}

std::optional<XKey> XInputSource::keyForSymbol(xkb_keysym_t symbol) const
{
    if (const auto mapped = m_mapped.constFind(symbol); mapped != m_mapped.cend())
        return XKey{*mapped, false};
    return m_keyboard ? m_keyboard->keyFor(symbol) : std::nullopt;
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
    mapAhead();
}

void XInputSource::mapAhead()
{
    if (!m_keyboard)
        return;
    QList<xkb_keysym_t> missing;
    for (std::size_t at = m_position; at < m_text.size() && missing.size() < m_spareKeys.size(); ++at) {
        const auto symbol = symbolOf(m_text[at]);
        if (symbol && !m_keyboard->keyFor(*symbol) && !missing.contains(*symbol))
            missing.append(*symbol);
    }
    if (!missing.isEmpty())
        mapSymbols(missing);
}

void XInputSource::mapSymbols(const QList<xkb_keysym_t> &symbols)
{
    if (!m_mapped.isEmpty()) {
        m_display->synchronize();
        std::this_thread::sleep_for(timeToRead);
    }
    m_mapped.clear();
    const qsizetype used = std::min(symbols.size(), m_spareKeys.size());
    changeKeys(*m_display, m_spareKeys.first(used), symbols.first(used));
    for (qsizetype at = 0; at < used; ++at) {
        m_mapped.insert(symbols.at(at), m_spareKeys.at(at));
        m_usedSpares.insert(m_spareKeys.at(at), symbols.at(at));
    }
    m_display->synchronize();
    // Its own changes are no news, and the user's may have come between them.
    if (m_changes.any())
        readKeyboardAgain();
    std::this_thread::sleep_for(timeToLearn);
}

void XInputSource::giveBackKeys()
{
    if (m_usedSpares.isEmpty())
        return;
    m_display->synchronize();
    std::this_thread::sleep_for(timeToRead);
    if (m_changes.any())
        readKeyboardAgain();
    changeKeys(*m_display, m_usedSpares.keys(), QList<xkb_keysym_t>(m_usedSpares.size(), XCB_NO_SYMBOL));
}

void XInputSource::characterDown(char32_t character)
{
    // A line end of two characters is one key.
    const bool endsPair = character == U'\n' && m_position > 0 && m_position <= m_text.size() &&
                          m_text[m_position - 1] == U'\r';
    const std::optional<xkb_keysym_t> symbol = endsPair ? std::nullopt : symbolOf(character);
    if (symbol) {
        const uint16_t state = stateNow();
        followUser(state);
        std::optional<XKey> key = keyForSymbol(*symbol);
        if (!key && m_position < m_text.size()) {
            mapAhead();
            key = keyForSymbol(*symbol);
        }
        if (key) {
            letGoOfForeignModifiers(state);
            if (key->shifted)
                for (const uint8_t shift : modifierKeys(shiftFlag))
                    pressKey(shift);
            pressKey(key->code);
        }
    }
    ++m_position;
}

void XInputSource::characterUp(char32_t)
{
    while (!m_heldKeys.isEmpty())
        releaseKey(m_heldKeys.last());
}

} // namespace morvane
