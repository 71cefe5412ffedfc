#pragma once

#include "model/AIConfiguration.h"
#include "model/APIMessage.h"
#include "providers/JsonWriter.h"

#include <QByteArray>
#include <QList>

namespace morvane {

/// The body of a Gemini streaming request as UTF-8 JSON, with the keys `contents`, `generationConfig`,
/// `systemInstruction`, `tools` in this order. Throws AIServiceError::Api if the temperature is no finite
/// number. Any thread; takes milliseconds for images.
QByteArray geminiRequestBody(const QList<APIMessage> &context, const AIConfiguration &config);

/// Writes the list of parts of one user message: images first, then one text. Never empty, since the
/// interface refuses that.
void geminiParts(JsonWriter &json, const QString &text, const QList<ChatAttachment> &attachments);

} // namespace morvane
