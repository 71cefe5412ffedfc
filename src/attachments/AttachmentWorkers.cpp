#include "attachments/AttachmentWorkers.h"

#include "async/Cancelled.h"
#include "async/CurrentContext.h"
#include "async/OneShot.h"
#include "async/Outcome.h"
#include "async/Scheduler.h"

namespace morvane {
namespace {

/// Readers at once. Each may take a processor for minutes, and memory for a decoded photo.
constexpr int mostAtOnce = 4;
constexpr int mostPicturesAtOnce = 2;
constexpr int untilGivenUp = 1'000; // milliseconds

} // namespace

AttachmentWorkers::AttachmentWorkers(AttachmentProcessor processor)
    : m_processor(std::make_shared<const AttachmentProcessor>(std::move(processor))),
      m_threads(std::make_unique<QThreadPool>()), m_pictureThreads(std::make_unique<QThreadPool>())
{
    m_threads->setMaxThreadCount(mostAtOnce);
    m_pictureThreads->setMaxThreadCount(mostPicturesAtOnce);
}

AttachmentWorkers::~AttachmentWorkers()
{
    for (auto *const pool : {&m_threads, &m_pictureThreads})
        if (!(*pool)->waitForDone(untilGivenUp))
            // A thread that waits for a dead network drive cannot be ended; the pool is left to it.
            static_cast<void>(pool->release());
}

Task<ChatAttachment> AttachmentWorkers::process(QUrl url)
{
    Work<ChatAttachment> work = [url = std::move(url)](const AttachmentProcessor &processor,
                                                       const StopFlag &stop) {
        return processor.process(url, stop);
    };
    return run(m_threads.get(), std::move(work));
}

Task<ChatAttachment> AttachmentWorkers::processImage(QByteArray data, QString filename)
{
    Work<ChatAttachment> work = [data = std::move(data), filename = std::move(filename)](
                                    const AttachmentProcessor &processor, const StopFlag &stop) {
        return processor.processImage(data, filename, stop);
    };
    return run(m_threads.get(), std::move(work));
}

Task<QImage> AttachmentWorkers::picture(QByteArray data, PictureSize size)
{
    Work<QImage> work = [data = std::move(data), size](const AttachmentProcessor &processor,
                                                       const StopFlag &stop) {
        return processor.picture(data, size, stop);
    };
    return run(m_pictureThreads.get(), std::move(work));
}

template <class Result> Task<Result> AttachmentWorkers::run(QThreadPool *threads, Work<Result> work)
{
    const TaskContext context = co_await currentContext();
    const auto stop = std::make_shared<StopFlag>();
    const Cancellation::Callback link(*context.cancellation, [stop] { stop->raise(); });
    if (context.cancellation->isCancelled())
        throw Cancelled();
    OneShot<Outcome<Result>> done;
    threads->start([work = std::move(work), processor = m_processor, stop, done]() mutable {
        done.resume(outcomeOf([&] { return work(*processor, *stop); }));
    });
    auto outcome = co_await done.wait();
    if (context.cancellation->isCancelled())
        throw Cancelled();
    co_return outcome.take();
}

} // namespace morvane
