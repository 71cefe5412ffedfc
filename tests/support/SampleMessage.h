#pragma once

#include "model/ChatMessage.h"

namespace morvane {

inline ChatMessage sampleMessage(Role role, const QString &text)
{
    ChatMessage message;
    message.id = QUuid::createUuid();
    message.role = role;
    message.text = text;
    return message;
}

} // namespace morvane
