#include "store/ConversationBuilder.h"

#include "base/Uuid.h"
#include "model/ChatMessageJson.h"

#include <utility>

namespace morvane {

void ConversationBuilder::addText(Member member, std::string_view part)
{
    if (member == Member::data)
        addBase64(part);
    else if (member != Member::none)
        m_text += QString(m_decode(QByteArrayView(part.data(), static_cast<qsizetype>(part.size()))));
}

void ConversationBuilder::endText(Member member, bool isRight)
{
    QString text = std::exchange(m_text, {});
    QByteArray bytes = std::exchange(m_bytes, {});
    m_base64.clear();
    m_decode.resetState();
    if (!isRight)
        return;
    text.squeeze(); // it grew by doubling
    bytes.squeeze();
    if (member == Member::data)
        attachment().data = std::move(bytes);
    else
        setText(member, std::move(text));
}

void ConversationBuilder::setText(Member member, QString text)
{
    switch (member) {
    case Member::messageID:
        message().id = uuidFromText(text).value_or(QUuid());
        break;
    case Member::role:
        message().role = roleFromText(text.toStdString()).value_or(Role::user);
        break;
    case Member::text:
        message().text = std::move(text);
        break;
    case Member::errorMessage:
        message().errorMessage = std::move(text);
        break;
    case Member::attachmentID:
        attachment().id = uuidFromText(text).value_or(QUuid());
        break;
    case Member::filename:
        attachment().filename = std::move(text);
        break;
    case Member::kind:
        attachment().kind = attachmentKindFromText(text.toStdString()).value_or(AttachmentKind::text);
        break;
    case Member::extractedText:
        attachment().extractedText = std::move(text);
        break;
    case Member::mimeType:
        attachment().mimeType = std::move(text);
        break;
    default: // holds no text
        break;
    }
}

void ConversationBuilder::addBase64(std::string_view part)
{
    constexpr qsizetype digitsOfThreeBytes = 4;
    m_base64.append(part.data(), static_cast<qsizetype>(part.size()));
    const qsizetype whole = m_base64.size() - m_base64.size() % digitsOfThreeBytes;
    m_bytes += QByteArray::fromBase64(QByteArray::fromRawData(m_base64.constData(), whole));
    m_base64.remove(0, whole);
}

void ConversationBuilder::setNumber(Member member, double number, qint64 integer)
{
    if (member == Member::date)
        message().date = number;
    else if (member == Member::byteSize)
        attachment().byteSize = integer;
}

void ConversationBuilder::setFlag(Member member, bool flag)
{
    if (member == Member::isStreaming)
        message().isStreaming = flag;
}

void ConversationBuilder::setNull(Member member)
{
    if (member == Member::errorMessage)
        message().errorMessage.reset();
    else if (member == Member::attachments)
        message().attachments.clear();
    else if (member == Member::data)
        attachment().data.reset();
    else if (member == Member::mimeType)
        attachment().mimeType.reset();
}

} // namespace morvane
