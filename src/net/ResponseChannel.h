#pragma once

#include "net/LineBuffer.h"
#include "net/ResponseHead.h"
#include "net/TransportError.h"

#include <memory>
#include <mutex>
#include <optional>

namespace morvane {

class Suspension;

/// What the network thread hands to the main thread of one response: the head, the body through a bounded
/// buffer, the end. One task at a time waits for it, and is woken once for all that has come by then.
class ResponseChannel {
public:
    /// What a reader can wait for; the end of the transfer ends every wait.
    enum class Until { head, lines, piece, end };
    enum class Append { taken, full, refused };

    /// Bytes that wait for a reader before the transfer pauses: enough to cover the time in which the main
    /// thread is busy, little enough for many transfers at once.
    static constexpr qsizetype capacity = 256 * 1024;

    /// The same for a body that goes to a file: what comes while a piece is being written.
    static constexpr qsizetype pieceCapacity = 2 * 1024 * 1024;

    explicit ResponseChannel(qsizetype maximumLineBytes) : m_lines(maximumLineBytes) {}

    /// @name Network thread
    ///@{
    void setHead(ResponseHead head);
    /// Adds a part of the body. Full: nothing was taken, and the transfer is to pause until a reader makes
    /// room. Refused: a limit is exceeded, and the transfer is to end.
    Append append(QByteArrayView bytes);
    /// The transfer is over; the first end counts.
    void finish(std::optional<TransportError> error);
    ///@}

    /// @name Main thread. A call that returns Resume asks that the paused transfer go on.
    ///@{
    enum class Flow { unchanged, resume };

    /// Fires `signal` as soon as it is so; false if it is so already.
    bool wakeWhen(Until until, std::shared_ptr<Suspension> signal);
    /// The head, after Until::head. Throws TransportError if the transfer ended without one.
    ResponseHead takeHead();

    /// Decides that the body is read line by line. One decision only.
    Flow readLines();
    /// Decides that the body is taken in pieces as they come.
    Flow readPieces();
    /// Decides that the body is kept here until it is whole.
    Flow readWhole(qint64 maximumBytes);

    /// The lines that are there, in `lines`; false if there are none and more may come. At the end of the
    /// body `lines` is empty. Throws TransportError if the transfer failed and all lines before are taken.
    bool takeLines(LineBatch &lines, Flow &flow);
    /// All bytes that are there, after Until::piece; none at the end of the body. Throws TransportError if
    /// the transfer failed and all bytes before are taken.
    QByteArray takePiece(Flow &flow);
    /// The whole body, after Until::end. Throws TransportError if the transfer failed.
    QByteArray takeWhole();

    /// Whether the network thread is done with it.
    bool hasEnded() const;
    ///@}

private:
    enum class Mode { undecided, lines, pieces, whole };

    bool isReached(Until until) const;
    Append refuse();
    void endWith(std::optional<TransportError> error);
    Flow takePause();
    /// The waiting task, if what it waits for has come.
    std::shared_ptr<Suspension> takeWaiter();

    mutable std::mutex m_mutex; ///< Guards all below.
    Mode m_mode = Mode::undecided;
    std::optional<ResponseHead> m_head;
    QByteArray m_bytes; ///< Undecided, in pieces or whole.
    LineBuffer m_lines;
    qint64 m_maximumBytes = 0;
    bool m_paused = false;
    bool m_finished = false; ///< Nothing more comes: ended, or refused here.
    bool m_ended = false;
    std::optional<TransportError> m_error;
    Until m_until = Until::head;
    std::shared_ptr<Suspension> m_waiter;
};

} // namespace morvane
