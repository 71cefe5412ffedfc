#pragma once

#include "async/Task.h"
#include "model/ChatAttachment.h"

#include <QDialog>
#include <QPixmap>
#include <QPointer>

class QLabel;

namespace morvane {

class AttachmentService;
class Scheduler;

/// A window with one picture that was sent, as large as it fits. Escape closes it.
class PictureView : public QDialog {
    Q_OBJECT
public:
    /// Both must outlive the view.
    PictureView(const ChatAttachment &picture, Scheduler &scheduler, AttachmentService &service,
                QWidget *parent);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    static Task<void> read(QPointer<PictureView> self, AttachmentService *service, QByteArray data);
    void take(const QImage &image);
    void fit();

    QLabel *m_label;
    QPixmap m_picture;
};

} // namespace morvane
