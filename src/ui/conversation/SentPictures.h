#pragma once

#include "async/Task.h"
#include "model/ChatAttachment.h"

#include <QCache>
#include <QObject>
#include <QPixmap>
#include <QPointer>
#include <QSet>

namespace morvane {

class AttachmentService;
class Scheduler;

/// The small pictures of what was sent, decoded apart from the program when they come into sight. Keeps so
/// many that a conversation can be scrolled, and no more. Main thread.
class SentPictures : public QObject {
    Q_OBJECT
public:
    /// Both must outlive the object.
    SentPictures(Scheduler &scheduler, AttachmentService &service, QObject *parent = nullptr);

    /// Null while the picture is not there yet, and for good if it cannot be read.
    QPixmap thumbnail(const ChatAttachment &attachment);

Q_SIGNALS:
    /// A picture is there that was asked for.
    void arrived();

private:
    static Task<void> read(QPointer<SentPictures> self, AttachmentService *service,
                           ChatAttachment attachment);
    void take(QUuid id, const QImage &image);

    Scheduler &m_scheduler;
    AttachmentService &m_service;
    QCache<QUuid, QPixmap> m_kept;
    QSet<QUuid> m_wanted; ///< Being read.
};

} // namespace morvane
