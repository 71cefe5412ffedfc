#include "net/ResponseBody.h"

#include "net/NetworkThread.h"

#include <utility>

namespace morvane {

ResponseBody::ResponseBody(std::shared_ptr<NetworkThread> network, quint64 transfer,
                           std::shared_ptr<ResponseChannel> channel)
    : m_network(std::move(network)), m_transfer(transfer), m_channel(std::move(channel))
{
}

ResponseBody::~ResponseBody()
{
    end();
}

ResponseBody &ResponseBody::operator=(ResponseBody &&other) noexcept
{
    if (this != &other) {
        end();
        m_network = std::move(other.m_network);
        m_transfer = other.m_transfer;
        m_channel = std::move(other.m_channel);
    }
    return *this;
}

bool ResponseBody::wakeWhen(ResponseChannel::Until until, std::shared_ptr<Suspension> signal)
{
    return m_channel->wakeWhen(until, std::move(signal));
}

void ResponseBody::readLines()
{
    apply(m_channel->readLines());
}

void ResponseBody::readPieces()
{
    apply(m_channel->readPieces());
}

void ResponseBody::readWhole(qint64 maximumBytes)
{
    apply(m_channel->readWhole(maximumBytes));
}

bool ResponseBody::takeLines(LineBatch &lines)
{
    auto flow = ResponseChannel::Flow::unchanged;
    const bool taken = m_channel->takeLines(lines, flow);
    apply(flow);
    return taken;
}

QByteArray ResponseBody::takePiece()
{
    auto flow = ResponseChannel::Flow::unchanged;
    QByteArray piece = m_channel->takePiece(flow);
    apply(flow);
    return piece;
}

void ResponseBody::apply(ResponseChannel::Flow flow)
{
    if (flow == ResponseChannel::Flow::resume)
        m_network->resume(m_transfer);
}

void ResponseBody::end()
{
    if (m_channel && !m_channel->hasEnded())
        m_network->abort(m_transfer);
}

} // namespace morvane
