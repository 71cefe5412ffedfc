#include "tools/ShellRun.h"

#include "base/Text.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

constexpr qsizetype answerCharacters = 4'000;
/// How long a killed process may take to be gone before the answer goes out without its status.
constexpr std::chrono::milliseconds untilGone = 100ms;
/// How often to look for the end of a process on a system without end notices.
constexpr std::chrono::milliseconds lookInterval = 10ms;

} // namespace

ShellRun::ShellRun(ChildProcess child, OneShot<QString> answer, const ShellLimits &limits, TimePoint now)
    : m_child(std::move(child)), m_answer(std::move(answer)), m_limits(limits), m_start(now)
{
    m_streams[0].pipe = std::move(m_child.output());
    m_streams[1].pipe = std::move(m_child.errors());
}

void ShellRun::addTo(std::vector<pollfd> &waits) const
{
    for (const Stream &stream : m_streams)
        if (stream.pipe.isOpen())
            waits.push_back({stream.pipe.get(), POLLIN, 0});
    if (m_child.isRunning() && m_child.endNotice().isOpen())
        waits.push_back({m_child.endNotice().get(), POLLIN, 0});
}

std::optional<ShellRun::TimePoint> ShellRun::deadline() const
{
    std::optional<TimePoint> next;
    const auto consider = [&next](TimePoint time) { next = next ? std::min(*next, time) : time; };
    if (m_child.isRunning() && !m_child.endNotice().isOpen())
        consider(std::chrono::steady_clock::now() + lookInterval);
    if (m_finished)
        return next;
    if (m_end)
        consider(*m_end + m_limits.untilAnswer);
    else if (!m_timedOut)
        consider(m_start + m_limits.time);
    else if (!m_killed)
        consider(m_start + m_limits.time + m_limits.untilKill);
    else
        consider(m_start + m_limits.time + m_limits.untilKill + untilGone);
    return next;
}

void ShellRun::advance(TimePoint now, std::vector<char> &buffer)
{
    // The status first: what the program has printed before its end is then in the pipes.
    if (m_child.isRunning()) {
        if (const auto status = m_child.takeStatus()) {
            m_status = *status;
            m_end = now;
        }
    }
    for (Stream &stream : m_streams)
        read(stream, buffer);
    if (m_finished)
        return;
    const bool allRead = std::none_of(m_streams.begin(), m_streams.end(),
                                      [](const Stream &stream) { return stream.pipe.isOpen(); });
    if (m_end && (allRead || m_killed || now >= *m_end + m_limits.untilAnswer))
        finish();
    else if (!m_end)
        stopAtLimit(now);
}

bool ShellRun::isOver() const
{
    return m_finished && !m_child.isRunning() &&
           std::none_of(m_streams.begin(), m_streams.end(),
                        [](const Stream &stream) { return stream.pipe.isOpen(); });
}

void ShellRun::read(Stream &stream, std::vector<char> &buffer)
{
    // A program that prints without end must not keep its run from looking at the time.
    constexpr int mostPieces = 16;
    for (int piece = 0; piece < mostPieces && stream.pipe.isOpen(); ++piece) {
        const ssize_t count = ::read(stream.pipe.get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EAGAIN)
            return;
        if (count < 0 && errno == EINTR)
            continue;
        if (count > 0 && !m_finished) {
            stream.text.append({buffer.data(), count});
        } else if (count <= 0) {
            stream.text.finish();
            stream.pipe.close();
        }
    }
}

void ShellRun::stopAtLimit(TimePoint now)
{
    if (!m_timedOut && now >= m_start + m_limits.time) {
        m_timedOut = true;
        m_child.signalGroup(SIGTERM);
    }
    const TimePoint kill = m_start + m_limits.time + m_limits.untilKill;
    if (!m_killed && now >= kill) {
        m_killed = true;
        m_child.signalGroup(SIGKILL);
    }
    if (now >= kill + untilGone)
        finish();
}

void ShellRun::finish()
{
    m_finished = true;
    m_answer.resume(result());
    for (Stream &stream : m_streams)
        stream.text = {};
}

QString ShellRun::result() const
{
    const QString output = m_streams[0].text.text();
    const QString errors = m_streams[1].text.text();
    const bool both = !output.isEmpty() && !errors.isEmpty();
    // Blanks in front of the whole are cut off, those between the two are not.
    QString body =
        trimmed(both ? output + u'\n' + m_streams[1].text.blanksInFront() + errors : output + errors);
    if (m_timedOut)
        body.prepend(u"The command did not finish within 30 seconds and was stopped.\n"_s);
    body = firstCharacters(body, answerCharacters);
    if (m_status != 0)
        body.prepend(u"The command exited with status %1.\n"_s.arg(m_status));
    return body;
}

} // namespace morvane
