#include "net/LineBuffer.h"

#include <QList>
#include <algorithm>
#include <cstdlib>

namespace morvane {
namespace {

/// Longer lines than this are refused here, so that inputs of libFuzzer's size reach the limit.
constexpr qsizetype maximumLineBytes = 64;

/// The rule in its plainest form: lines up to the first that is too long; true if there was none.
bool cutPlainly(QByteArrayView stream, QList<QByteArray> &lines)
{
    QByteArray line;
    for (const char c : stream) {
        if (c != '\n' && c != '\r') {
            line += c;
            if (line.size() > maximumLineBytes)
                return false;
        } else if (!line.isEmpty()) {
            lines.append(line);
            line.clear();
        }
    }
    if (!line.isEmpty())
        lines.append(line);
    return true;
}

void take(LineBuffer &buffer, QList<QByteArray> &lines)
{
    const LineBatch batch = buffer.takeLines();
    for (qsizetype i = 0; i < batch.count(); ++i)
        lines.append(batch.line(i).toByteArray());
}

/// Feeds the stream in pieces of sizes that the first bytes of the input decide.
bool cutInPieces(QByteArrayView sizes, QByteArrayView stream, QList<QByteArray> &lines)
{
    LineBuffer buffer(maximumLineBytes);
    bool whole = true;
    for (qsizetype piece = 0; whole && !stream.isEmpty(); ++piece) {
        const auto wish = static_cast<unsigned char>(sizes[piece % sizes.size()]);
        const qsizetype size = std::clamp<qsizetype>(wish / 2, 1, stream.size());
        whole = buffer.append(stream.first(size));
        stream = stream.sliced(size);
        if (wish % 2)
            take(buffer, lines);
    }
    if (whole)
        buffer.finish();
    take(buffer, lines);
    return whole;
}

} // namespace
} // namespace morvane

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    constexpr qsizetype sizeBytes = 4;
    const QByteArrayView input(data, static_cast<qsizetype>(size));
    if (input.size() <= sizeBytes)
        return 0;
    QList<QByteArray> expected;
    QList<QByteArray> lines;
    const bool fits = cutPlainly(input.sliced(sizeBytes), expected);
    if (cutInPieces(input.first(sizeBytes), input.sliced(sizeBytes), lines) != fits || lines != expected)
        std::abort();
    return 0;
}
