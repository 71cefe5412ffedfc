#pragma once

#include "async/Task.h"
#include "net/ResponseBody.h"

#include <QByteArray>

namespace morvane {

/// Reads the body of a response in pieces of whatever size, as they arrive. At most
/// ResponseChannel::pieceCapacity waits to be read; then the transfer pauses. Destroying it ends the
/// transfer. Main thread.
class PieceReader {
public:
    explicit PieceReader(ResponseBody body) : m_body(std::move(body)) {}

    /// All that has come since the last call, at least a byte; empty at the end of the body. Throws
    /// TransportError when the body breaks off, after the bytes before it; throws Cancelled as soon as the
    /// task is cancelled. One call at a time; the reader must not move while it waits.
    Task<QByteArray> next();

private:
    ResponseBody m_body;
};

} // namespace morvane
