#include "providers/GeminiRequestBody.h"

#include "providers/AttachmentText.h"
#include "providers/RequestBodySize.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

void writeTextPart(JsonWriter &json, const QString &text)
{
    json.beginObject();
    json.member("text", text);
    json.endObject();
}

void beginContent(JsonWriter &json, const char *role)
{
    json.beginObject();
    json.member("role", role);
    json.key("parts");
}

class ContentWriter {
public:
    explicit ContentWriter(JsonWriter &json) : m_json(json) {}

    void operator()(const APIMessage::User &user) const
    {
        beginContent(m_json, "user");
        geminiParts(m_json, user.text, user.attachments);
        m_json.endObject();
    }
    void operator()(const APIMessage::Assistant &assistant) const
    {
        beginContent(m_json, "model");
        m_json.beginArray();
        writeTextPart(m_json, assistant.text);
        m_json.endArray();
        m_json.endObject();
    }
    void operator()(const APIMessage::FunctionCall &call) const
    {
        beginContent(m_json, "model");
        m_json.beginArray();
        m_json.beginObject();
        m_json.key("functionCall");
        m_json.beginObject();
        m_json.member("name", call.name);
        m_json.key("args");
        m_json.object(call.arguments.get());
        if (!call.id.isEmpty())
            m_json.member("id", call.id);
        m_json.endObject();
        if (call.thoughtSignature && !call.thoughtSignature->isEmpty())
            m_json.member("thoughtSignature", *call.thoughtSignature);
        m_json.endObject();
        m_json.endArray();
        m_json.endObject();
    }
    void operator()(const APIMessage::FunctionResponse &response) const
    {
        beginContent(m_json, "user");
        m_json.beginArray();
        m_json.beginObject();
        m_json.key("functionResponse");
        m_json.beginObject();
        m_json.member("name", response.name);
        m_json.key("response");
        m_json.beginObject();
        m_json.member("result", response.content);
        m_json.endObject();
        m_json.endObject();
        m_json.endObject();
        m_json.endArray();
        m_json.endObject();
    }

private:
    JsonWriter &m_json;
};

void writeTools(JsonWriter &json, const QList<AITool> &tools)
{
    json.key("tools");
    json.beginArray();
    json.beginObject();
    json.key("functionDeclarations");
    json.beginArray();
    for (const AITool &tool : tools) {
        json.beginObject();
        json.member("name", tool.name);
        json.member("description", tool.description);
        json.key("parameters");
        json.object(tool.schema.get());
        json.endObject();
    }
    json.endArray();
    json.endObject();
    json.endArray();
}

} // namespace

QByteArray geminiRequestBody(const QList<APIMessage> &context, const AIConfiguration &config)
{
    requireWritable(config);
    JsonWriter json(expectedBodySize(context, config));
    json.beginObject();
    json.key("contents");
    json.beginArray();
    const ContentWriter writeContent(json);
    for (const APIMessage &message : context)
        std::visit(writeContent, message.entry);
    json.endArray();
    json.key("generationConfig");
    json.beginObject();
    json.key("temperature");
    json.number(config.temperature);
    if (config.maxTokens) {
        json.key("maxOutputTokens");
        json.integer(*config.maxTokens);
    }
    json.endObject();
    if (!config.systemPrompt.isEmpty()) {
        json.key("systemInstruction");
        json.beginObject();
        json.key("parts");
        json.beginArray();
        writeTextPart(json, config.systemPrompt);
        json.endArray();
        json.endObject();
    }
    if (!config.tools.isEmpty())
        writeTools(json, config.tools);
    json.endObject();
    return json.take();
}

void geminiParts(JsonWriter &json, const QString &text, const QList<ChatAttachment> &attachments)
{
    QStringList pieces;
    if (!text.isEmpty())
        pieces.append(text);
    bool hasImages = false;
    json.beginArray();
    for (const ChatAttachment &attachment : attachments) {
        if (attachment.kind != AttachmentKind::image) {
            pieces.append(attachedFileText(attachment));
        } else if (!attachment.data || !attachment.mimeType) {
            pieces.append(imagePlaceholder(attachment));
        } else {
            hasImages = true;
            json.beginObject();
            json.key("inline_data");
            json.beginObject();
            json.member("mime_type", *attachment.mimeType);
            json.key("data");
            json.base64(*attachment.data);
            json.endObject();
            json.endObject();
        }
    }
    const QString joined = pieces.join(u"\n\n"_s);
    if (!joined.isEmpty() || !hasImages)
        writeTextPart(json, joined);
    json.endArray();
}

} // namespace morvane
