#pragma once

#include "model/ChatAttachment.h"
#include "ui/theme/Icons.h"

#include <QWidget>

class QToolButton;

namespace morvane {

/// One file that waits to be sent: its kind as a symbol, its name, and a button that takes it away. A name
/// that is too long is elided in its middle; tool tip and accessible name have all of it.
class AttachmentChip : public QWidget {
    Q_OBJECT
public:
    explicit AttachmentChip(const ChatAttachment &attachment, QWidget *parent = nullptr);

    QUuid attachmentID() const { return m_id; }
    /// Whether the focus is on its button.
    bool hasButtonFocus() const;
    void focusButton();
    QWidget *button() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void removeRequested(QUuid id);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    int symbolSide() const { return fontMetrics().height(); }
    int buttonSide() const;
    /// What the chip takes beside its name.
    int widthWithoutName() const;
    QRect nameRect() const;

    QUuid m_id;
    QString m_name;
    Symbol m_symbol;
    QToolButton *m_remove;
};

} // namespace morvane
