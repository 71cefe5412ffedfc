#include "app/PendingAttachments.h"

#include "app/Log.h"
#include "app/SelectedModel.h"
#include "app/Status.h"
#include "async/Cancelled.h"
#include "async/OffMain.h"
#include "async/Scheduler.h"
#include "attachments/AttachmentError.h"
#include "attachments/AttachmentService.h"
#include "store/SettingsStore.h"

#include <QBuffer>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype mostFailures = 3;

Task<ChatAttachment> encodeAndProcess(AttachmentService *service, QImage image, QString filename)
{
    const QByteArray png = co_await runOffMain([image = std::move(image)] {
        QBuffer buffer;
        image.save(&buffer, "png");
        return buffer.data();
    });
    co_return co_await service->processImage(png, filename);
}

} // namespace

PendingAttachments::PendingAttachments(Scheduler &scheduler, AttachmentService &service, Status &status,
                                       const SettingsStore &settings, QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_service(service), m_status(status), m_settings(settings)
{
    connect(&settings, &SettingsStore::changed, this, &PendingAttachments::modelChanged);
}

PendingAttachments::~PendingAttachments()
{
    for (TaskHandle<void> &task : m_tasks)
        task.cancel();
}

bool PendingAttachments::hasUnseenImage() const
{
    const bool hasImage =
        std::any_of(m_attachments.begin(), m_attachments.end(), [](const ChatAttachment &attachment) {
            return attachment.kind == AttachmentKind::image;
        });
    return hasImage && !modelSeesImages(m_settings);
}

void PendingAttachments::handleFiles(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls)
        begin(m_service.process(url), url.adjusted(QUrl::StripTrailingSlash).fileName());
}

void PendingAttachments::handleImage(const QByteArray &data, const QString &filename)
{
    begin(m_service.processImage(data, filename), filename);
}

void PendingAttachments::handleImage(const QImage &image, const QString &filename)
{
    begin(encodeAndProcess(&m_service, image, filename), filename);
}

void PendingAttachments::begin(Task<ChatAttachment> work, const QString &filename)
{
    if (m_processingCount == 0)
        forgetFailures();
    ++m_processingCount;
    Q_EMIT processingCountChanged();
    m_status.announce(u"Attaching "_s + filename + u"…"_s);
    m_tasks.removeIf([](const TaskHandle<void> &task) { return task.done(); });
    m_tasks.append(m_scheduler.spawn(attach(this, std::move(work), filename)));
}

Task<void> PendingAttachments::attach(QPointer<PendingAttachments> self, Task<ChatAttachment> work,
                                      QString filename)
{
    std::optional<ChatAttachment> attachment;
    QString failure;
    try {
        attachment = co_await std::move(work);
    } catch (const Cancelled &) {
        throw;
    } catch (const AttachmentError &error) {
        failure = error.message();
    } catch (const std::exception &error) {
        // The system has no thread, no descriptor or no memory left.
        qCWarning(appLog) << "a file could not be attached:" << kindOfFailure(error);
        failure = u"Could not read \""_s + filename + u"\"."_s;
    }
    if (self)
        self->finish(attachment, failure);
}

void PendingAttachments::finish(const std::optional<ChatAttachment> &attachment, const QString &failure)
{
    --m_processingCount;
    if (attachment) {
        m_attachments.append(*attachment);
        Q_EMIT attachmentsChanged();
    } else {
        m_failures.append(failure);
        if (m_failures.size() > mostFailures) {
            m_failures.removeFirst();
            ++m_olderFailures;
        }
        Q_EMIT failuresChanged();
    }
    Q_EMIT processingCountChanged();
    m_status.announce(attachment ? u"Attached "_s + attachment->filename + u'.' : failure);
}

void PendingAttachments::forgetFailures()
{
    if (m_failures.isEmpty())
        return;
    m_failures.clear();
    m_olderFailures = 0;
    Q_EMIT failuresChanged();
}

void PendingAttachments::removeAttachment(QUuid id)
{
    const auto found = std::find_if(m_attachments.begin(), m_attachments.end(),
                                    [id](const ChatAttachment &attachment) { return attachment.id == id; });
    if (found == m_attachments.end())
        return;
    const QString filename = found->filename;
    m_attachments.erase(found);
    Q_EMIT attachmentsChanged();
    m_status.announce(u"Removed attachment "_s + filename);
}

void PendingAttachments::clear()
{
    forgetFailures();
    if (m_attachments.isEmpty())
        return;
    m_attachments.clear();
    Q_EMIT attachmentsChanged();
}

} // namespace morvane
