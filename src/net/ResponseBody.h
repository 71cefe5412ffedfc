#pragma once

#include "net/ResponseChannel.h"

#include <QtGlobal>
#include <memory>

namespace morvane {

class NetworkThread;

/// The main thread's end of one transfer, and its owner: destroying it ends the transfer. Main thread.
class ResponseBody {
public:
    ResponseBody(std::shared_ptr<NetworkThread> network, quint64 transfer,
                 std::shared_ptr<ResponseChannel> channel);
    ~ResponseBody();
    ResponseBody(ResponseBody &&other) noexcept = default;
    ResponseBody &operator=(ResponseBody &&other) noexcept;

    /// @name As in ResponseChannel
    ///@{
    bool wakeWhen(ResponseChannel::Until until, std::shared_ptr<Suspension> signal);
    ResponseHead takeHead() { return m_channel->takeHead(); }
    void readLines();
    void readPieces();
    void readWhole(qint64 maximumBytes);
    bool takeLines(LineBatch &lines);
    QByteArray takePiece();
    QByteArray takeWhole() { return m_channel->takeWhole(); }
    ///@}

private:
    void apply(ResponseChannel::Flow flow);
    void end();

    std::shared_ptr<NetworkThread> m_network;
    quint64 m_transfer;
    std::shared_ptr<ResponseChannel> m_channel; ///< Null after a move.
};

} // namespace morvane
