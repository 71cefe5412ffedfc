#pragma once

#include <QScrollArea>

class QProgressBar;

namespace morvane {

class AttachmentChips;
class NoteLabel;
class PendingAttachments;

/// What goes along with the next message: the files, why others could not be read, whether the model sees
/// pictures, and how many files are being read now. As high as all of that; it scrolls where there is less
/// room.
class AttachmentArea : public QScrollArea {
    Q_OBJECT
public:
    /// `attachments` must outlive the area.
    explicit AttachmentArea(PendingAttachments &attachments, QWidget *parent = nullptr);

    /// The buttons that remove files, in their order.
    QList<QWidget *> buttons() const;
    /// Keeps the area to a height, in logical pixels.
    void setHeightLimit(int limit);

Q_SIGNALS:
    /// The last file that had the focus is gone.
    void focusLeft();
    /// Other files have buttons now.
    void buttonsChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitHeight();
    void showAttachments();
    void showFailures();
    void showProcessing();

    PendingAttachments &m_attachments;
    QWidget *m_content;
    AttachmentChips *m_chips;
    NoteLabel *m_failures;
    QWidget *m_warning;
    QProgressBar *m_progress;
    QWidget *m_processing;
    int m_heightLimit = QWIDGETSIZE_MAX;
};

} // namespace morvane
