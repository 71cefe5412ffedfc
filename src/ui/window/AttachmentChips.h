#pragma once

#include "model/ChatAttachment.h"

#include <QList>
#include <QScrollArea>

namespace morvane {

class AttachmentChip;

/// The files that wait to be sent, in rows; scrolls when there are more than a few. Not shown when there are
/// none.
class AttachmentChips : public QScrollArea {
    Q_OBJECT
public:
    explicit AttachmentChips(QWidget *parent = nullptr);

    /// Shows these; chips of files that stay, stay as they are.
    void setAttachments(const QList<ChatAttachment> &attachments);
    /// The buttons that remove a file, as they stand.
    QList<QWidget *> buttons() const;

Q_SIGNALS:
    void removeRequested(QUuid id);
    /// The last chip went, and it had the focus.
    void focusLeft();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void addChip(const ChatAttachment &attachment);
    void removeChip(qsizetype index);
    void fitHeight();

    QWidget *m_content;
    QList<AttachmentChip *> m_chips;
};

} // namespace morvane
