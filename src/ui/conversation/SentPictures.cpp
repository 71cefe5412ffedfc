#include "ui/conversation/SentPictures.h"

#include "async/Scheduler.h"
#include "attachments/AttachmentService.h"

namespace morvane {

namespace {

/// Bytes of pictures that are kept.
constexpr qsizetype mostBytes = 12'000'000;

} // namespace

SentPictures::SentPictures(Scheduler &scheduler, AttachmentService &service, QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_service(service), m_kept(mostBytes)
{
}

QPixmap SentPictures::thumbnail(const ChatAttachment &attachment)
{
    if (const QPixmap *kept = m_kept.object(attachment.id))
        return *kept;
    if (!m_wanted.contains(attachment.id)) {
        m_wanted.insert(attachment.id);
        m_scheduler.spawn(read(this, &m_service, attachment));
    }
    return {};
}

Task<void> SentPictures::read(QPointer<SentPictures> self, AttachmentService *service,
                              ChatAttachment attachment)
{
    const QImage image =
        co_await service->picture(attachment.data.value_or(QByteArray()), PictureSize::thumbnail);
    if (self)
        self->take(attachment.id, image);
}

void SentPictures::take(QUuid id, const QImage &image)
{
    m_wanted.remove(id);
    // What cannot be read is kept too, so that it is not tried again and again.
    m_kept.insert(id, new QPixmap(QPixmap::fromImage(image)), qMax<qsizetype>(1, image.sizeInBytes()));
    Q_EMIT arrived();
}

} // namespace morvane
