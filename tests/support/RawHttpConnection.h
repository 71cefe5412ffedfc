#pragma once

#include "support/RawHttpRequest.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>
#include <atomic>
#include <functional>
#include <optional>

namespace morvane {

class RawHttpServer;

/// The server's side of one connection, for the script that plays it. Every function returns at once, with
/// false or nothing, when the server is torn down. The script's thread.
class RawHttpConnection {
public:
    RawHttpConnection(RawHttpServer &server, int socket, int number);
    ~RawHttpConnection();
    RawHttpConnection(const RawHttpConnection &) = delete;
    RawHttpConnection &operator=(const RawHttpConnection &) = delete;

    int number() const { return m_number; }

    /// Reads one request with its body (by `Content-Length`) and records it with the server; nothing if the
    /// other side closes first.
    std::optional<RawHttpRequest> readRequest();

    /// Reads and forgets this many bytes, whatever they are; false if the other side closes first.
    bool skipBytes(qsizetype count);

    /// Blocks until the other side has sent anything; false if it closes first.
    bool waitForBytes();

    /// Sends all bytes as they stand; false once the other side is gone.
    bool send(QByteArrayView bytes);
    /// Sends pieces of `pieceSize` bytes, each in a segment of its own as far as the system allows.
    bool sendInPieces(QByteArrayView bytes, qsizetype pieceSize);
    /// Sends one chunk of a chunked body.
    bool sendChunk(QByteArrayView bytes);

    /// Blocks until `condition` holds; false if the server is torn down before.
    bool waitUntil(const std::function<bool()> &condition);
    /// Blocks until the other side closes or resets the connection, ignoring what it sends; false if the
    /// server is torn down before.
    bool waitUntilClosedByPeer();

    /// Ends the connection in order. Also done at the script's end.
    void close();
    /// Ends the connection with a reset, dropping what is not sent yet.
    void reset();

private:
    enum class Ready { yes, torn };

    Ready waitForSocket(short events);
    bool receive();

    RawHttpServer &m_server;
    int m_socket;
    int m_number;
    QByteArray m_received;
};

} // namespace morvane
