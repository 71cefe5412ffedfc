#include "base/RunShellTool.h"

#include "base/ChildProcess.h"

#include <QDeadlineTimer>
#include <QFile>
#include <cerrno>
#include <poll.h>

namespace morvane {

namespace {

/// False when the deadline comes first.
bool waitUntilReadable(const FileDescriptor &descriptor, const QDeadlineTimer &deadline)
{
    pollfd readable{descriptor.get(), POLLIN, 0};
    int count = 0;
    do
        count = ::poll(&readable, 1, static_cast<int>(deadline.remainingTime())); // -1 without a deadline
    while (count < 0 && errno == EINTR);
    return count != 0;
}

/// All that comes until the other end is closed; nothing if the deadline comes first.
std::optional<QByteArray> readToEnd(const FileDescriptor &pipe, const QDeadlineTimer &deadline)
{
    constexpr qsizetype pieceSize = 65536;
    QByteArray bytes;
    while (waitUntilReadable(pipe, deadline)) {
        const qsizetype length = bytes.size();
        bytes.resize(length + pieceSize);
        const ssize_t count = ::read(pipe.get(), bytes.data() + length, pieceSize);
        bytes.resize(length + std::max<ssize_t>(count, 0));
        if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN))
            return bytes;
    }
    return std::nullopt;
}

} // namespace

ShellToolResult runShellTool(const QString &path, const QStringList &arguments,
                             std::optional<std::chrono::milliseconds> limit)
{
    ChildProcess::Options options{
        QFile::encodeName(path), {}, currentEnvironment(), ChildProcess::Errors::withOutput};
    for (const QString &argument : arguments)
        options.arguments.append(argument.toUtf8());
    auto child = ChildProcess::start(options);
    if (!child)
        return {};
    const QDeadlineTimer deadline = limit ? QDeadlineTimer(*limit) : QDeadlineTimer(QDeadlineTimer::Forever);
    const auto output = readToEnd(child->output(), deadline);
    // It may run on with its output closed.
    if (!output || (child->endNotice().isOpen() && !waitUntilReadable(child->endNotice(), deadline)))
        return {}; // Its end kills what still runs.
    return {child->waitForStatus(), output->isValidUtf8() ? QString::fromUtf8(*output) : QString()};
}

} // namespace morvane
