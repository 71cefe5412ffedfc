#include "providers/OpenAIRequestBody.h"

#include "ProviderTestData.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QByteArray userMessageJson(const QString &text, const QList<ChatAttachment> &attachments,
                           ImageDelivery images)
{
    JsonWriter json(0);
    openAIUserMessage(json, text, attachments, images);
    return json.take();
}

QByteArray messagesOf(const QList<APIMessage> &context, const AIConfiguration &config)
{
    return serializeJson(jsonOf(openAIBody(context, config)).at("messages").as_array());
}

AITool readFileTool()
{
    return AITool{
        "read_file", "Reads a file.",
        objectOf(R"({"type":"object","properties":{"path":{"type":"string","description":"The path"}},)"
                 R"("required":["path"]})")};
}

TEST(OpenAIBody, SmallestBodyHasFourKeysInOrder)
{
    EXPECT_EQ(
        openAIBody({userMessage("Hi")}, configuration(ProviderID::openai, "gpt-5")),
        R"({"model":"gpt-5","messages":[{"role":"user","content":"Hi"}],"temperature":0.7,"stream":true})");
}

TEST(OpenAIBody, FullBodyHasEveryKeyInOrder)
{
    AIConfiguration config = configuration(ProviderID::ollama, "qwen2.5");
    config.systemPrompt = "Be brief.";
    config.maxTokens = 400;
    config.temperature = 1;
    config.tools = {readFileTool()};
    EXPECT_EQ(
        openAIBody({userMessage("Hi")}, config),
        R"({"model":"qwen2.5","messages":[{"role":"system","content":"Be brief."},)"
        R"({"role":"user","content":"Hi"}],"temperature":1,"stream":true,"max_tokens":400,)"
        R"("tools":[{"type":"function","function":{"name":"read_file","description":"Reads a file.",)"
        R"("parameters":{"type":"object","properties":{"path":{"type":"string"}},"required":["path"]}}}],)"
        R"("tool_choice":"auto","keep_alive":-1})");
}

TEST(OpenAIBody, OnlyOllamaGetsKeepAliveAndCompactSchemas)
{
    for (ProviderID provider : allProviders) {
        AIConfiguration config = configuration(provider);
        config.tools = {readFileTool()};
        const auto body = jsonOf(openAIBody({}, config)).as_object();
        const bool local = provider == ProviderID::ollama;
        EXPECT_EQ(body.contains("keep_alive"), local);
        const auto parameters = serializeJson(body.at("tools").at(0).at("function").at("parameters"));
        EXPECT_EQ(parameters.contains("description"), !local);
    }
}

TEST(OpenAIBody, EntriesOfTheContextBecomeOneMessageEach)
{
    const QList<APIMessage> context{
        APIMessage{APIMessage::Assistant{"I look."}},
        APIMessage{
            APIMessage::FunctionCall{"c1", "read_file", objectOf(R"({"path":"/x","n":2})"), "signature"}},
        APIMessage{APIMessage::FunctionCall{"c2", "now", {}, {}}},
        APIMessage{APIMessage::FunctionResponse{"c1", "read_file", "text\nof file"}},
        APIMessage{APIMessage::FunctionResponse{"c2", "now", ""}},
    };
    EXPECT_EQ(messagesOf(context, configuration(ProviderID::groq)),
              R"([{"role":"assistant","content":"I look."},)"
              R"({"role":"assistant","content":null,"tool_calls":[{"id":"c1","type":"function",)"
              R"("function":{"name":"read_file","arguments":"{\"path\":\"/x\",\"n\":2}"}}]},)"
              R"({"role":"assistant","content":null,"tool_calls":[{"id":"c2","type":"function",)"
              R"("function":{"name":"now","arguments":"{}"}}]},)"
              R"({"role":"tool","tool_call_id":"c1","content":"text\nof file"},)"
              R"({"role":"tool","tool_call_id":"c2","content":""}])");
}

TEST(OpenAIBody, ImagesGoToOpenAIAlwaysAndElsewhereByTheModelsName)
{
    const QList<APIMessage> context{userMessage("See", {image("a.png", "PNG", "image/png")})};
    const auto sendsImage = [&](ProviderID provider, const QString &model) {
        return messagesOf(context, configuration(provider, model)).contains("image_url");
    };
    EXPECT_TRUE(sendsImage(ProviderID::openai, "plain"));
    for (ProviderID provider : {ProviderID::openrouter, ProviderID::groq, ProviderID::ollama, ProviderID::zen,
                                ProviderID::custom}) {
        EXPECT_FALSE(sendsImage(provider, "plain"));
        EXPECT_TRUE(sendsImage(provider, "LLaVA"));
    }
}

