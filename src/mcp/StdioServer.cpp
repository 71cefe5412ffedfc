#include "mcp/StdioServer.h"

#include "base/RegularFile.h"
#include "mcp/JsonRpc.h"
#include "mcp/Log.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace morvane {

namespace {

/// As large as the system allows without privileges: a long answer then comes in one read, instead of in
/// chunks of which one may be cut inside a character.
constexpr int pipeSize = 1024 * 1024;

} // namespace

StdioServer::StdioServer(Order order, std::function<void()> wake) : m_order(std::move(order))
{
    launch(std::move(wake));
}

void StdioServer::launch(std::function<void()> wake)
{
    int input[2];
    int control[2];
    if (::pipe2(input, O_CLOEXEC) != 0) {
        m_order.started.resume(std::unexpected(systemReason(errno)));
        return;
    }
    const FileDescriptor readEnd(input[0]);
    FileDescriptor writeEnd(input[1]);
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, control) != 0) {
        m_order.started.resume(std::unexpected(systemReason(errno)));
        return;
    }
    m_control = FileDescriptor(control[0]);
    const FileDescriptor guardEnd(control[1]);
    ::fcntl(writeEnd.get(), F_SETFL, O_NONBLOCK);
    ::fcntl(m_control.get(), F_SETFL, O_NONBLOCK);
    ::fcntl(writeEnd.get(), F_SETPIPE_SZ, pipeSize);

    auto guard = ChildProcess::start({.program = m_order.guard,
                                      .arguments = {m_order.shell, "-c", m_order.line},
                                      .environment = currentEnvironment(),
                                      .errors = ChildProcess::Errors::ownPipe,
                                      .input = readEnd.get(),
                                      .control = guardEnd.get()});
    if (!guard) {
        m_order.started.resume(std::unexpected(guard.error()));
        return;
    }
    m_guard = std::move(*guard);
    ::fcntl(m_guard->output().get(), F_SETPIPE_SZ, pipeSize);
    m_input = std::make_shared<ServerInput>(std::move(writeEnd), std::move(wake));
}

void StdioServer::addTo(std::vector<pollfd> &waits)
{
    if (m_control.isOpen())
        waits.push_back({m_control.get(), POLLIN, 0});
    for (const FileDescriptor *pipe : std::initializer_list<const FileDescriptor *>{
             &m_guard->output(), &m_guard->errors(), &m_guard->endNotice()})
        if (pipe->isOpen())
            waits.push_back({pipe->get(), POLLIN, 0});
    if (m_input->isWaiting())
        waits.push_back({m_input->descriptor(), POLLOUT, 0});
}

void StdioServer::advance(std::vector<char> &buffer)
{
    // The status first: what was printed before the end is then in the pipe. The guard ends when nobody is
    // left who could print more.
    const bool ended = m_guard->takeStatus().has_value();
    readGuard();
    if (m_input->isWaiting() && !m_input->flush())
        failWaiting();
    readOutput(buffer);
    discardErrors(buffer);
    if (!ended)
        return;
    while (m_guard->output().isOpen() && readOutput(buffer) == Read::more)
        continue;
    m_input->close();
    failWaiting();
    m_order.started.resume(std::unexpected(systemReason(ECHILD)));
    m_guard.reset();
}

void StdioServer::end()
{
    if (isOver())
        return;
    m_input->close();
    m_control.close();
}

void StdioServer::readGuard()
{
    std::int32_t error = 0;
    if (!m_control.isOpen() || ::recv(m_control.get(), &error, sizeof error, 0) != sizeof error)
        return;
    if (error == 0)
        m_order.started.resume(m_input);
    else
        m_order.started.resume(std::unexpected(systemReason(error)));
}

StdioServer::Read StdioServer::readOutput(std::vector<char> &buffer)
{
    // A server that prints without end must not keep the others waiting.
    constexpr int mostPieces = 16;
    FileDescriptor &output = m_guard->output();
    QByteArray chunk;
    Read read = output.isOpen() ? Read::more : Read::all;
    for (int piece = 0; piece < mostPieces && read == Read::more; ++piece) {
        const ssize_t count = ::read(output.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count > 0)
            chunk.append(buffer.data(), count);
        else if (count == 0 || errno != EAGAIN) {
            output.close();
            if (m_control.isOpen()) // else it was asked to end
                qCWarning(mcpLog) << "a tool server has ended, or closed its output, by itself";
        }
        if (count < ssize_t(buffer.size()))
            read = Read::all;
    }
    if (!chunk.isEmpty())
        route(m_framing.consume(chunk));
    if (!output.isOpen())
        failWaiting();
    return read;
}

void StdioServer::discardErrors(std::vector<char> &buffer)
{
    FileDescriptor &errors = m_guard->errors();
    if (!errors.isOpen())
        return;
    const ssize_t count = ::read(errors.get(), buffer.data(), buffer.size());
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
        errors.close();
}

void StdioServer::route(QList<QByteArray> lines)
{
    for (QByteArray &line : lines) {
        const qsizetype bytes = line.size();
        auto message = parseJSONText(std::move(line)); // the waiter may make as much of it again
        if (!message) {
            qCInfo(mcpLog) << "a tool server wrote" << bytes << "bytes that are no message";
            continue;
        }
        if (const auto requests = m_order.requests.lock())
            requests->deliver(std::move(*message));
    }
}

void StdioServer::failWaiting()
{
    if (const auto requests = m_order.requests.lock())
        requests->failSentTo(m_order.receiver);
}

} // namespace morvane
