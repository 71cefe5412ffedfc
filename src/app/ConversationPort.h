#pragma once

#include "model/ChatAttachment.h"

#include <QList>
#include <QObject>
#include <QString>

namespace morvane {

class ActivityLog;
class PendingAttachments;
class Status;
class Transcript;

/// What a place where the user talks to the agent needs of the conversation. The main window's composer and
/// the browser's panel talk through it into the same one. Main thread.
class ConversationPort : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// Takes a message and starts working on it; what is in `note` goes to the model behind the text and is
    /// not shown. False if it was refused, and the draft is to be kept: while a request runs or waits, while
    /// the conversation is still being opened (`isReady`), and for a reason that was told the user.
    virtual bool send(const QString &text, const QList<ChatAttachment> &attachments,
                      const QString &note = {}) = 0;
    virtual void cancel() = 0;
    virtual bool isBusy() const = 0;
    /// Whether there is a request to cancel: one that is worked on, or one that waits for the local model.
    virtual bool canCancel() const = 0;
    /// Whether the messages of the conversation are there, so that one can be added.
    virtual bool isReady() const = 0;

    virtual const Transcript &transcript() const = 0;
    virtual const ActivityLog &activity() const = 0;
    virtual const Status &status() const = 0;

    /// A list of files that wait for the next message; `parent` owns it.
    virtual PendingAttachments *newAttachments(QObject *parent) = 0;

Q_SIGNALS:
    /// isBusy or canCancel tells something else.
    void isBusyChanged();
    /// The user leaves the conversation for another or a new one.
    void conversationLeft();
    /// The conversation that was being opened is ready.
    void conversationReady();
};

} // namespace morvane
