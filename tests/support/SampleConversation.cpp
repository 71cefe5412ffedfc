#include "support/SampleConversation.h"

#include "base/Uuid.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QString sampleText(qsizetype length)
{
    const QString words = u"He said \"go\" — it works 🙂\n\tNächste Zeile: a\\b. "_s;
    return words.repeated(length / words.size() + 1).first(length);
}

} // namespace

ConversationFile sampleConversation(qsizetype messageCount, qsizetype textLength, qsizetype attachmentBytes)
{
    ConversationFile file;
    file.id = newUuid();
    file.title = u"Größe & \"Titel\" 🙂"_s;
    file.createdAt = 785234567.123456;
    file.updatedAt = 785234999.5;
    for (qsizetype i = 0; i < messageCount; ++i) {
        ChatMessage message;
        message.id = newUuid();
        message.role = i % 2 == 0 ? Role::user : Role::assistant;
        message.text = sampleText(textLength);
        message.date = 785234567.0 + static_cast<double>(i) / 3;
        if (i % 5 == 4)
            message.errorMessage = u"Could not connect"_s;
        if (i == 0) {
            ChatAttachment image;
            image.id = newUuid();
            image.filename = u"ä.png"_s;
            image.kind = AttachmentKind::image;
            image.data = QByteArray(attachmentBytes, '\x5a');
            image.mimeType = u"image/png"_s;
            image.byteSize = attachmentBytes;
            ChatAttachment text;
            text.id = newUuid();
            text.filename = u"notes.txt"_s;
            text.extractedText = sampleText(std::min<qsizetype>(textLength, 1000));
            text.byteSize = 12;
            message.attachments = {image, text};
        }
        file.messages.append(message);
    }
    return file;
}

} // namespace morvane
