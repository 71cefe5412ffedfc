#include "platform/linux/desktop/LinuxTextRecognizer.h"

#include "base/ChildProcess.h"
#include "base/WriteWhole.h"

#include <QDeadlineTimer>
#include <QFile>
#include <array>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr std::chrono::seconds longestRun{20};
/// How soon a stop is seen.
constexpr int lookMilliseconds = 20;
constexpr qsizetype mostOutput = 4'000'000;

/// The picture in memory that no file stands for, ready to be read.
FileDescriptor inMemory(const QImage &gray)
{
    FileDescriptor memory(::memfd_create("screen", MFD_CLOEXEC));
    if (!memory.isOpen())
        return {};
    for (int y = 0; y < gray.height(); ++y)
        if (!writeWhole(memory.get(), QByteArrayView(gray.constScanLine(y), gray.width())))
            return {};
    ::lseek(memory.get(), 0, SEEK_SET);
    return memory;
}

/// What the program prints until it closes its output; empty if it is stopped or prints too much.
QByteArray outputOf(ChildProcess &child, const std::stop_token &stop)
{
    const QDeadlineTimer deadline(longestRun);
    QByteArray output;
    std::array<char, 65536> piece;
    while (!stop.stop_requested() && !deadline.hasExpired() && output.size() <= mostOutput) {
        pollfd waiting{child.output().get(), POLLIN, 0};
        ::poll(&waiting, 1, lookMilliseconds);
        const ssize_t count = ::read(child.output().get(), piece.data(), piece.size());
        if (count == 0)
            return output;
        if (count > 0)
            output.append(piece.data(), count);
        else if (errno != EAGAIN && errno != EINTR)
            break;
    }
    return {};
}

} // namespace

LinuxTextRecognizer::LinuxTextRecognizer(const QString &program) : m_program(QFile::encodeName(program)) {}

QList<RecognizedLine> LinuxTextRecognizer::recognize(const QImage &image, const std::stop_token &stop)
{
    const QImage gray = image.convertToFormat(QImage::Format_Grayscale8);
    const FileDescriptor input = gray.isNull() ? FileDescriptor() : inMemory(gray);
    if (!input.isOpen() || stop.stop_requested())
        return {};
    QList<QByteArray> environment = currentEnvironment();
    // Several threads for one strip make recognition several times slower.
    environment.append("OMP_THREAD_LIMIT=1");
    auto child = ChildProcess::start({m_program,
                                      {QByteArray::number(gray.width()), QByteArray::number(gray.height())},
                                      environment,
                                      ChildProcess::Errors::discarded,
                                      input.get()});
    return child ? parseRecognizedLines(outputOf(*child, stop)) : QList<RecognizedLine>();
}

QList<RecognizedLine> parseRecognizedLines(const QByteArray &output)
{
    QList<RecognizedLine> lines;
    for (const QByteArray &line : output.split('\n')) {
        std::array<int, 4> sides{};
        qsizetype at = 0;
        bool isGood = true;
        for (int &side : sides) {
            const qsizetype end = isGood ? line.indexOf(' ', at) : -1;
            if (end > at)
                side = line.mid(at, end - at).toInt(&isGood);
            else
                isGood = false;
            at = end + 1;
        }
        const QString text = isGood ? QString::fromUtf8(line.mid(at)) : QString();
        const auto [left, top, right, bottom] = sides;
        if (!text.isEmpty() && right >= left && bottom >= top)
            lines.append({text, QRectF(left, top, right - left, bottom - top)});
    }
    return lines;
}

} // namespace morvane
