#pragma once

#include "app/PendingAttachments.h"
#include "ui/window/ComposerTexts.h"

#include <QPointer>
#include <QWidget>

class QFileDialog;
class QLabel;
class QToolButton;

namespace morvane {

class AttachmentArea;
class ComposerEdit;
class ConversationPort;
class FieldPasting;
class UpdateModel;

/// Where the user writes a message, attaches files to it, sends it and stops the answer. Holds the draft; the
/// model sees text and files only when they are sent.
class ComposerView : public QWidget {
    Q_OBJECT
public:
    /// All of them must outlive the view. Without `pasting` the toolkit waits for what is pasted.
    ComposerView(ConversationPort &conversation, const UpdateModel &updates, FieldPasting *pasting = nullptr,
                 ComposerTexts texts = {}, QWidget *parent = nullptr);

    /// Whether the draft may be sent now.
    bool canSend() const;
    QString draft() const;
    PendingAttachments &attachments() { return *m_attachments; }
    void focusDraft();
    /// Makes a prompt that the user has chosen elsewhere the draft.
    void takeSuggestion(const QString &prompt);

    /// Reads files from a drop or the file dialog.
    void handleFiles(const QList<QUrl> &urls);
    /// Makes do with a height, in logical pixels: the field has fewer lines then, and what goes along with
    /// the message scrolls.
    void setRoom(int room);
    /// Shows that files which hang over the window can be dropped.
    void setDropMark(bool shown);

Q_SIGNALS:
    /// A page down (1) or up (-1) of the conversation.
    void pageRequested(int direction);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    /// What the draft waits for that the user has sent.
    enum class Postponed {
        no,
        untilReady,  ///< The conversation is still being opened.
        untilPasted, ///< What the user has pasted is not there yet.
    };

    /// Whether there is anything to send.
    bool hasInput() const;
    /// Whether a message could go now if there were one.
    bool takesMessage() const;
    void connectAttachments();
    void orderTabs();
    void send();
    void sendOrPostpone();
    void sendPostponed(Postponed awaited);
    void connectPasting(FieldPasting &pasting);
    void openFileDialog();
    void updateState();
    void updateSendButton();
    void updateNote();
    void fitIcons();

    ConversationPort &m_conversation;
    const UpdateModel &m_updates;
    const ComposerTexts m_texts;
    PendingAttachments *m_attachments;
    AttachmentArea *m_area;
    ComposerEdit *m_edit;
    QToolButton *m_attach;
    QToolButton *m_send;
    QToolButton *m_stop;
    QLabel *m_note;
    QPointer<QFileDialog> m_dialog;
    bool m_hasDropMark = false;
    Postponed m_postponed = Postponed::no;
};

} // namespace morvane
