// Draws the real browser, with a page of a small site of its own, on a display of its own, after the agent
// has opened the page, written into it and answered.
//
//   browser-picture PROGRAM PICTURE.png [--dark] [--panel] [--font 20] [--width 760] [--height 720]
//
// Ends with status 1 and a reason as soon as something does not happen.

#include "support/DesktopColors.h"
#include "support/MorvaneSession.h"
#include "support/PageServer.h"
#include "support/WaitUntil.h"
#include "tools/GalleryOptions.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr auto script = R"json({
  "title": "The food of kingfishers",
  "turns": [
    {"calls": [{"name": "browser_open", "arguments": {"url": "http://birds.test/kingfisher"}}]},
    {"calls": [{"name": "browser_type", "arguments": {"number": 5, "text": "What do they eat?"}}]},
    {"text": "Kingfishers eat fish. I have written your question into the site's search field."}
  ]
})json";

constexpr auto page = R"html(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>Kingfisher - a small book of birds</title>
<meta name="viewport" content="width=device-width"><style>
  :root { color-scheme: light dark; --paper: #fdfcf8; --ink: #23303a; --line: #d8d4c6; --link: #0b5f8a; }
  @media (prefers-color-scheme: dark) { :root { --paper: #14191d; --ink: #dfe6ea; --line: #3a4650; --link: #79c3ee; } }
  body { margin: 0 auto; max-width: 54rem; padding: 1rem 1.5rem; background: var(--paper); color: var(--ink);
         font: 1rem/1.5 sans-serif; }
  nav a { margin-right: 1.25rem; } a { color: var(--link); }
  h1 { border-bottom: 1px solid var(--line); }
  form { display: flex; gap: 0.5rem; margin: 1rem 0; } input { flex: 1; } input, button { font: inherit; padding: 0.4rem; }
  svg { float: right; width: 12rem; margin-left: 1.5rem; }
</style></head><body>
<nav><a href="/">Birds</a><a href="/rivers">Rivers</a><a href="/seas">Seas</a><a href="/about">About</a></nav>
<h1>Kingfisher</h1>
<svg viewBox="0 0 120 90" role="img" aria-label="A kingfisher on a branch"><rect y="70" width="120" height="6"
  fill="#7a5a3a"/><ellipse cx="62" cy="48" rx="22" ry="24" fill="#e08a3c"/><path d="M50 30q30 0 36 40l-22-8z"
  fill="#1d7fb8"/><circle cx="54" cy="26" r="14" fill="#1d7fb8"/><path d="M42 24l-34 4 34 4z" fill="#333"/><circle cx="50"
  cy="23" r="2.5" fill="#fff"/></svg>
<p>Kingfishers are small, bright birds with a long bill. They sit on a branch above the water, wait, and dive for
what moves below them.</p>
<form action="/search"><input name="q" aria-label="Search the book" placeholder="Search the book"><button>Search</button>
</form>
<h2>Where they live</h2><p>Most live by rivers and lakes; some live far from any water and eat what they find in the
woods.</p>
<h2>What they eat</h2><p>Fish first of all, which they turn until it can be swallowed with its head in front. Then water
insects, small crabs, and tadpoles.</p>
<h2>Their nests</h2><p>They dig a tunnel into a steep bank, as long as an arm, with a chamber at its end.</p>
</body></html>)html";

void expect(bool happened, const QString &what)
{
    if (!happened)
        throw std::runtime_error(what.toStdString());
}

void prepare(MorvaneSession &morvane, const PageServer &site, const QCommandLineParser &parser)
{
    if (geteuid() == 0)
        morvane.setVariable(u"QTWEBENGINE_DISABLE_SANDBOX"_s, u"1"_s);
    morvane.setVariable(u"QTWEBENGINE_CHROMIUM_FLAGS"_s,
                        u"--no-proxy-server --host-resolver-rules=\"MAP birds.test:80 127.0.0.1:%1\""_s.arg(
                            site.url(u"/"_s).port()));
    // Points at the usual 96 dots an inch are 10.
    constexpr double dots = 96.0 / 10;
    morvane.setVariable(u"QT_FONT_DPI"_s, QString::number(parser.value(u"font"_s).toInt() * dots, 'f', 0));
}

void play(MorvaneSession &morvane)
{
    morvane.start();
    morvane.send(u"What do kingfishers eat? Ask the site, too."_s);
    expect(morvane.ear().hears(u"Conversation summarized as: The food of kingfishers."_s),
           u"no answer was heard"_s);
    const AccessibleProgram &program = morvane.program();
    expect(program.shows(u"Browser content: Kingfisher - a small book of birds"_s),
           u"the page is not shown"_s);
    expect(waitUntil([&] { return program.find(u"Search the book"_s).text() == "What do they eat?"_L1; }),
           u"nothing was written into the page"_s);
    program.find(u"Morvane Browser"_s, AccessibleRole::pushButton).press();
    morvane.keyboard().press(u"Ctrl+D"_s);
    expect(program.shows(u"Bookmarks, 1 items"_s), u"the bookmark is not shown"_s);
}

void expandPanel(const AccessibleProgram &program)
{
    program.find(u"Expand the agent panel"_s).press();
    expect(program.shows(u"Collapse the agent panel"_s), u"the panel does not expand"_s);
}

QRect placeOf(const XConnection &screen, xcb_window_t window)
{
    xcb_connection_t *const connection = screen.handle();
    const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> size(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr), &std::free);
    const std::unique_ptr<xcb_translate_coordinates_reply_t, decltype(&std::free)> corner(
        xcb_translate_coordinates_reply(
            connection, xcb_translate_coordinates(connection, window, screen.root(), 0, 0), nullptr),
        &std::free);
    if (!size || !corner)
        return {};
    return {corner->dst_x, corner->dst_y, size->width, size->height};
}

/// The window in front in this size, once it has come to rest.
QImage pictureOf(const XConnection &screen, QSize size)
{
    const xcb_window_t window = screen.activeWindow();
    const uint32_t sides[] = {uint32_t(size.width()), uint32_t(size.height())};
    xcb_configure_window(screen.handle(), window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
    xcb_flush(screen.handle());
    expect(waitUntil([&] { return placeOf(screen, window).size() == size; }), u"the window keeps its size"_s);
    QImage picture;
    int looks = 0;
    expect(waitUntil([&] {
               const QImage now = screen.screenshot().copy(placeOf(screen, window));
               looks = now == picture ? looks + 1 : 0;
               picture = now;
               return looks == 20;
           }),
           u"the window does not come to rest"_s);
    return picture;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    addGalleryOptions(parser, {1150, 780});
    parser.addOption({u"panel"_s, u"The agent's panel is expanded."_s});
    parser.addPositionalArgument(u"program"_s, u"The program to be shown."_s);
    parser.addPositionalArgument(u"picture"_s, u"The file to be written."_s);
    parser.process(application);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2)
        parser.showHelp(2);
    try {
        const PrivateDesktop desktop;
        const DesktopColors colors(desktop, parser.isSet(u"dark"_s) ? DesktopColors::Preference::dark
                                                                    : DesktopColors::Preference::light);
        PageServer site;
        site.page(u"/kingfisher"_s, page);
        MorvaneSession morvane(desktop, QFileInfo(arguments.at(0)).absoluteFilePath(),
                               ModelScript::fromJson(script));
        prepare(morvane, site, parser);
        play(morvane);
        if (parser.isSet(u"panel"_s))
            expandPanel(morvane.program());
        expect(pictureOf(morvane.screen(), gallerySize(parser)).save(arguments.at(1)),
               u"the picture could not be written"_s);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "No picture: %s\n", error.what());
        return 1;
    }
    return 0;
}
