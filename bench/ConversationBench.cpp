// What the conversation view costs: opening 5,000 messages, scrolling them from end to end, looking for a
// word in them, copying them all, copying one message of a megabyte and a part of it, and an answer of
// 100,000 one-word tokens without a line end that streams in and is then formatted. Off screen; prints JSON,
// times in milliseconds.

#include "MeasuredApplication.h"
#include "ProcMegabytes.h"

#include "app/ActivityLog.h"
#include "app/Transcript.h"
#include "async/Scheduler.h"
#include "async/SystemClock.h"
#include "platform/Announcer.h"
#include "support/SampleMessage.h"
#include "tools/FixedColorScheme.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/find/FindSession.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace Qt::StringLiterals;

using namespace morvane;

namespace {

constexpr int messageCount = 5000;
constexpr int tokenCount = 100'000;
constexpr int tokensPerBatch = 40; // the agent hands text on in batches of some 200 characters
constexpr qint64 tokensPerSecond = 300'000;
constexpr int scrollFrames = 1000;

class SilentAnnouncer : public Announcer {
public:
    void announce(const QString &) override {}
};

double milliseconds(qint64 nanoseconds)
{
    return static_cast<double>(nanoseconds) / 1e6;
}

double processSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

QList<ChatMessage> longConversation()
{
    QList<ChatMessage> messages;
    messages.reserve(messageCount);
    for (int i = 0; i < messageCount / 2; ++i) {
        messages.append(sampleMessage(Role::user, u"Question %1: what does the log say about the disk, and "
                                                  "what should be done about it?"_s.arg(i)));
        QString answer = u"## Answer %1\n\nThe log names **three** places, all under `/var/log`:\n\n"
                         "1. the first, with [a link](https://example.com/%1)\n2. the second\n"
                         "   - and a detail of it\n3. the third\n\n"_s.arg(i);
        answer += u"A paragraph that explains at some length what was found. "_s.repeated(1 + i % 12);
        if (i % 3 == 0)
            answer += u"\n\n```bash\ndu -sh /var/log/*\ntail -n 20 /var/log/syslog\n```\n\nThat is all."_s;
        if (i % 7 == 0)
            answer += u"\n\n| place | size |\n|---|---:|\n| syslog | 3 MB |\n| kern.log | 1 MB |\n"_s;
        messages.append(sampleMessage(Role::assistant, answer));
    }
    return messages;
}

void paintOnce(MeasuredApplication &application)
{
    const int before = application.paints;
    while (application.paints == before)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// Lets everything that is due happen, frames included, for `time` milliseconds.
void settle(int time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Hands the answer on at `tokensPerSecond`, in batches, as a provider's stream would.
void stream(Transcript &transcript, qint64 &longestAppend)
{
    const QString batch = u"token "_s.repeated(tokensPerBatch);
    QEventLoop loop;
    QTimer timer;
    QElapsedTimer clock;
    clock.start();
    qint64 sent = 0;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        QElapsedTimer call;
        call.start();
        while (sent < tokenCount && sent < clock.elapsed() * tokensPerSecond / 1000) {
            transcript.appendToken(batch);
            sent += tokensPerBatch;
        }
        longestAppend = std::max(longestAppend, call.nsecsElapsed());
        if (sent >= tokenCount)
            loop.quit();
    });
    timer.start(1);
    loop.exec();
}

double percentile(std::vector<qint64> times, double share)
{
    std::sort(times.begin(), times.end());
    const auto last = static_cast<double>(times.size() - 1);
    return milliseconds(times[static_cast<std::size_t>(last * share)]);
}

/// One answer of the words of many.
QString megabyte(const QList<ChatMessage> &messages)
{
    QString text;
    for (const ChatMessage &message : messages)
        if (message.role == Role::assistant && text.size() < 1'000'000)
            text += message.text + u"\n\n"_s;
    return text;
}

/// Selects with the mouse from the middle of what is in sight to its end, and with the keyboard on to the
/// end.
void selectFromWithin(ChatScrollView &view)
{
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 50);
    settle(300);
    const QPoint middle = view.viewport()->rect().center();
    QTest::mousePress(view.viewport(), Qt::LeftButton, {}, middle);
    QTest::mouseMove(view.viewport(), middle + QPoint(0, 40));
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum());
    settle(300);
    const QPoint end = view.viewport()->rect().bottomRight() - QPoint(30, 30);
    QTest::mouseMove(view.viewport(), end);
    QTest::mouseRelease(view.viewport(), Qt::LeftButton, {}, end);
}

struct Copy {
    qsizetype letters = 0;
    double time = 0;      ///< Until they are on the clipboard, in milliseconds.
    double stall = 0;     ///< The longest hold of the main thread,
    double processor = 0; ///< and the same in processor time.
};

Copy copySelection(MeasuredApplication &application, ChatScrollView &view)
{
    settle(100);
    QApplication::clipboard()->clear();
    application.longest = application.longestProcessor = 0;
    QElapsedTimer timer;
    timer.start();
    const qint64 begin = threadTime();
    view.copy();
    const qint64 call = timer.nsecsElapsed();
    const qint64 processor = threadTime() - begin;
    while (QApplication::clipboard()->text().isEmpty())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return {.letters = QApplication::clipboard()->text().size(),
            .time = milliseconds(timer.nsecsElapsed()),
            .stall = milliseconds(std::max(application.longest, call)),
            .processor = milliseconds(std::max(application.longestProcessor, processor))};
}

