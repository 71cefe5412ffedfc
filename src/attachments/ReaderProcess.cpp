#include "attachments/ReaderProcess.h"

#include "attachments/Log.h"
#include "base/ChildProcess.h"
#include "base/WriteWhole.h"

#include <QDeadlineTimer>
#include <QFile>
#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

namespace morvane {
namespace {

/// How often to look for the end of a process on a system without end notices.
constexpr int lookMilliseconds = 10;

/// The file's bytes as something to read from, without a file that others could see.
FileDescriptor inMemory(const QByteArray &file)
{
    FileDescriptor memory(::memfd_create("attachment", MFD_CLOEXEC));
    if (!memory.isOpen() || !writeWhole(memory.get(), file))
        return {};
    ::lseek(memory.get(), 0, SEEK_SET);
    return memory;
}

QByteArray argumentOf(ReaderProcess::Job job)
{
    switch (job) {
    case ReaderProcess::Job::picture:
        return "picture";
    case ReaderProcess::Job::icon:
        return "icon";
    case ReaderProcess::Job::thumbnail:
        return "thumbnail";
    case ReaderProcess::Job::preview:
        return "preview";
    case ReaderProcess::Job::document:
        return "document";
    case ReaderProcess::Job::recognition:
        return "recognition";
    }
    Q_UNREACHABLE();
}

/// Nothing of the user's but the language: environments hold keys. And where this program's libraries lie.
QList<QByteArray> readerEnvironment()
{
    constexpr std::array taken{"LANG=",           "LANGUAGE=",     "LC_",           "LD_LIBRARY_PATH=",
                               "QT_PLUGIN_PATH=", "ASAN_OPTIONS=", "UBSAN_OPTIONS="};
    // Several threads for one page make recognition several times slower.
    QList<QByteArray> environment{"OMP_THREAD_LIMIT=1"};
    for (const QByteArray &variable : currentEnvironment())
        if (std::any_of(taken.begin(), taken.end(),
                        [&](const char *name) { return variable.startsWith(name); }))
            environment.append(variable);
    return environment;
}

/// One run of the program, from its start to its answer.
class Run {
public:
    Run(ChildProcess child, const StopFlag &stop, std::chrono::milliseconds limit)
        : m_child(std::move(child)), m_stop(stop), m_deadline(limit)
    {
    }

    std::optional<ReaderAnswer> finish()
    {
        if (!readOutput() || !waitForEnd()) {
            qCWarning(attachmentsLog)
                << "the reader was stopped:"
                << (m_deadline.hasExpired() ? "out of time" : "not wanted, or says too much");
            return std::nullopt;
        }
        if (const auto status = m_child.takeStatus(); status != 0) {
            qCWarning(attachmentsLog) << "the reader ended with status" << status.value_or(-1);
            return std::nullopt;
        }
        auto answer = ReaderAnswer::parse(m_output);
        if (!answer)
            qCWarning(attachmentsLog) << "the reader answered" << m_output.size() << "bytes of no known form";
        return answer;
    }

private:
    /// Whether there is something to look at, and nothing that ends the run early. A timeout of -1 is the
    /// run's own.
    bool waitFor(int descriptor, int timeout = -1) const
    {
        std::array<pollfd, 2> waits{{{m_stop.descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}}};
        const auto left = static_cast<int>(m_deadline.remainingTime());
        ::poll(waits.data(), waits.size(), timeout < 0 ? left : std::min(timeout, left));
        return waits[0].revents == 0 && !m_deadline.hasExpired();
    }

    bool readOutput()
    {
        std::array<char, 65536> piece;
        while (waitFor(m_child.output().get())) {
            const ssize_t count = ::read(m_child.output().get(), piece.data(), piece.size());
            if (count < 0 && (errno == EAGAIN || errno == EINTR))
                continue;
            if (count <= 0)
                return count == 0;
            m_output.append(piece.data(), count);
            if (m_output.size() > attachmentLimits::answerBytes)
                return false;
        }
        return false;
    }

    bool waitForEnd()
    {
        const FileDescriptor &notice = m_child.endNotice();
        const int timeout = notice.isOpen() ? -1 : lookMilliseconds;
        while (!m_child.takeStatus())
            if (!waitFor(notice.get(), timeout))
                return false;
        return true;
    }

    ChildProcess m_child; ///< Killed when the run goes, if it has not ended.
    const StopFlag &m_stop;
    QDeadlineTimer m_deadline;
    QByteArray m_output;
};

} // namespace

ReaderProcess::ReaderProcess(const QString &program, std::chrono::milliseconds limit)
    : m_program(QFile::encodeName(program)), m_limit(limit)
{
}

std::optional<ReaderAnswer> ReaderProcess::read(Job job, const QByteArray &file, const StopFlag &stop) const
{
    const FileDescriptor input = inMemory(file);
    if (!input.isOpen() || stop.isRaised())
        return std::nullopt;
    auto child = ChildProcess::start(
        {m_program, {argumentOf(job)}, readerEnvironment(), ChildProcess::Errors::discarded, input.get()});
    if (!child) {
        qCWarning(attachmentsLog) << "the reader did not start:" << child.error();
        return std::nullopt;
    }
    return Run(std::move(*child), stop, m_limit).finish();
}

} // namespace morvane
