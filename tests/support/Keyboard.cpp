#include "support/Keyboard.h"

#include <QHash>
#include <QStringList>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <xcb/xtest.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Key symbols of the X protocol; printable characters of Latin-1 are their own symbols.
uint32_t symbolFor(const QString &key)
{
    static const QHash<QString, uint32_t> named{
        {u"Return"_s, 0xff0d}, {u"Tab"_s, 0xff09},      {u"Escape"_s, 0xff1b}, {u"Space"_s, 0x20},
        {u"Up"_s, 0xff52},     {u"Down"_s, 0xff54},     {u"Left"_s, 0xff51},   {u"Right"_s, 0xff53},
        {u"Home"_s, 0xff50},   {u"End"_s, 0xff57},      {u"PageUp"_s, 0xff55}, {u"PageDown"_s, 0xff56},
        {u"F1"_s, 0xffbe},     {u"F3"_s, 0xffc0},       {u"F6"_s, 0xffc3},     {u"F10"_s, 0xffc7},
        {u"Ctrl"_s, 0xffe3},   {u"Shift"_s, 0xffe1},    {u"Alt"_s, 0xffe9},    {u"Menu"_s, 0xff67},
        {u"Delete"_s, 0xffff}, {u"BackSpace"_s, 0xff08}};
    if (const auto found = named.constFind(key); found != named.constEnd())
        return *found;
    return key.size() == 1 ? key.toLower().at(0).unicode() : 0;
}

} // namespace

Keyboard::Keyboard(const XConnection &connection) : m_connection(connection) {}

Keyboard::Key Keyboard::keyFor(uint32_t symbol) const
{
    xcb_connection_t *const connection = m_connection.handle();
    const xcb_setup_t *setup = xcb_get_setup(connection);
    const auto first = setup->min_keycode;
    const auto count = uint8_t(setup->max_keycode - first + 1);
    const std::unique_ptr<xcb_get_keyboard_mapping_reply_t, decltype(&std::free)> mapping(
        xcb_get_keyboard_mapping_reply(connection, xcb_get_keyboard_mapping(connection, first, count),
                                       nullptr),
        &std::free);
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int level = 0; level < 2; ++level) {
        for (int key = 0; key < count; ++key)
            if (symbols[key * mapping->keysyms_per_keycode + level] == symbol)
                return {uint8_t(first + key), level == 1};
    }
    throw std::runtime_error("the keyboard has no key for symbol " + std::to_string(symbol));
}

void Keyboard::send(uint8_t type, uint8_t code) const
{
    xcb_test_fake_input(m_connection.handle(), type, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

void Keyboard::press(const QString &keys) const
{
    const QStringList parts = keys.split(u'+');
    for (const QString &part : parts)
        send(XCB_KEY_PRESS, keyFor(symbolFor(part)).code);
    for (auto part = parts.crbegin(); part != parts.crend(); ++part)
        send(XCB_KEY_RELEASE, keyFor(symbolFor(*part)).code);
    xcb_flush(m_connection.handle());
}

void Keyboard::releaseAll() const
{
    xcb_connection_t *const connection = m_connection.handle();
    const std::unique_ptr<xcb_query_keymap_reply_t, decltype(&std::free)> held(
        xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr), &std::free);
    for (unsigned code = 0; code < 256; ++code)
        if ((held->keys[code / 8] >> (code % 8) & 1) != 0)
            send(XCB_KEY_RELEASE, uint8_t(code));
    xcb_flush(connection);
}

void Keyboard::type(const QString &text) const
{
    const uint8_t shift = keyFor(symbolFor(u"Shift"_s)).code;
    for (const QChar character : text) {
        const Key key = keyFor(character.unicode());
        if (key.shifted)
            send(XCB_KEY_PRESS, shift);
        send(XCB_KEY_PRESS, key.code);
        send(XCB_KEY_RELEASE, key.code);
        if (key.shifted)
            send(XCB_KEY_RELEASE, shift);
    }
    xcb_flush(m_connection.handle());
}

} // namespace morvane
