// What talking to a model costs: parsing one streamed chunk, building request bodies, and 100,000 one-word
// tokens from a server process of its own through the whole client. Prints one JSON object. Optional
// argument: the number of tokens.

#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "providers/GeminiRequestBody.h"
#include "providers/GeminiStreamParser.h"
#include "providers/HttpAIService.h"
#include "providers/OpenAIRequestBody.h"
#include "providers/OpenAIStreamParser.h"
#include "support/RunTask.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Time = std::chrono::steady_clock;

constexpr int repetitions = 5;

[[noreturn]] void fail(const char *reason)
{
    std::fprintf(stderr, "%s\n", reason);
    std::exit(1);
}

double seconds(Time::duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

/// User and system time of this process and all of its threads.
double processSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Nanoseconds for one line of a stream, the delivery of its text not included.
template <class Parser> double chunkNanoseconds(const QByteArray &line)
{
    constexpr int chunks = 200'000;
    std::vector<double> results;
    for (int i = 0; i < repetitions; ++i) {
        Parser parser;
        QStringList pieces;
        const auto begin = Time::now();
        for (int chunk = 0; chunk < chunks; ++chunk) {
            parser.feed(line, pieces);
            pieces.clear();
        }
        results.push_back(seconds(Time::now() - begin) / chunks * 1e9);
        if (parser.finish().text.isEmpty())
            fail("the chunks were not read");
    }
    return median(results);
}

/// Milliseconds for the body of a request.
template <class Build> double bodyMilliseconds(Build build)
{
    std::vector<double> results;
    for (int i = 0; i < repetitions; ++i) {
        const auto begin = Time::now();
        if (build().isEmpty())
            fail("no body was built");
        results.push_back(seconds(Time::now() - begin) * 1e3);
    }
    return median(results);
}

QList<APIMessage> longContext()
{
    QList<APIMessage> context;
    const QString text = u"A line of a file that was read, \"quoted\" here and there.\n"_s.repeated(100);
    for (int i = 0; i < 40; ++i) {
        const SharedJsonObject arguments(boost::json::object{{"path", "/home/user/file.txt"}});
        context.append(APIMessage{APIMessage::FunctionCall{u"c"_s, u"read_file"_s, arguments, {}}});
        context.append(APIMessage{APIMessage::FunctionResponse{u"c"_s, u"read_file"_s, text}});
    }
    return context;
}

QList<APIMessage> contextWithImage()
{
    ChatAttachment image;
    image.kind = AttachmentKind::image;
    image.data = QByteArray(8 * 1024 * 1024, 'x');
    image.mimeType = u"image/png"_s;
    return {APIMessage{APIMessage::User{u"Look"_s, {image}}}};
}

struct Stream {
    double tokensPerSecond = 0;
    double cpuSeconds = 0;
    double longestStallMilliseconds = 0;
};

Stream streamTokens(Scheduler &scheduler, HttpAIService &service, const AIConfiguration &config, int tokens)
{
    // What a user would feel: how late a timer of one millisecond comes.
    Time::time_point lastTurn = Time::now();
    Time::duration longestGap{};
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        longestGap = std::max(longestGap, Time::now() - lastTurn);
        lastTurn = Time::now();
    });
    heartbeat.start(1);
    int received = 0;
    const auto begin = Time::now();
    const double cpuBegin = processSeconds();
    auto handle = scheduler.spawn(service.runOpenAITurn({APIMessage{APIMessage::User{u"Go"_s, {}}}}, config,
                                                        [&received](const QString &) { ++received; }));
    while (!handle.done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    Stream result;
    result.cpuSeconds = processSeconds() - cpuBegin;
    result.tokensPerSecond = tokens / seconds(Time::now() - begin);
    result.longestStallMilliseconds = std::max(0.0, seconds(longestGap) * 1e3 - 1);
    if (handle.result().text.size() != tokens * 5 || received != tokens)
        fail("tokens are missing");
    return result;
}

