#include "base/RunShellTool.h"

#include "base/ChildProcess.h"

#include <QFile>
#include <cerrno>
#include <poll.h>

namespace morvane {

namespace {

QByteArray readToEnd(const FileDescriptor &pipe)
{
    constexpr qsizetype pieceSize = 65536;
    QByteArray bytes;
    while (true) {
        const qsizetype length = bytes.size();
        bytes.resize(length + pieceSize);
        const ssize_t count = ::read(pipe.get(), bytes.data() + length, pieceSize);
        bytes.resize(length + std::max<ssize_t>(count, 0));
        if (count < 0 && errno == EAGAIN) {
            pollfd readable{pipe.get(), POLLIN, 0};
            ::poll(&readable, 1, -1);
        } else if (count == 0 || (count < 0 && errno != EINTR)) {
            return bytes;
        }
    }
}

} // namespace

ShellToolResult runShellTool(const QString &path, const QStringList &arguments)
{
    ChildProcess::Options options{
        QFile::encodeName(path), {}, currentEnvironment(), ChildProcess::Errors::withOutput};
    for (const QString &argument : arguments)
        options.arguments.append(argument.toUtf8());
    auto child = ChildProcess::start(options);
    if (!child)
        return {};
    const QByteArray output = readToEnd(child->output());
    return {child->waitForStatus(), output.isValidUtf8() ? QString::fromUtf8(output) : QString()};
}

} // namespace morvane