void print(const char *name, const Copy &copy)
{
    std::printf("\"%s\": {\"letters\": %lld, \"time\": %.1f, \"stall\": %.2f, \"stallProcessor\": %.2f}, ",
                name, static_cast<long long>(copy.letters), copy.time, copy.stall, copy.processor);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    MeasuredApplication application(argc, argv);
    FixedColorScheme scheme(ColorScheme::Preference::none);
    Theme theme(scheme);
    SilentAnnouncer announcer;
    Transcript transcript;
    ActivityLog activity;
    ChatScrollView view(transcript, activity, announcer);
    application.watched = view.viewport();
    view.resize(760, 560);
    view.show();
    paintOnce(application);
    settle(100);

    QList<ChatMessage> messages = longConversation();
    const double memoryBefore = procMegabytes(u"self"_s, "smaps_rollup", "Pss");
    QElapsedTimer timer;
    timer.start();
    transcript.reset(std::move(messages));
    paintOnce(application);
    const double openTime = milliseconds(timer.nsecsElapsed());
    settle(300);

    QScrollBar *bar = view.verticalScrollBar();
    std::vector<qint64> frames;
    for (int frame = 0; frame <= scrollFrames; ++frame) {
        timer.start();
        bar->setValue(static_cast<int>(static_cast<qint64>(bar->maximum()) * frame / scrollFrames));
        view.viewport()->repaint();
        frames.push_back(timer.nsecsElapsed());
    }
    const double memoryAfter = procMegabytes(u"self"_s, "smaps_rollup", "Pss");

    SystemClock clock;
    Scheduler scheduler(clock);
    FindSession find(scheduler, transcript);
    QObject::connect(&find, &FindSession::reached, &view,
                     [&](const FoundText &found) { view.showMatch(found, find.words()); });
    application.longest = application.longestProcessor = 0;
    timer.start();
    const qint64 searchBegin = threadTime();
    find.search(u"a"_s, 0); // in every message, many times
    const qint64 searchProcessor = threadTime() - searchBegin;
    const qint64 searchCall = timer.nsecsElapsed();
    while (!find.count())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const double findTime = milliseconds(timer.nsecsElapsed());
    settle(100);
    const double findStall = milliseconds(std::max(application.longest, searchCall));
    const double findProcessor = milliseconds(std::max(application.longestProcessor, searchProcessor));
    find.search({}, 0);
    view.selectAll();
    settle(100);
    const Copy copy = copySelection(application, view);
    const double memoryCopied = procMegabytes(u"self"_s, "smaps_rollup", "Pss");

    const QList<ChatMessage> conversation = transcript.messages();
    transcript.reset({sampleMessage(Role::user, u"A megabyte, please."_s),
                      sampleMessage(Role::assistant, megabyte(conversation))});
    settle(300);
    view.selectAll();
    const Copy copyOfOne = copySelection(application, view);
    selectFromWithin(view);
    const Copy copyOfPart = copySelection(application, view);
    transcript.reset(conversation);
    settle(300);

    transcript.append(sampleMessage(Role::user, u"Now a very long answer."_s));
    ChatMessage answer = sampleMessage(Role::assistant, QString());
    answer.isStreaming = true;
    transcript.append(answer);
    settle(400);
    application.longest = application.longestProcessor = 0;
    qint64 longestAppend = 0;
    const double processorBefore = processSeconds();
    stream(transcript, longestAppend);
    settle(600);
    const double streamProcessor = processSeconds() - processorBefore;
    const double longestProcessor = milliseconds(application.longestProcessor);
    const double longestStall = milliseconds(std::max(application.longest, longestAppend));

    application.longest = application.longestProcessor = 0;
    timer.start();
    transcript.setStreaming(transcript.messages().size() - 1, false);
    const qint64 finishCall = timer.nsecsElapsed();
    settle(600);
    const double finishProcessor = milliseconds(application.longestProcessor);
    const double finishStall = milliseconds(std::max(application.longest, finishCall));

    std::printf("{\"messages\": %d, \"openToFirstPaint\": %.1f, ", messageCount, openTime);
    std::printf("\"scrollFrames\": {\"p50\": %.2f, \"p99\": %.2f, \"max\": %.2f}, \"memoryMoreMB\": %.1f, ",
                percentile(frames, 0.5), percentile(frames, 0.99), percentile(frames, 1.0),
                memoryAfter - memoryBefore);
    std::printf("\"findTime\": %.1f, \"findStall\": %.2f, \"findStallProcessor\": %.2f, ", findTime,
                findStall, findProcessor);
    print("copyAll", copy);
    print("copyOneOfAMegabyte", copyOfOne);
    print("copyAPartOfIt", copyOfPart);
    std::printf("\"memoryMoreWithFindAndCopyMB\": %.1f, \"peakOfAllMB\": %.1f, ", memoryCopied - memoryBefore,
                procMegabytes(u"self"_s, "status", "VmHWM"));
    std::printf("\"streamTokens\": %d, \"streamProcessorSeconds\": %.2f, ", tokenCount, streamProcessor);
    std::printf("\"longestStall\": %.2f, \"longestStallProcessor\": %.2f, ", longestStall, longestProcessor);
    std::printf("\"finishStall\": %.2f, \"finishStallProcessor\": %.2f}\n", finishStall, finishProcessor);
    return 0;
}
