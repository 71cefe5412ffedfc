#include "model/ChatMessage.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString fileNames(const QList<ChatAttachment> &attachments)
{
    QStringList names;
    names.reserve(attachments.size());
    for (const ChatAttachment &attachment : attachments)
        names.append(attachment.filename);
    return names.join(u", "_s);
}

} // namespace

QString ChatMessage::displayText() const
{
    if (isStreaming && text.isEmpty())
        return u"Thinking…"_s;
    if (!text.isEmpty())
        return text;
    if (!attachments.isEmpty())
        return fileNames(attachments);
    if (role == Role::assistant)
        return u"(Morvane did not return a response.)"_s;
    return QString();
}

QString ChatMessage::accessibilityLabel() const
{
    if (isStreaming)
        return u"Morvane is responding"_s;

    QString label = role == Role::assistant ? u"Morvane said "_s : u"You said "_s;
    if (errorMessage) {
        if (!text.isEmpty())
            label += text + u'.';
        label += u" Error: "_s + *errorMessage;
    } else {
        label += text.isEmpty() ? u"No text"_s : text;
    }
    if (!attachments.isEmpty()) {
        const QString noun = attachments.size() == 1 ? u"attachment"_s : u"attachments"_s;
        label +=
            u". "_s + QString::number(attachments.size()) + u' ' + noun + u": "_s + fileNames(attachments);
    }
    return label;
}

} // namespace morvane
