#pragma once

#include "async/TaskHandle.h"
#include "model/ChatAttachment.h"

#include <QImage>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QUrl>

namespace morvane {

class AttachmentService;
class Scheduler;
class SettingsStore;
class Status;

/// The files that wait to go with the next message, and those that are being read. Speaks what becomes of
/// each. Main thread.
class PendingAttachments : public QObject {
    Q_OBJECT
public:
    /// All of them outlive the object.
    PendingAttachments(Scheduler &scheduler, AttachmentService &service, Status &status,
                       const SettingsStore &settings, QObject *parent = nullptr);
    /// Ends the reading of files.
    ~PendingAttachments() override;

    /// In the order in which they were read.
    const QList<ChatAttachment> &attachments() const { return m_attachments; }
    /// Files being read now.
    int processingCount() const { return m_processingCount; }
    /// Why files were not read, since the last time that some were chosen; the newest few.
    const QStringList &failures() const { return m_failures; }
    /// How many more there were before those.
    int olderFailures() const { return m_olderFailures; }
    /// Whether a picture waits that the current model cannot see.
    bool hasUnseenImage() const;

    /// Reads files in the background, each on its own: one that fails does not stop the others.
    void handleFiles(const QList<QUrl> &urls);
    /// The same for the bytes of a picture that is not in a file.
    void handleImage(const QByteArray &data, const QString &filename);
    /// The same for a picture that has no bytes yet.
    void handleImage(const QImage &image, const QString &filename);

    void removeAttachment(QUuid id);
    /// After a message that took them along.
    void clear();

Q_SIGNALS:
    void attachmentsChanged();
    void processingCountChanged();
    void failuresChanged();
    /// Provider or model are other ones, and may see pictures or not.
    void modelChanged();

private:
    static Task<void> attach(QPointer<PendingAttachments> self, Task<ChatAttachment> work, QString filename);
    void begin(Task<ChatAttachment> work, const QString &filename);
    void forgetFailures();
    void finish(const std::optional<ChatAttachment> &attachment, const QString &failure);

    Scheduler &m_scheduler;
    AttachmentService &m_service;
    Status &m_status;
    const SettingsStore &m_settings;
    QList<ChatAttachment> m_attachments;
    QStringList m_failures;
    int m_olderFailures = 0;
    int m_processingCount = 0;
    QList<TaskHandle<void>> m_tasks;
};

} // namespace morvane