TEST(OpenAIBody, TemperatureThatIsNoNumberIsAnError)
{
    AIConfiguration config = configuration(ProviderID::openai);
    for (double temperature : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        config.temperature = temperature;
        EXPECT_FALSE(apiErrorOf([&] { openAIBody({}, config); }).isEmpty());
    }
}

TEST(OpenAIBody, IsValidUtf8JsonForEveryText)
{
    QString text;
    for (char16_t unit = 0; unit < 0x300; ++unit)
        text.append(QChar(unit));
    text += u"\u2028😀"_s;
    const auto body = jsonOf(openAIBody({userMessage(text)}, configuration(ProviderID::openai)));
    EXPECT_EQ(textFromJson(body.at("messages").at(0).at("content").as_string()), text);
}

TEST(OpenAIBody, LoneSurrogateDoesNotBreakTheBody)
{
    const QString broken = QString(QChar(0xD83D)) + "x";
    const auto body = jsonOf(openAIBody({userMessage(broken)}, configuration(ProviderID::openai)));
    EXPECT_TRUE(textFromJson(body.at("messages").at(0).at("content").as_string()).endsWith('x'));
}

TEST(OpenAIUserMessage, PlainTextIsAString)
{
    EXPECT_EQ(userMessageJson("Hi", {}, ImageDelivery::asImages), R"({"role":"user","content":"Hi"})");
    EXPECT_EQ(userMessageJson("", {}, ImageDelivery::asNames), R"({"role":"user","content":""})");
}

TEST(OpenAIUserMessage, DocumentsAndFilesStandInBrackets)
{
    EXPECT_EQ(userMessageJson("Read",
                              {attachment(AttachmentKind::pdf, "a.pdf", "pages"),
                               attachment(AttachmentKind::text, "b.txt", "lines")},
                              ImageDelivery::asNames),
              R"({"role":"user","content":"Read\n\n[Attached document a.pdf]\npages\n[End of a.pdf]\n\n)"
              R"([Attached file b.txt]\nlines\n[End of b.txt]"})");
}

TEST(OpenAIUserMessage, WithoutSightOnlyTheNameOfAnImageGoesOut)
{
    const QByteArray json =
        userMessageJson("", {image("cat.png", "BYTES", "image/png")}, ImageDelivery::asNames);
    EXPECT_EQ(json, R"({"role":"user","content":"[Image attached: cat.png]"})");
    EXPECT_FALSE(json.contains(QByteArray("BYTES").toBase64()));
}

TEST(OpenAIUserMessage, ImageWithoutTextHasOnlyTheImagePart)
{
    EXPECT_EQ(
        userMessageJson("", {image("cat.png", "BYTES", "image/png")}, ImageDelivery::asImages),
        R"({"role":"user","content":[{"type":"image_url","image_url":{"url":"data:image/png;base64,QllURVM="}}]})");
}

TEST(OpenAIUserMessage, TextComesBeforeTheImagesAndFilesJoinIt)
{
    EXPECT_EQ(
        userMessageJson("Look",
                        {image("1.png", "1", "image/png"), attachment(AttachmentKind::text, "f", "t"),
                         image("2.jpg", "22", "image/jpeg")},
                        ImageDelivery::asImages),
        R"({"role":"user","content":[{"type":"text","text":"Look\n\n[Attached file f]\nt\n[End of f]"},)"
        R"({"type":"image_url","image_url":{"url":"data:image/png;base64,MQ=="}},)"
        R"({"type":"image_url","image_url":{"url":"data:image/jpeg;base64,MjI="}}]})");
}

TEST(OpenAIUserMessage, ImageThatLacksBytesOrTypeIsDropped)
{
    ChatAttachment noType = image("a", "x", "image/png");
    noType.mimeType.reset();
    EXPECT_EQ(userMessageJson("T", {attachment(AttachmentKind::image, "b"), noType}, ImageDelivery::asImages),
              R"({"role":"user","content":[{"type":"text","text":"T"}]})");
}

TEST(OpenAIUserMessage, Base64OfALargeImageIsExactAndWithoutLineBreaks)
{
    QByteArray bytes(300'001, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 7);
    const QByteArray json = userMessageJson("", {image("a", bytes, "image/png")}, ImageDelivery::asImages);
    EXPECT_TRUE(json.contains("base64," + bytes.toBase64() + "\""));
}

} // namespace
} // namespace morvane
