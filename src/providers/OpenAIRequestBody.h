#pragma once

#include "model/AIConfiguration.h"
#include "model/APIMessage.h"
#include "providers/JsonWriter.h"

#include <QByteArray>
#include <QList>

namespace morvane {

/// Whether the model gets images as such or only their names.
enum class ImageDelivery { asImages, asNames };

/// The body of a chat completions request as UTF-8 JSON with the keys `model`, `messages`, `temperature`,
/// `stream`, `max_tokens`, `tools`, `tool_choice`, `keep_alive` in this order. Throws AIServiceError::Api if
/// the temperature is no finite number. Any thread; takes milliseconds for images.
QByteArray openAIBody(const QList<APIMessage> &context, const AIConfiguration &config);

/// Writes one user message: a plain text, or a list of parts when there are images to be seen. An image
/// without bytes or media type is left out.
void openAIUserMessage(JsonWriter &json, const QString &text, const QList<ChatAttachment> &attachments,
                       ImageDelivery images);

} // namespace morvane
