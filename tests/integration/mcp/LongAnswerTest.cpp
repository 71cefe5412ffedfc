#include "McpFixture.h"

#include "mcp/JsonRpc.h"
#include "mcp/LineFraming.h"
#include "mcp/ToolAnswers.h"
#include "support/Sanitizer.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What a long answer takes of memory on its way from the pipe to the text that the model gets.
class LongAnswerTest : public McpTest {
protected:
    static qint64 memory(const QByteArray &name) { return number(::getpid(), u"status"_s, name); }
    static double memoryTaken(int megabytes, const QByteArray &word);
    static int hundredthsTaken(int megabytes, const QByteArray &word);
};

/// Reads a line of which most is one text, in pieces of 4 kB; how many times its length that took at the
/// most.
double LongAnswerTest::memoryTaken(int megabytes, const QByteArray &word)
{
    QByteArray line;
    line.reserve(megabytes * 1'000'000 + 1'000);
    line += R"({"jsonrpc":"2.0","id":1,"result":{"content":[{"type":"text","text":")";
    while (line.size() < megabytes * 1'000'000)
        line += word;
    line += "\"}]}}\n";
    const qint64 before = memory("VmRSS");
    QFile references(u"/proc/self/clear_refs"_s);
    if (!references.open(QIODevice::WriteOnly) || references.write("5") != 1 || !references.flush())
        return 0;
    LineFraming framing;
    QList<QByteArray> lines;
    const qsizetype piece =
        4096 / word.size() * word.size(); // a chunk that is cut inside a character is dropped
    const qsizetype head = line.indexOf(word);
    lines += framing.consume(line.first(head));
    for (qsizetype start = head; start < line.size(); start += piece)
        lines += framing.consume(QByteArrayView(line).sliced(start, std::min(piece, line.size() - start)));
    auto message = parseJSONText(lines.takeFirst());
    const ToolResult result = toolResult(resultOf(std::move(message)).value());
    if (result.text.size() < line.size() / 4)
        return 0;
    return double(memory("VmHWM") - before) * 1024 / double(line.size());
}

/// As memoryTaken, in a process whose memory nobody has used yet; in hundredths.
int LongAnswerTest::hundredthsTaken(int megabytes, const QByteArray &word)
{
    int ends[2];
    if (::pipe(ends) != 0)
        return 0;
    const pid_t process = ::fork();
    if (process == 0) {
        // As it is at first; blocks that other tests gave back have shaped it.
        ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
        const int taken = int(memoryTaken(megabytes, word) * 100);
        ::_exit(::write(ends[1], &taken, sizeof taken) == sizeof taken ? 0 : 1);
    }
    ::close(ends[1]);
    int taken = 0;
    const bool isTold = ::read(ends[0], &taken, sizeof taken) == sizeof taken;
    ::close(ends[0]);
    ::waitpid(process, nullptr, 0);
    return isTold ? taken : 0;
}

TEST_F(LongAnswerTest, ALongAnswerTakesLessThanThreeTimesItsSize)
{
    for (const int megabytes : {25, 50}) {
        for (const char *word : {"a line of some words in it\\n", "日本語の文", "no line end "}) {
            const int taken = hundredthsTaken(megabytes, word);
            EXPECT_GT(taken, 100) << megabytes << word;
            EXPECT_LT(taken, isSanitized() ? 1200 : 250) // what is freed is kept for a while then
                << megabytes << word;
        }
    }
}

} // namespace
} // namespace morvane
