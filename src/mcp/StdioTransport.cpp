#include "mcp/StdioTransport.h"

#include "mcp/JsonRpc.h"
#include "mcp/MCPError.h"
#include "mcp/StdioThread.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString withoutBlanks(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    return QString::fromUtf8(trimmedBlanks(utf8));
}

} // namespace

StdioTransport::StdioTransport(QString command, QStringList args, StdioThread &thread,
                               std::shared_ptr<PendingRequests> requests)
    : m_command(std::move(command)), m_args(std::move(args)), m_thread(thread),
      m_requests(std::move(requests))
{
}

StdioTransport::~StdioTransport()
{
    shutdown();
}

Task<void> StdioTransport::start()
{
    if (withoutBlanks(m_command).isEmpty())
        throw MCPError(u"No command was given for this server."_s);
    const quint64 receiver = m_thread.takeReceiver();
    if (const quint64 earlier = std::exchange(m_starting, receiver))
        m_thread.end(earlier);
    OneShot<StdioServer::Started> started;
    m_thread.start(shellLine(m_command, m_args).toUtf8(), m_requests, receiver, started);
    // Until it runs, calls go to the one that it replaces.
    auto input = co_await started.wait();
    if (!input)
        throw MCPError(input.error());
    if (m_ended || receiver != m_starting)
        co_return;
    m_input = std::move(*input);
    // A call that the old server works on still gets its answer.
    if (const quint64 replaced = std::exchange(m_receiver, std::exchange(m_starting, 0)))
        m_requests->whenSettled(replaced, [&thread = m_thread, replaced] { thread.end(replaced); });
}

bool StdioTransport::deliver(QByteArray message, std::optional<qint64>, Kind)
{
    return m_input && m_input->write(std::move(message));
}

void StdioTransport::shutdown()
{
    m_ended = true;
    m_input.reset();
    for (const quint64 receiver : {m_receiver, m_starting})
        if (receiver != 0)
            m_thread.end(receiver);
}

QString StdioTransport::shellLine(const QString &command, const QStringList &args)
{
    QString line = withoutBlanks(command);
    for (QString argument : args)
        line += u" '"_s + argument.replace(u'\'', u"'\\''"_s) + u'\'';
    return line;
}

} // namespace morvane
