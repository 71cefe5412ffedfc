#include "platform/linux/desktop/XWindows.h"

#include "base/Text.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Longer titles are cut; programs put whole documents into them.
constexpr qsizetype titleLimit = 500;
constexpr uint32_t onAllDesktops = 0xffffffff;

/// What the server is asked once for all windows.
struct Atoms {
    explicit Atoms(const XDisplay &display)
        : dock(display.atom("_NET_WM_WINDOW_TYPE_DOCK")),
          desktop(display.atom("_NET_WM_WINDOW_TYPE_DESKTOP")), hidden(display.atom("_NET_WM_STATE_HIDDEN")),
          currentDesktop(display.values(display.root(), "_NET_CURRENT_DESKTOP").value(0))
    {
    }

    xcb_atom_t dock;
    xcb_atom_t desktop;
    xcb_atom_t hidden;
    uint32_t currentDesktop;
};

XWindow read(const XDisplay &display, xcb_window_t window, const Atoms &atoms)
{
    XWindow found;
    found.window = window;
    found.pid = display.values(window, "_NET_WM_PID").value(0);
    QByteArray title = display.bytes(window, "_NET_WM_NAME");
    const bool isUtf8 = !title.isEmpty();
    if (!isUtf8)
        title = display.bytes(window, "WM_NAME");
    found.title = firstCharacters(isUtf8 ? QString::fromUtf8(title) : QString::fromLatin1(title), titleLimit);
    found.frame = display.geometry(window);
    const auto types = display.values(window, "_NET_WM_WINDOW_TYPE");
    found.isOrdinary = !types.contains(atoms.dock) && !types.contains(atoms.desktop);
    const uint32_t desktop = display.values(window, "_NET_WM_DESKTOP").value(0, onAllDesktops);
    found.isShown = !display.values(window, "_NET_WM_STATE").contains(atoms.hidden) &&
                    (desktop == onAllDesktops || desktop == atoms.currentDesktop);
    return found;
}

} // namespace

QList<XWindow> stackedWindows(const XDisplay &display)
{
    const Atoms atoms(display);
    QList<XWindow> windows;
    const auto stacked = display.values(display.root(), "_NET_CLIENT_LIST_STACKING");
    for (auto window = stacked.crbegin(); window != stacked.crend(); ++window)
        windows.append(read(display, *window, atoms));
    return windows;
}

std::optional<XWindow> activeWindow(const XDisplay &display)
{
    const xcb_window_t window = display.values(display.root(), "_NET_ACTIVE_WINDOW").value(0);
    if (window == XCB_NONE || !display.exists(window))
        return std::nullopt;
    return read(display, window, Atoms(display));
}

QList<xcb_window_t> withAncestors(const XDisplay &display, xcb_window_t window)
{
    QList<xcb_window_t> windows;
    while (window > XCB_INPUT_FOCUS_POINTER_ROOT && window != display.root()) {
        windows.append(window);
        const auto tree = display.reply<xcb_query_tree_reply_t>(xcb_query_tree(display.connection(), window));
        window = tree ? tree->parent : xcb_window_t(XCB_NONE);
    }
    return windows;
}

xcb_window_t childOfRootAt(const XDisplay &display, QPoint place)
{
    const auto reply = display.reply<xcb_translate_coordinates_reply_t>(xcb_translate_coordinates(
        display.connection(), display.root(), display.root(), int16_t(place.x()), int16_t(place.y())));
    return reply ? reply->child : xcb_window_t(XCB_NONE);
}

bool hasKeyboard(const XDisplay &display, xcb_window_t window)
{
    const auto focus = display.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(display.connection()));
    return focus && withAncestors(display, focus->focus).contains(window);
}

} // namespace morvane
