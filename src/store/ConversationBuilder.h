#pragma once

#include "model/ChatMessage.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringDecoder>
#include <cstdint>
#include <string_view>

namespace morvane {

/// Puts the messages of a conversation together from what ConversationEvents finds in its file, so that no
/// second form of them stands in memory. Whether all of it was right is known at the end only.
class ConversationBuilder {
public:
    /// What a value belongs to.
    enum class Member {
        none,
        messageID,
        role,
        text,
        isStreaming,
        errorMessage,
        attachments,
        date,
        attachmentID,
        filename,
        kind,
        data,
        extractedText,
        mimeType,
        byteSize,
    };

    void beginMessages() { m_messages.clear(); }
    void beginMessage() { m_messages.append(ChatMessage()); }
    void beginAttachments() { m_messages.back().attachments.clear(); }
    void beginAttachment() { m_messages.back().attachments.append(ChatAttachment()); }

    /// A text comes in parts; the last one of it is told, and whether the text was of the right form.
    void addText(Member member, std::string_view part);
    void endText(Member member, bool isRight);

    void setNumber(Member member, double number, qint64 integer);
    void setFlag(Member member, bool flag);
    void setNull(Member member);

    QList<ChatMessage> takeMessages() { return std::move(m_messages); }

private:
    void addBase64(std::string_view part);
    void setText(Member member, QString text);
    ChatMessage &message() { return m_messages.back(); }
    ChatAttachment &attachment() { return m_messages.back().attachments.back(); }

    QList<ChatMessage> m_messages;
    QString m_text; ///< The text that is under way, unless it is bytes.
    QStringDecoder m_decode{QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom};
    QByteArray m_bytes;  ///< What the base64 that is under way stands for so far.
    QByteArray m_base64; ///< What is left of it: less than four digits.
};

} // namespace morvane
