#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <optional>

namespace morvane {

/// Decides how an attachment goes to the model. Stored as "image", "pdf", "text".
enum class AttachmentKind { image, pdf, text };

/// A file that the user sent with a message.
struct ChatAttachment {
    QUuid id;
    QString filename;
    AttachmentKind kind = AttachmentKind::text;
    std::optional<QByteArray> data; ///< Raw bytes for models that see; absent for text-only content.
    QString extractedText;          ///< Stands for the attachment in a text-only request; may be empty.
    std::optional<QString> mimeType;
    qint64 byteSize = 0; ///< Size of the original file.

    bool operator==(const ChatAttachment &) const = default;
};

} // namespace morvane
