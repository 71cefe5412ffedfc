#pragma once

#include "async/Scheduler.h"
#include "async/Wait.h"
#include "net/LineBatch.h"
#include "net/ResponseBody.h"

#include <QByteArray>
#include <coroutine>
#include <optional>

namespace morvane {

/// Reads the body of a response line by line, as the lines arrive. Destroying it ends the transfer. Main
/// thread.
class LineReader {
public:
    explicit LineReader(ResponseBody body) : m_body(std::move(body)) {}

    class Next;

    /// Awaits the next line without its end (LF, CR LF or CR); empty lines are left out, a last line without
    /// an end counts. Nothing at the end of the body. Throws TransportError when the body breaks off or a
    /// line is too long, after the lines before it; throws Cancelled as soon as the task is cancelled.
    ///
    /// Does not suspend while lines are there, except to let the event loop run when a time slice is used up.
    /// One call at a time; the reader must not move while it waits.
    Next next();

private:
    friend class Next;

    /// Gets more lines if none are left here; false if none are there yet. Throws as next() does.
    bool refill();
    /// The next line, or nothing at the end of the body.
    std::optional<QByteArray> take();

    ResponseBody m_body;
    LineBatch m_batch;
    qsizetype m_index = 0;
};

/// The awaiter of LineReader::next. No coroutine frame, since there may be 100,000 lines a second.
class LineReader::Next {
public:
    explicit Next(LineReader &reader) : m_reader(reader) {}

    bool await_ready() const { return false; }

    template <class Promise> bool await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        const TaskContext &context = coroutine.promise().context;
        if (!context.cancellation->isCancelled() && m_reader.refill()) {
            if (!context.scheduler->queue()->sliceUsedUp())
                return false;
            m_wait.begin(coroutine);
            m_wait.signal()->fire();
            return true;
        }
        m_wait.begin(coroutine);
        return m_reader.m_body.wakeWhen(ResponseChannel::Until::lines, m_wait.signal());
    }

    std::optional<QByteArray> await_resume()
    {
        m_wait.finish();
        return m_reader.take();
    }

private:
    LineReader &m_reader;
    Wait m_wait;
};

inline LineReader::Next LineReader::next()
{
    return Next(*this);
}

} // namespace morvane
