#include "providers/OpenAIRequestBody.h"

#include "base/Json.h"
#include "providers/AIService.h"
#include "providers/AttachmentText.h"
#include "providers/RequestBodySize.h"
#include "providers/SchemaTools.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class MessageWriter {
public:
    MessageWriter(JsonWriter &json, ImageDelivery images) : m_json(json), m_images(images) {}

    void operator()(const APIMessage::User &user) const
    {
        openAIUserMessage(m_json, user.text, user.attachments, m_images);
    }
    void operator()(const APIMessage::Assistant &assistant) const
    {
        m_json.beginObject();
        m_json.member("role", "assistant");
        m_json.member("content", assistant.text);
        m_json.endObject();
    }
    void operator()(const APIMessage::FunctionCall &call) const
    {
        const QByteArray arguments = serializeJson(call.arguments.get());
        m_json.beginObject();
        m_json.member("role", "assistant");
        m_json.key("content");
        m_json.null();
        m_json.key("tool_calls");
        m_json.beginArray();
        m_json.beginObject();
        m_json.member("id", call.id);
        m_json.member("type", "function");
        m_json.key("function");
        m_json.beginObject();
        m_json.member("name", call.name);
        m_json.member("arguments",
                      std::string_view(arguments.data(), static_cast<std::size_t>(arguments.size())));
        m_json.endObject();
        m_json.endObject();
        m_json.endArray();
        m_json.endObject();
    }
    void operator()(const APIMessage::FunctionResponse &response) const
    {
        m_json.beginObject();
        m_json.member("role", "tool");
        m_json.member("tool_call_id", response.id);
        m_json.member("content", response.content);
        m_json.endObject();
    }

private:
    JsonWriter &m_json;
    ImageDelivery m_images;
};

void writeTools(JsonWriter &json, const AIConfiguration &config)
{
    json.key("tools");
    json.beginArray();
    for (const AITool &tool : config.tools) {
        json.beginObject();
        json.member("type", "function");
        json.key("function");
        json.beginObject();
        json.member("name", tool.name);
        json.member("description", tool.description);
        json.key("parameters");
        if (config.provider == ProviderID::ollama)
            json.object(compactSchema(tool.schema.get()));
        else
            json.object(tool.schema.get());
        json.endObject();
        json.endObject();
    }
    json.endArray();
    json.member("tool_choice", "auto");
}

ImageDelivery imageDelivery(const AIConfiguration &config)
{
    const bool sees = config.provider == ProviderID::openai || AIService::visionModelHeuristic(config.model);
    return sees ? ImageDelivery::asImages : ImageDelivery::asNames;
}

} // namespace

QByteArray openAIBody(const QList<APIMessage> &context, const AIConfiguration &config)
{
    requireWritable(config);
    JsonWriter json(expectedBodySize(context, config));
    json.beginObject();
    json.member("model", config.model);
    json.key("messages");
    json.beginArray();
    if (!config.systemPrompt.isEmpty()) {
        json.beginObject();
        json.member("role", "system");
        json.member("content", config.systemPrompt);
        json.endObject();
    }
    const MessageWriter writeMessage(json, imageDelivery(config));
    for (const APIMessage &message : context)
        std::visit(writeMessage, message.entry);
    json.endArray();
    json.key("temperature");
    json.number(config.temperature);
    json.member("stream", true);
    if (config.maxTokens) {
        json.key("max_tokens");
        json.integer(*config.maxTokens);
    }
    if (!config.tools.isEmpty())
        writeTools(json, config);
    if (config.provider == ProviderID::ollama) {
        json.key("keep_alive"); // for ever: the model stays loaded
        json.integer(-1);
    }
    json.endObject();
    return json.take();
}

void openAIUserMessage(JsonWriter &json, const QString &text, const QList<ChatAttachment> &attachments,
                       ImageDelivery delivery)
{
    QStringList pieces;
    if (!text.isEmpty())
        pieces.append(text);
    QList<const ChatAttachment *> images;
    for (const ChatAttachment &attachment : attachments)
        if (attachment.kind != AttachmentKind::image)
            pieces.append(attachedFileText(attachment));
        else if (delivery == ImageDelivery::asImages)
            images.append(&attachment);
        else
            pieces.append(imagePlaceholder(attachment));
    const QString joined = pieces.join(u"\n\n"_s);

    json.beginObject();
    json.member("role", "user");
    if (images.isEmpty()) {
        json.member("content", joined);
        json.endObject();
        return;
    }
    json.key("content");
    json.beginArray();
    if (!joined.isEmpty()) {
        json.beginObject();
        json.member("type", "text");
        json.member("text", joined);
        json.endObject();
    }
    for (const ChatAttachment *image : std::as_const(images)) {
        if (!image->data || !image->mimeType)
            continue;
        json.beginObject();
        json.member("type", "image_url");
        json.key("image_url");
        json.beginObject();
        json.key("url");
        json.dataURL(*image->mimeType, *image->data);
        json.endObject();
        json.endObject();
    }
    json.endArray();
    json.endObject();
}

} // namespace morvane
