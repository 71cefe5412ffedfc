#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <algorithm>
#include <ctime>

namespace morvane {

/// Processor time of this thread in nanoseconds, which other programs on the machine do not stretch.
inline qint64 threadTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<qint64>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

/// Measures how long each event holds the main thread, and notes the paints of one widget.
class MeasuredApplication : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        const bool isPaint = event->type() == QEvent::Paint && receiver == watched;
        const int type = event->type();
        const QByteArray name = receiver->metaObject()->className();
        QElapsedTimer timer;
        timer.start();
        const qint64 processorBefore = threadTime();
        const bool result = QApplication::notify(receiver, event);
        if (const qint64 time = threadTime() - processorBefore; time > longestProcessor) {
            longestProcessor = time;
            longestEvent = name + " event " + QByteArray::number(type);
        }
        longest = std::max(longest, timer.nsecsElapsed());
        paints += isPaint ? 1 : 0;
        return result;
    }

    QObject *watched = nullptr;
    qint64 longest = 0; ///< Nanoseconds.
    qint64 longestProcessor = 0;
    QByteArray longestEvent; ///< Which it was, by processor time.
    int paints = 0;
};

} // namespace morvane
