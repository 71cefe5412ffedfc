#include "providers/RequestBodySize.h"

#include "providers/AIServiceError.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype bytesPerEntry = 200; // keys and brackets of a message
constexpr qsizetype bytesPerTool = 1000; // a schema of usual size

class EntrySize {
public:
    qsizetype operator()(const APIMessage::User &user) const
    {
        qsizetype size = user.text.size();
        for (const ChatAttachment &attachment : user.attachments) {
            size += bytesPerEntry + attachment.extractedText.size();
            if (attachment.data)
                size += attachment.data->size() / 3 * 4;
        }
        return size;
    }
    qsizetype operator()(const APIMessage::Assistant &assistant) const { return assistant.text.size(); }
    qsizetype operator()(const APIMessage::FunctionCall &) const { return bytesPerEntry; }
    qsizetype operator()(const APIMessage::FunctionResponse &response) const
    {
        return response.content.size();
    }
};

} // namespace

qsizetype expectedBodySize(const QList<APIMessage> &context, const AIConfiguration &config)
{
    qsizetype size = 1000 + config.systemPrompt.size() + config.tools.size() * bytesPerTool;
    for (const APIMessage &message : context)
        size += bytesPerEntry + std::visit(EntrySize(), message.entry);
    return size + size / 16; // escapes
}

void requireWritable(const AIConfiguration &config)
{
    if (!std::isfinite(config.temperature))
        throw AIServiceError(AIServiceError::Api{
            u"The temperature in Settings is not a number. Open Settings and correct it."_s});
}

} // namespace morvane
