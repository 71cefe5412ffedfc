#include "net/ResponseChannel.h"

#include "async/Suspension.h"

#include <utility>

namespace morvane {

namespace {

/// Fires outside of the channel's lock.
void wake(const std::shared_ptr<Suspension> &waiter)
{
    if (waiter)
        waiter->fire();
}

} // namespace

void ResponseChannel::setHead(ResponseHead head)
{
    std::unique_lock lock(m_mutex);
    m_head = std::move(head);
    const auto waiter = takeWaiter();
    lock.unlock();
    wake(waiter);
}

ResponseChannel::Append ResponseChannel::append(QByteArrayView bytes)
{
    std::unique_lock lock(m_mutex);
    if (m_finished)
        return Append::refused;
    Append result = Append::taken;
    switch (m_mode) {
    case Mode::undecided:
    case Mode::pieces:
        if (m_bytes.size() >= (m_mode == Mode::pieces ? pieceCapacity : capacity))
            result = Append::full;
        else
            m_bytes.append(bytes.data(), bytes.size());
        break;
    case Mode::lines:
        // A line that is longer than the capacity must come to its end, or to its own limit.
        if (m_lines.hasLines() && m_lines.size() >= capacity)
            result = Append::full;
        else if (!m_lines.append(bytes))
            result = refuse();
        break;
    case Mode::whole:
        if (m_bytes.size() + bytes.size() > m_maximumBytes)
            result = refuse();
        else
            m_bytes.append(bytes.data(), bytes.size());
        break;
    }
    m_paused = result == Append::full;
    const auto waiter = takeWaiter();
    lock.unlock();
    wake(waiter);
    return result;
}

void ResponseChannel::finish(std::optional<TransportError> error)
{
    std::unique_lock lock(m_mutex);
    m_ended = true;
    endWith(std::move(error));
    const auto waiter = takeWaiter();
    lock.unlock();
    wake(waiter);
}

bool ResponseChannel::wakeWhen(Until until, std::shared_ptr<Suspension> signal)
{
    const std::lock_guard lock(m_mutex);
    if (isReached(until))
        return false;
    m_until = until;
    m_waiter = std::move(signal);
    return true;
}

ResponseHead ResponseChannel::takeHead()
{
    const std::lock_guard lock(m_mutex);
    if (!m_head)
        throw m_error.value_or(TransportError(TransportError::Kind::networkConnectionLost));
    return std::move(*m_head);
}

ResponseChannel::Flow ResponseChannel::readLines()
{
    const std::lock_guard lock(m_mutex);
    m_mode = Mode::lines;
    if (!m_lines.append(std::exchange(m_bytes, {})))
        refuse();
    else if (m_finished && !m_error)
        m_lines.finish();
    return takePause();
}

ResponseChannel::Flow ResponseChannel::readPieces()
{
    const std::lock_guard lock(m_mutex);
    m_mode = Mode::pieces;
    return takePause();
}

ResponseChannel::Flow ResponseChannel::readWhole(qint64 maximumBytes)
{
    const std::lock_guard lock(m_mutex);
    m_mode = Mode::whole;
    m_maximumBytes = maximumBytes;
    if (m_bytes.size() > maximumBytes)
        refuse();
    return takePause();
}

bool ResponseChannel::takeLines(LineBatch &lines, Flow &flow)
{
    const std::lock_guard lock(m_mutex);
    if (!m_lines.hasLines()) {
        if (!m_finished)
            return false;
        if (m_error)
            throw TransportError(*m_error);
    }
    lines = m_lines.takeLines();
    flow = takePause();
    return true;
}

QByteArray ResponseChannel::takePiece(Flow &flow)
{
    const std::lock_guard lock(m_mutex);
    if (m_bytes.isEmpty() && m_error)
        throw TransportError(*m_error);
    flow = takePause();
    return std::exchange(m_bytes, {});
}

QByteArray ResponseChannel::takeWhole()
{
    const std::lock_guard lock(m_mutex);
    if (m_error)
        throw TransportError(*m_error);
    return std::exchange(m_bytes, {});
}

bool ResponseChannel::hasEnded() const
{
    const std::lock_guard lock(m_mutex);
    return m_ended;
}

bool ResponseChannel::isReached(Until until) const
{
    switch (until) {
    case Until::head:
        return m_head || m_finished;
    case Until::lines:
        return m_lines.hasLines() || m_finished;
    case Until::piece:
        return !m_bytes.isEmpty() || m_finished;
    case Until::end:
        return m_finished;
    }
    return true;
}

ResponseChannel::Append ResponseChannel::refuse()
{
    m_finished = true;
    m_error = TransportError(TransportError::Kind::tooLarge);
    return Append::refused;
}

void ResponseChannel::endWith(std::optional<TransportError> error)
{
    if (m_finished)
        return;
    m_finished = true;
    m_error = std::move(error);
    if (m_mode == Mode::lines && !m_error)
        m_lines.finish();
}

ResponseChannel::Flow ResponseChannel::takePause()
{
    return std::exchange(m_paused, false) ? Flow::resume : Flow::unchanged;
}

std::shared_ptr<Suspension> ResponseChannel::takeWaiter()
{
    return m_waiter && isReached(m_until) ? std::exchange(m_waiter, nullptr) : nullptr;
}

} // namespace morvane
