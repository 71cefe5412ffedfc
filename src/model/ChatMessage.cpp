#include "model/ChatMessage.h"

#include <QStringList>

namespace morvane {

namespace {

QString fileNames(const QList<ChatAttachment> &attachments)
{
    QStringList names;
    names.reserve(attachments.size());
    for (const ChatAttachment &attachment : attachments)
        names.append(attachment.filename);
    return names.join(QStringLiteral(", "));
}

} // namespace

QString ChatMessage::displayText() const
{
    if (isStreaming && text.isEmpty())
        return QStringLiteral("Thinking…");
    if (!text.isEmpty())
        return text;
    if (!attachments.isEmpty())
        return fileNames(attachments);
    if (role == Role::assistant)
        return QStringLiteral("(Morvane did not return a response.)");
    return QString();
}

QString ChatMessage::accessibilityLabel() const
{
    if (isStreaming)
        return QStringLiteral("Morvane is responding");

    QString label = role == Role::assistant ? QStringLiteral("Morvane said ") : QStringLiteral("You said ");
    if (errorMessage) {
        if (!text.isEmpty())
            label += text + u'.';
        label += QStringLiteral(" Error: ") + *errorMessage;
    } else {
        label += text.isEmpty() ? QStringLiteral("No text") : text;
    }
    if (!attachments.isEmpty()) {
        const QString noun =
            attachments.size() == 1 ? QStringLiteral("attachment") : QStringLiteral("attachments");
        label += QStringLiteral(". ") + QString::number(attachments.size()) + u' ' + noun +
                 QStringLiteral(": ") + fileNames(attachments);
    }
    return label;
}

} // namespace morvane
