#include "platform/linux/desktop/XKeySymbols.h"

#include "base/FileDescriptor.h"
#include "base/WriteWhole.h"
#include "platform/DisplaySilent.h"
#include "platform/linux/desktop/XKeyboard.h"
#include "support/WaitUntil.h"
#include "support/XConnection.h"

#include <array>
#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <semaphore>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

/// Lies between a client and the X server, and holds back all that the client sends from its first request of
/// one kind on.
class Relay {
public:
    /// A request of that kind begins with `held`.
    explicit Relay(QByteArray held) : m_held(std::move(held))
    {
        sockaddr_in here{};
        socklen_t size = sizeof here;
        here.sin_family = AF_INET;
        here.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::bind(m_listener.get(), reinterpret_cast<const sockaddr *>(&here), size), 0);
        EXPECT_EQ(::listen(m_listener.get(), 1), 0);
        EXPECT_EQ(::getsockname(m_listener.get(), reinterpret_cast<sockaddr *>(&here), &size), 0);
        m_display = u"127.0.0.1:"_s + QString::number(::ntohs(here.sin_port) - firstPort);
        sockaddr_un there{};
        there.sun_family = AF_UNIX;
        ("/tmp/.X11-unix/X" + qgetenv("DISPLAY").sliced(1))
            .toStdString()
            .copy(there.sun_path, sizeof there.sun_path - 1);
        EXPECT_EQ(::connect(m_server.get(), reinterpret_cast<const sockaddr *>(&there), sizeof there), 0);
        m_thread = std::jthread([this] { run(); });
    }
    ~Relay()
    {
        letGo();
        ::shutdown(m_listener.get(), SHUT_RDWR);
    }
    Relay(const Relay &) = delete;
    Relay &operator=(const Relay &) = delete;

    const QString &display() const { return m_display; }
    bool isHolding() const { return m_isHolding; }
    void letGo() { m_go.release(); }

private:
    static constexpr int firstPort = 6000; ///< Of display 0.

    /// Until one of the two has gone.
    void run()
    {
        const FileDescriptor client(::accept(m_listener.get(), nullptr, nullptr));
        std::array<pollfd, 2> ends{{{client.get(), POLLIN, 0}, {m_server.get(), POLLIN, 0}}};
        bool isOpen = client.isOpen();
        while (isOpen && ::poll(ends.data(), ends.size(), -1) > 0) {
            if (ends[0].revents != 0)
                isOpen = passOn(client, m_server);
            if (isOpen && ends[1].revents != 0)
                isOpen = passOn(m_server, client);
        }
    }

    bool passOn(const FileDescriptor &from, const FileDescriptor &to)
    {
        std::array<char, 1 << 16> bytes;
        const ssize_t got = ::read(from.get(), bytes.data(), bytes.size());
        const QByteArrayView view(bytes.data(), std::max<ssize_t>(got, 0));
        if (&to == &m_server && view.startsWith(m_held) && !m_isHolding.exchange(true))
            m_go.acquire();
        return got > 0 && writeWhole(to.get(), view);
    }

    const QByteArray m_held;
    QString m_display;
    const FileDescriptor m_listener{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    const FileDescriptor m_server{::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::atomic<bool> m_isHolding = false; ///< Or has been.
    std::counting_semaphore<> m_go{0};
    std::jthread m_thread;
};

QByteArray changeOfKeyMap()
{
    const XConnection connection(qEnvironmentVariable("DISPLAY"));
    const auto extension = xcb_query_extension(connection.handle(), 9, "XKEYBOARD");
    const auto reply = xReply(xcb_query_extension_reply(connection.handle(), extension, nullptr));
    constexpr char setMap = 9;
    return {QByteArray(1, char(reply->major_opcode)) + setMap};
}

TEST(XKeySymbolsTest, NobodyElseChangesAKeyboardBetweenTheLookAtItAndTheChange)
{
    const uint8_t key = XKeyboard::read(*XDisplay::open())->spareKeys().value(0);
    constexpr xkb_keysym_t symbol = XKB_KEY_Cyrillic_zhe;
    Relay relay(changeOfKeyMap());
    const QByteArray before = qgetenv("DISPLAY");
    qputenv("DISPLAY", relay.display().toUtf8());
    const auto display = XDisplay::open();
    qputenv("DISPLAY", before);
    ASSERT_TRUE(display);
    auto changing = std::async(std::launch::async, [&] {
        putOnKeys(*display, {{key, symbol}});
        display->synchronize();
    });
    EXPECT_TRUE(waitUntil([&] { return relay.isHolding(); }));
    EXPECT_THROW(XDisplay::open({}, 1s), DisplaySilent);
    relay.letGo();
    changing.get();
    EXPECT_EQ(XKeyboard::read(*XDisplay::open())->symbol(key), symbol);
    putOnKeys(*XDisplay::open(), {{key, xkb_keysym_t(XKB_KEY_NoSymbol)}});
}

} // namespace
} // namespace morvane
