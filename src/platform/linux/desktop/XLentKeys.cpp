#include "platform/linux/desktop/XLentKeys.h"

#include "platform/linux/desktop/XKeySymbols.h"
#include "platform/linux/desktop/XWindows.h"

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// For programs that do not say what they have read.
constexpr auto timeOfTheMute = 1s;

constexpr std::string_view keysNote = "_MORVANE_LENT_KEYS";
constexpr std::string_view readersNote = "_MORVANE_LENT_KEYS_READERS";
/// On the windows themselves: numbers of windows that have gone are given to others.
constexpr std::string_view readersMark = "_MORVANE_READS_LENT_KEYS";

/// What is on a key without modifiers.
xkb_keysym_t symbolOn(const XDisplay &display, uint8_t key)
{
    const auto reply = display.reply<xcb_get_keyboard_mapping_reply_t>(
        xcb_get_keyboard_mapping(display.connection(), key, 1));
    const bool isAny = reply && xcb_get_keyboard_mapping_keysyms_length(reply.get()) > 0;
    return isAny ? *xcb_get_keyboard_mapping_keysyms(reply.get()) : xkb_keysym_t(XKB_KEY_NoSymbol);
}

/// Of the windows around the focus, the one that its program has told about to window managers.
xcb_window_t windowWithKeyboard(const XDisplay &display)
{
    const auto reply = display.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(display.connection()));
    const auto windows = withAncestors(display, reply ? reply->focus : xcb_window_t(XCB_NONE));
    for (const xcb_window_t window : windows)
        if (!display.values(window, "WM_PROTOCOLS").isEmpty())
            return window;
    return windows.isEmpty() ? display.root() : windows.first();
}

} // namespace

XLentKeys::XLentKeys(const XDisplay &display) : m_display(display)
{
    const QList<uint32_t> pairs = display.values(display.root(), keysNote);
    for (qsizetype at = 0; at + 1 < pairs.size(); at += 2)
        m_keys.insert(uint8_t(pairs.at(at)), pairs.at(at + 1));
    m_readers = display.values(display.root(), readersNote);
    m_readers.removeIf(
        [&display](xcb_window_t window) { return display.values(window, readersMark).isEmpty(); });
}

void XLentKeys::note() const
{
    QList<uint32_t> pairs;
    for (auto key = m_keys.cbegin(); key != m_keys.cend(); ++key)
        pairs << key.key() << key.value();
    const auto write = [this](std::string_view name, xcb_atom_t type, const QList<uint32_t> &values) {
        xcb_change_property(m_display.connection(), XCB_PROP_MODE_REPLACE, m_display.root(),
                            m_display.atom(name), type, 32, uint32_t(values.size()), values.constData());
    };
    write(keysNote, XCB_ATOM_CARDINAL, pairs);
    write(readersNote, XCB_ATOM_WINDOW, m_readers);
}

QList<uint8_t> XLentKeys::keys(const XKeyboard &now) const
{
    QList<uint8_t> keys = m_keys.keys();
    keys.removeIf([&](uint8_t key) { return now.symbol(key) != m_keys.value(key); });
    return keys;
}

void XLentKeys::lend(const QList<uint8_t> &keys, const QList<xkb_keysym_t> &symbols)
{
    QMap<uint8_t, xkb_keysym_t> change;
    for (qsizetype at = 0; at < keys.size(); ++at)
        change.insert(keys.at(at), symbols.at(at));
    m_keys.insert(change);
    // First, so that no key changes that nobody knows of after a crash.
    note();
    putOnKeys(m_display, change);
    m_display.synchronize();
    m_ping.reset();
}

void XLentKeys::use(uint8_t key)
{
    if (m_isReaderKnown || !m_keys.contains(key))
        return;
    m_isReaderKnown = true;
    if (const xcb_window_t reader = windowWithKeyboard(m_display); !m_readers.contains(reader)) {
        m_readers.append(reader);
        const uint32_t marked = 1;
        xcb_change_property(m_display.connection(), XCB_PROP_MODE_REPLACE, reader,
                            m_display.atom(readersMark), XCB_ATOM_CARDINAL, 32, 1, &marked);
        note();
    }
}

bool XLentKeys::areRead()
{
    if (!m_ping) {
        m_display.synchronize();
        m_ping.emplace(m_readers, m_display.stop());
        m_patience.setRemainingTime(timeOfTheMute);
    }
    switch (m_ping->state()) {
    case XPing::State::answered:
        return true;
    case XPing::State::waiting:
        return false;
    case XPing::State::unknown:
        return m_patience.hasExpired();
    }
    return true;
}

void XLentKeys::giveBack()
{
    QMap<uint8_t, xkb_keysym_t> change;
    // Whatever else has been put on a key meanwhile stays there.
    for (auto key = m_keys.cbegin(); key != m_keys.cend(); ++key)
        if (symbolOn(m_display, key.key()) == key.value())
            change.insert(key.key(), XKB_KEY_NoSymbol);
    putOnKeys(m_display, change);
    for (const xcb_window_t reader : std::as_const(m_readers))
        xcb_delete_property(m_display.connection(), reader, m_display.atom(readersMark));
    for (const std::string_view name : {keysNote, readersNote})
        xcb_delete_property(m_display.connection(), m_display.root(), m_display.atom(name));
    m_display.synchronize();
    m_keys.clear();
    m_readers.clear();
    m_isReaderKnown = false;
    m_ping.reset();
}

void XLentKeys::giveBackOnceRead(std::chrono::milliseconds limit)
{
    if (m_keys.isEmpty())
        return;
    m_display.synchronize();
    if (XPing(m_readers, m_display.stop()).wait(limit) == XPing::State::answered)
        giveBack();
}

} // namespace morvane
