#pragma once

#include <QString>

namespace morvane {

/// What a place to write to the agent is called, and what the model is told of it. By itself that of the main
/// window.
struct ComposerTexts {
    QString placeholder = QStringLiteral("Message Morvane");
    QString field = QStringLiteral("Message Morvane");
    QString fieldHint = QStringLiteral("Type your message, then press Return to send it.");
    QString attach = QStringLiteral("Attach a file or image");
    QString attachHint = QStringLiteral("Adds images, PDFs, or text files to your next message.");
    QString send = QStringLiteral("Send message");
    QString sendWithoutInput = QStringLiteral("Send message. Add a message or an attachment first.");
    QString stop = QStringLiteral("Stop generating");
    /// Below the field while nothing is under way.
    QString note = QStringLiteral("Return to send · ⌘N for a new conversation");
    /// Goes to the model behind each message, and is not shown.
    QString marker;
};

} // namespace morvane
