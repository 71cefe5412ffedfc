#pragma once

#include "async/OneShot.h"
#include "async/Outcome.h"
#include "attachments/AttachmentError.h"
#include "attachments/AttachmentProcessor.h"
#include "attachments/AttachmentService.h"

#include <QList>
#include <new>

namespace morvane {

/// Attaches every file at once under its name and with the kind of its extension, unless a test holds the
/// files back or names failures.
class FakeAttachments final : public AttachmentService {
public:
    Task<ChatAttachment> process(QUrl url) override
    {
        processed.append(url.fileName());
        return answer(url.fileName(), AttachmentProcessor::detectKind(url, std::nullopt));
    }
    Task<ChatAttachment> processImage(QByteArray data, QString filename) override
    {
        processed.append(filename);
        images.append(data);
        return answer(filename, AttachmentKind::image);
    }

    /// A picture of the named colour that the bytes are, if they are one.
    Task<QImage> picture(QByteArray data, PictureSize size) override
    {
        pictures.append(data);
        const QColor color(QString::fromLatin1(data));
        if (!color.isValid())
            co_return QImage();
        QImage image(size == PictureSize::thumbnail ? QSize(256, 192) : QSize(640, 480),
                     QImage::Format_RGB32);
        image.fill(color);
        co_return image;
    }

    /// Lets the oldest file that is held back go on.
    void release() { m_held.takeFirst().resume(true); }

    QStringList processed;
    QList<QByteArray> images;   ///< The bytes of those that were in no file.
    QList<QByteArray> pictures; ///< The bytes of those that were looked at.
    QStringList failing;        ///< Files that fail with "Cannot attach {name}."
    QStringList breaking;       ///< Files for which the system lacks something.
    bool holds = false;

private:
    Task<ChatAttachment> answer(QString filename, AttachmentKind kind)
    {
        if (holds) {
            const OneShot<bool> held;
            m_held.append(held);
            co_await held.wait();
        }
        if (breaking.contains(filename))
            throw std::bad_alloc();
        if (failing.contains(filename))
            throw AttachmentError(QStringLiteral("Cannot attach ") + filename + QLatin1Char('.'));
        ChatAttachment attachment;
        attachment.id = QUuid::createUuid();
        attachment.filename = filename;
        attachment.kind = kind;
        if (kind == AttachmentKind::image) {
            attachment.data = QByteArray("image bytes");
            attachment.mimeType = QStringLiteral("image/png");
        }
        co_return attachment;
    }

    QList<OneShot<bool>> m_held;
};

} // namespace morvane
