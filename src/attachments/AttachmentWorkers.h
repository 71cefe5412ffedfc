#pragma once

#include "attachments/AttachmentProcessor.h"
#include "attachments/AttachmentService.h"

#include <QThreadPool>
#include <functional>
#include <memory>

namespace morvane {

/// Processes a few files at once on threads of its own: a scanned document takes minutes and must not keep
/// the tools from the threads that they share.
class AttachmentWorkers final : public AttachmentService {
public:
    explicit AttachmentWorkers(AttachmentProcessor processor);
    /// Every task must have ended or been cancelled. Gives up after a while on a file system that hangs.
    ~AttachmentWorkers() override;

    Task<ChatAttachment> process(QUrl url) override;
    Task<ChatAttachment> processImage(QByteArray data, QString filename) override;
    Task<QImage> picture(QByteArray data, PictureSize size) override;

private:
    template <class Result> using Work = std::function<Result(const AttachmentProcessor &, const StopFlag &)>;

    template <class Result> Task<Result> run(QThreadPool *threads, Work<Result> work);

    std::shared_ptr<const AttachmentProcessor> m_processor;
    std::unique_ptr<QThreadPool> m_threads;
    std::unique_ptr<QThreadPool> m_pictureThreads; ///< What is looked at does not wait for long documents.
};

} // namespace morvane