/// The scripted model in a process of its own, so that its work is not counted.
class ModelProcess {
public:
    explicit ModelProcess(int tokens)
    {
        QFile script(m_folder.filePath(u"script.json"_s));
        if (!script.open(QIODevice::WriteOnly))
            fail("the script cannot be written");
        script.write(R"({"afterwards":{"steps":[{"burst":)" + QByteArray::number(tokens) + "}]}}");
        script.close();
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationDirPath() + u"/scripted-model"_s, {script.fileName()});
        if (!m_process.waitForReadyRead(10'000))
            fail("scripted-model does not run; build it first");
        m_port = m_process.readLine().trimmed().toInt();
    }
    ~ModelProcess()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    QString baseURL() const { return u"http://127.0.0.1:%1/v1"_s.arg(m_port); }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    int m_port = 0;
};

int run(int tokens)
{
    const QByteArray chatLine =
        "data: {\"id\":\"chatcmpl-0123456789\",\"object\":\"chat.completion.chunk\",\"created\":1750000000,"
        "\"model\":\"a-model-name\",\"choices\":[{\"index\":0,\"delta\":{\"content\":\" word\"},"
        "\"logprobs\":null,\"finish_reason\":null}]}";
    const QByteArray geminiLine = "data: {\"candidates\":[{\"content\":{\"parts\":[{\"text\":\" "
                                  "word\"}],\"role\":\"model\"},\"index\":0}],"
                                  "\"usageMetadata\":{\"promptTokenCount\":11,\"totalTokenCount\":12},"
                                  "\"modelVersion\":\"a-model-name\"}";

    const ModelProcess model(tokens);
    SystemClock clock;
    Scheduler scheduler(clock);
    HttpClient client;
    HttpAIService service(client);
    AIConfiguration config;
    config.provider = ProviderID::custom;
    config.baseURL = model.baseURL();
    config.model = u"scripted"_s;

    std::vector<double> rates;
    std::vector<double> cpu;
    double worstStall = 0;
    for (int i = 0; i < repetitions; ++i) {
        const Stream stream = streamTokens(scheduler, service, config, tokens);
        rates.push_back(stream.tokensPerSecond);
        cpu.push_back(stream.cpuSeconds);
        worstStall = std::max(worstStall, stream.longestStallMilliseconds);
    }
    const QList<APIMessage> context = longContext();
    const QList<APIMessage> image = contextWithImage();
    std::printf("{\n  \"benchmark\": \"model providers\",\n");
    std::printf("  \"openAIChunk\": {\"bytes\": %d, \"nanoseconds\": %.0f},\n",
                static_cast<int>(chatLine.size()), chunkNanoseconds<OpenAIStreamParser>(chatLine));
    std::printf("  \"geminiChunk\": {\"bytes\": %d, \"nanoseconds\": %.0f},\n",
                static_cast<int>(geminiLine.size()), chunkNanoseconds<GeminiStreamParser>(geminiLine));
    std::printf("  \"openAIBody\": {\"bytes\": %lld, \"milliseconds\": %.2f},\n",
                static_cast<long long>(openAIBody(context, config).size()),
                bodyMilliseconds([&] { return openAIBody(context, config); }));
    std::printf("  \"geminiBodyWithImage\": {\"bytes\": %lld, \"milliseconds\": %.2f},\n",
                static_cast<long long>(geminiRequestBody(image, config).size()),
                bodyMilliseconds([&] { return geminiRequestBody(image, config); }));
    std::printf("  \"stream\": {\"tokens\": %d, \"tokensPerSecond\": %.0f, \"cpuSeconds\": %.3f, "
                "\"longestMainThreadStallMilliseconds\": %.2f}\n}\n",
                tokens, median(rates), median(cpu), worstStall);
    return 0;
}

} // namespace
} // namespace morvane

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return morvane::run(argc > 1 ? std::atoi(argv[1]) : 100'000);
}
