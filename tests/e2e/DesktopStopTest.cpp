#include "DesktopTest.h"

#include "support/WaitUntil.h"

#include <QFile>
#include <csignal>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The user stops, or Morvane ends, while the model acts on another program.
class DesktopStopTest : public DesktopTest {
protected:
    static void stop(MorvaneSession &morvane)
    {
        morvane.program().find(u"Stop generating"_s).press();
        EXPECT_TRUE(morvane.ear().hears(u"Generation cancelled."_s));
    }

    /// As the user does who comes back from the other program by the list of windows.
    static void comeBackAndSend(MorvaneSession &morvane, const QString &text)
    {
        const XConnection &screen = morvane.screen();
        const auto isOwn = [&](xcb_window_t window) {
            return screen.property(window, "_NET_WM_PID").value(0) ==
                   uint32_t(morvane.program().process().pid());
        };
        for (const xcb_window_t window : screen.property(screen.root(), "_NET_CLIENT_LIST")) {
            xcb_client_message_event_t wish{};
            wish.response_type = XCB_CLIENT_MESSAGE;
            wish.format = 32;
            wish.window = window;
            wish.type = screen.atom("_NET_ACTIVE_WINDOW");
            wish.data.data32[0] = 2; // The user's.
            if (isOwn(window))
                xcb_send_event(screen.handle(), 0, screen.root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                               reinterpret_cast<const char *>(&wish));
        }
        xcb_flush(screen.handle());
        EXPECT_TRUE(waitUntil([&] { return isOwn(screen.activeWindow()); }));
        morvane.send(text);
    }

    /// The buttons of the mouse that are down.
    static int heldButtons(const XConnection &screen)
    {
        xcb_connection_t *const connection = screen.handle();
        const auto reply = std::unique_ptr<xcb_query_pointer_reply_t, decltype(&std::free)>(
            xcb_query_pointer_reply(connection, xcb_query_pointer(connection, screen.root()), nullptr),
            &std::free);
        return reply->mask & (XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3);
    }
};

