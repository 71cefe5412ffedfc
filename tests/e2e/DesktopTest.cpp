#include "DesktopTest.h"

#include "support/WaitUntil.h"

#include <QFile>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace morvane {

void DesktopTest::startProgram(const MorvaneSession &morvane, const QString &program,
                               const QStringList &arguments)
{
    m_program = std::make_unique<TestProgram>(program, arguments, morvane.desktop().environment(),
                                              morvane.home() + u"/program.log"_s);
    ASSERT_TRUE(waitUntil([&] {
        const xcb_window_t active = morvane.screen().activeWindow();
        return morvane.screen().property(active, "_NET_WM_PID").value(0) == uint32_t(m_program->pid());
    }));
}

MorvaneSession &DesktopTest::startTypingALot(std::vector<ScriptedTurn> further)
{
    std::vector<ScriptedTurn> turns{
        callingTool("activate_app", R"({"name":"xterm"})"),
        callingTool("type_text", "{\"text\":\"" + std::string(3000, 'A') + "ß漢\"}")};
    turns.insert(turns.end(), further.begin(), further.end());
    MorvaneSession &morvane = prepare(std::move(turns));
    m_typed = morvane.home() + u"/typed"_s;
    startProgram(morvane, u"xterm"_s,
                 {u"-u8"_s, u"-e"_s, u"sh"_s, u"-c"_s, u"stty -icanon; cat > "_s + m_typed});
    m_keys = keyboardMapping(morvane.screen());
    morvane.start();
    morvane.send(u"Type a lot"_s);
    EXPECT_TRUE(waitUntil([&] { return QFile(m_typed).size() > 20; }))
        << morvane.program().tree().description().toStdString();
    return morvane;
}

void DesktopTest::TearDown()
{
    MorvaneTest::TearDown();
    m_program.reset();
}

QStringList DesktopTest::results(MorvaneSession &morvane)
{
    QStringList texts;
    for (const ScriptedRequest &request : morvane.model().requests()) {
        const auto &message = request.json.at("messages").as_array().back();
        if (message.at("role").as_string() == "tool")
            texts.append(QString::fromUtf8(message.at("content").as_string().c_str()));
    }
    return texts;
}

QByteArray DesktopTest::keyboardMapping(const XConnection &screen)
{
    xcb_connection_t *const connection = screen.handle();
    constexpr uint8_t first = 8;
    const auto reply = std::unique_ptr<xcb_get_keyboard_mapping_reply_t, decltype(&std::free)>(
        xcb_get_keyboard_mapping_reply(connection, xcb_get_keyboard_mapping(connection, first, 256 - first),
                                       nullptr),
        &std::free);
    const QByteArray symbols(reinterpret_cast<const char *>(xcb_get_keyboard_mapping_keysyms(reply.get())),
                             xcb_get_keyboard_mapping_keysyms_length(reply.get()) *
                                 qsizetype(sizeof(xcb_keysym_t)));
    return symbols + char(reply->keysyms_per_keycode);
}

QByteArray DesktopTest::heldKeys(const XConnection &screen)
{
    xcb_connection_t *const connection = screen.handle();
    const auto reply = std::unique_ptr<xcb_query_keymap_reply_t, decltype(&std::free)>(
        xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr), &std::free);
    return {reinterpret_cast<const char *>(reply->keys), sizeof reply->keys};
}

} // namespace morvane
