#include "platform/linux/desktop/XKeySymbols.h"

#include <QByteArray>
#include <QList>
#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

// It has a member of this name.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit
#pragma clang diagnostic pop

namespace morvane {
namespace {

/// The numbers that a server gives to its devices, of which those that are no keyboards answer with an error.
constexpr std::size_t deviceNumbers = 256;

/// One of the types of keys that every keyboard has: with Shift and without.
constexpr uint8_t twoLevels = 1;

/// Nobody else changes a keyboard between the look at it and the change.
class Alone {
public:
    explicit Alone(const XDisplay &display) : m_display(display) { xcb_grab_server(display.connection()); }
    ~Alone()
    {
        xcb_ungrab_server(m_display.connection());
        xcb_flush(m_display.connection());
    }
    Alone(const Alone &) = delete;
    Alone &operator=(const Alone &) = delete;

private:
    const XDisplay &m_display;
};

template <class Part> void append(QByteArray &bytes, const Part &part)
{
    bytes.append(reinterpret_cast<const char *>(&part), sizeof part);
}

/// Part of a keyboard, as it is written into a request.
struct KeySymbols {
    QByteArray bytes;
    uint16_t total = 0;

    void put(xkb_keysym_t symbol)
    {
        xcb_xkb_key_sym_map_t key{};
        if (symbol != XKB_KEY_NoSymbol) {
            key.kt_index[0] = twoLevels;
            key.groupInfo = 1;
            key.width = key.nSyms = 2;
        }
        append(bytes, key);
        // On both levels, so that neither Shift nor the server's own rules for capitals change it.
        if (symbol != XKB_KEY_NoSymbol)
            append(bytes, std::array{symbol, symbol});
        total += key.nSyms;
    }
};

/// One of those that the server knows, its master of them all among them.
struct Keyboard {
    xcb_xkb_device_spec_t device = 0;
    xcb_keycode_t firstCode = 0;
    xcb_keycode_t lastCode = 0;
    KeySymbols keys; ///< As they are to be.

    bool isLike(const Keyboard &other) const
    {
        return firstCode == other.firstCode && lastCode == other.lastCode && keys.bytes == other.keys.bytes;
    }
};

/// The keys as they are in `map` but for those that change; nothing if it is not whole.
std::optional<KeySymbols> changed(const xcb_xkb_get_map_reply_t &map,
                                  const QMap<uint8_t, xkb_keysym_t> &symbols)
{
    const auto *from = reinterpret_cast<const char *>(&map + 1);
    std::size_t left = std::size_t(map.length) * 4 + 32 - sizeof map;
    KeySymbols keys;
    for (int code = map.firstKeySym; code < map.firstKeySym + map.nKeySyms; ++code) {
        xcb_xkb_key_sym_map_t key;
        if (left < sizeof key)
            return std::nullopt;
        std::memcpy(&key, from, sizeof key);
        const std::size_t size = sizeof key + key.nSyms * sizeof(xcb_keysym_t);
        if (left < size)
            return std::nullopt;
        if (const auto symbol = symbols.constFind(uint8_t(code)); symbol != symbols.cend()) {
            keys.put(*symbol);
        } else {
            keys.bytes.append(from, qsizetype(size));
            keys.total += key.nSyms;
        }
        from += size;
        left -= size;
    }
    return keys;
}

} // namespace

void putOnKeys(const XDisplay &display, const QMap<uint8_t, xkb_keysym_t> &symbols)
{
    xcb_connection_t *const connection = display.connection();
    if (symbols.isEmpty() || !display.hasExtension(&xcb_xkb_id) ||
        !display.reply<xcb_xkb_use_extension_reply_t>(
            xcb_xkb_use_extension(connection, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION)))
        return;
    const uint8_t first = symbols.firstKey();
    const auto count = uint8_t(symbols.lastKey() - first + 1);
    const Alone alone(display);
    std::array<xcb_xkb_get_map_cookie_t, deviceNumbers> questions{};
    for (std::size_t device = 0; device < questions.size(); ++device)
        questions[device] =
            xcb_xkb_get_map(connection, xcb_xkb_device_spec_t(device), 0, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0,
                            first, count, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    QList<Keyboard> keyboards;
    for (std::size_t device = 0; device < questions.size(); ++device) {
        const auto map = display.reply<xcb_xkb_get_map_reply_t>(questions[device]);
        auto keys = map && map->nKeySyms == count ? changed(*map, symbols) : std::nullopt;
        if (keys)
            keyboards.append(
                {xcb_xkb_device_spec_t(device), map->minKeyCode, map->maxKeyCode, std::move(*keys)});
    }
    // Told of the keyboard as such the server makes all of them the same.
    if (std::all_of(keyboards.begin(), keyboards.end(),
                    [&](const Keyboard &keyboard) { return keyboard.isLike(keyboards.first()); }))
        keyboards.resize(std::min<qsizetype>(keyboards.size(), 1));
    const bool isEachOther = keyboards.size() > 1;
    for (const Keyboard &keyboard : std::as_const(keyboards))
        xcb_xkb_set_map(connection, isEachOther ? keyboard.device : XCB_XKB_ID_USE_CORE_KBD,
                        XCB_XKB_MAP_PART_KEY_SYMS, 0, keyboard.firstCode, keyboard.lastCode, 0, 0, first,
                        count, keyboard.keys.total, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                        keyboard.keys.bytes.constData());
}

} // namespace morvane