TEST_F(DesktopStopTest, AStopInMidWordLetsGoOfTheKeysAndTheNextRequestTypes)
{
    MorvaneSession &morvane =
        startTypingALot({callingTool("activate_app", R"({"name":"xterm"})"),
                         callingTool("type_text", R"({"text":"end\n"})"), ScriptedTurn::saying({"Typed."})});
    stop(morvane);
    EXPECT_TRUE(waitUntil([&] { return heldKeys(morvane.screen()) == QByteArray(32, '\0'); }));
    comeBackAndSend(morvane, u"Only one line more"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Typed."_s));
    const auto content = [this] {
        QFile file(m_typed);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    EXPECT_TRUE(waitUntil([&] { return content().endsWith("Aend\n"); })) << content().toStdString();
    EXPECT_LT(content().size(), 3000);
}

TEST_F(DesktopStopTest, AStopInMidDragLetsGoOfTheButtonAndTheNextRequestDrags)
{
    constexpr int drags = 12;
    std::vector<ScriptedTurn> turns;
    for (int drag = 0; drag < drags; ++drag)
        turns.push_back(callingTool("mouse_drag", "{\"from_x\":1200,\"from_y\":900,\"to_x\":1210,\"to_y\":" +
                                                      std::to_string(910 + drag) + "}"));
    turns.push_back(ScriptedTurn::saying({"All is dragged."}));
    MorvaneSession &morvane = prepare(std::move(turns));
    startProgram(morvane, u"xterm"_s, {u"-maximized"_s});
    morvane.start();
    morvane.send(u"Drag it about"_s);
    ASSERT_TRUE(waitUntil([&] { return heldButtons(morvane.screen()) != 0; }));
    stop(morvane);
    EXPECT_TRUE(waitUntil([&] { return heldButtons(morvane.screen()) == 0; }));
    EXPECT_LT(results(morvane).size(), drags);
    morvane.send(u"Go on"_s);
    ASSERT_TRUE(morvane.ear().hears(u"All is dragged."_s));
    EXPECT_THAT(results(morvane).last().toStdString(), testing::StartsWith("Dragged from (1200, 900)"));
    EXPECT_EQ(heldButtons(morvane.screen()), 0);
}

TEST_F(DesktopStopTest, AStopWhileAFrozenProgramIsLookedAtEndsTheRunAndTheNextRequestSeesIt)
{
    MorvaneSession &morvane =
        prepare({callingTool("activate_app", R"({"name":"yad"})"), callingTool("capture_screen", "{}"),
                 callingTool("activate_app", R"({"name":"yad"})"), callingTool("capture_screen", "{}"),
                 ScriptedTurn::saying({"It is seen."})});
    startProgram(morvane, u"yad"_s,
                 {u"--form"_s, u"--maximized"_s, u"--title=Copying"_s, u"--field=Copy it:fbtn"_s});
    morvane.start();
    ::kill(pid_t(m_program->pid()), SIGSTOP);
    morvane.send(u"Look"_s);
    ASSERT_TRUE(morvane.program().shows(u"Status. Running: look at the screen"_s));
    stop(morvane);
    ::kill(pid_t(m_program->pid()), SIGCONT);
    comeBackAndSend(morvane, u"Look again"_s);
    ASSERT_TRUE(morvane.ear().hears(u"It is seen."_s));
    EXPECT_THAT(results(morvane).last().toStdString(), testing::HasSubstr("button 'Copy it'"));
}

TEST_F(DesktopStopTest, ADialogThatMorvaneHasOpenedIsAnsweredByTheNextMorvane)
{
    MorvaneSession &morvane =
        prepare({callingTool("activate_app", R"({"name":"asking"})"), callingTool("capture_screen", "{}"),
                 callingTool("ax_click", R"({"index":1})"), ScriptedTurn::saying({"It is open."}),
                 callingTool("activate_app", R"({"name":"asking"})"), callingTool("capture_screen", "{}"),
                 callingTool("ax_type", R"({"index":2,"text":"amber"})"),
                 callingTool("ax_click", R"({"index":3})"), ScriptedTurn::saying({"It is answered."})});
    startProgram(morvane, u"/usr/bin/python3"_s,
                 {u"-c"_s, u"import gi\n"
                           "gi.require_version('Gtk', '3.0')\n"
                           "from gi.repository import GLib\n"
                           "GLib.set_prgname('asking')\n"
                           "from gi.repository import Gtk\n"
                           "window = Gtk.Window(title='Asking')\n"
                           "window.connect('destroy', Gtk.main_quit)\n"
                           "def ask(*_):\n"
                           "    dialog = Gtk.Dialog(title='Question', transient_for=window)\n"
                           "    field = Gtk.Entry()\n"
                           "    dialog.get_content_area().add(field)\n"
                           "    dialog.add_button('Yes', 1)\n"
                           "    dialog.show_all()\n"
                           "    print('answered', dialog.run(), field.get_text(), flush=True)\n"
                           "    dialog.destroy()\n"
                           "widget = Gtk.Button(label='Open')\n"
                           "widget.connect('clicked', ask)\n"
                           "window.add(widget)\n"
                           "window.show_all()\n"
                           "Gtk.main()\n"_s});
    morvane.start();
    morvane.send(u"Open it"_s);
    ASSERT_TRUE(morvane.ear().hears(u"It is open."_s));
    morvane.quit();
    morvane.start();
    morvane.send(u"Answer it"_s);
    ASSERT_TRUE(morvane.ear().hears(u"It is answered."_s));
    EXPECT_TRUE(waitUntil([&] { return m_program->log() == "answered 1 amber\n"_L1; }))
        << m_program->log().toStdString() << results(morvane).join(u'\n').toStdString();
}

} // namespace
} // namespace morvane
