#pragma once

#include "BareHandshake.h"

#include <cstdlib>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane {

/// The floor over standard streams: write, read to the line's end, again.
class BareServer {
public:
    explicit BareServer(const QByteArray &program, const QByteArray &argument = {})
    {
        int input[2];
        int output[2];
        if (::pipe(input) != 0 || ::pipe(output) != 0)
            std::abort();
        m_process = ::fork();
        if (m_process == 0) {
            ::dup2(input[0], 0);
            ::dup2(output[1], 1);
            ::close(input[1]);
            ::close(output[0]);
            if (!::freopen("/dev/null", "w", stderr))
                ::_exit(1);
            ::execl(program.constData(), program.constData(),
                    argument.isEmpty() ? nullptr : argument.constData(), nullptr);
            ::_exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        m_input = input[1];
        m_output = output[0];
        ask(QByteArray(bareHandshake).replace('\n', ""));
        m_sent = R"({"jsonrpc":"2.0","method":"notifications/initialized","params":{}})"
                 "\n";
        [[maybe_unused]] const ssize_t count =
            ::write(m_input, m_sent.constData(), std::size_t(m_sent.size()));
    }
    ~BareServer()
    {
        ::close(m_input);
        ::close(m_output);
        ::kill(m_process, SIGTERM);
        ::waitpid(m_process, nullptr, 0);
    }

    void ask(QByteArray text)
    {
        text += '\n';
        if (::write(m_input, text.constData(), std::size_t(text.size())) != text.size())
            std::abort();
        char buffer[65536];
        while (true) {
            const ssize_t count = ::read(m_output, buffer, sizeof buffer);
            if (count <= 0)
                std::abort();
            // Notifications that come behind the handshake hold no result.
            if (QByteArrayView(buffer, count).contains("\"result\""))
                return;
        }
    }

private:
    pid_t m_process = 0;
    int m_input = -1;
    int m_output = -1;
    QByteArray m_sent;
};

} // namespace morvane
