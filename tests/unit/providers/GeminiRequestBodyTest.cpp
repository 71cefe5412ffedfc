#include "providers/GeminiRequestBody.h"

#include "ProviderTestData.h"

#include <cmath>

namespace morvane {
namespace {

QByteArray partsJson(const QString &text, const QList<ChatAttachment> &attachments)
{
    JsonWriter json(0);
    geminiParts(json, text, attachments);
    return json.take();
}

QByteArray contentsOf(const QList<APIMessage> &context)
{
    const QByteArray body = geminiRequestBody(context, configuration(ProviderID::gemini));
    return serializeJson(jsonOf(body).at("contents").as_array());
}

TEST(GeminiRequestBody, SmallestBodyHasTwoKeys)
{
    EXPECT_EQ(
        geminiRequestBody({userMessage("Hi")}, configuration(ProviderID::gemini)),
        R"({"contents":[{"role":"user","parts":[{"text":"Hi"}]}],"generationConfig":{"temperature":0.7}})");
}

TEST(GeminiRequestBody, FullBodyHasEveryKeyInOrder)
{
    AIConfiguration config = configuration(ProviderID::gemini);
    config.systemPrompt = "Be brief.";
    config.maxTokens = 60;
    config.temperature = 0.3;
    config.tools = {AITool{"now", "The time.", objectOf(R"({"type":"object","description":"kept"})")}};
    EXPECT_EQ(geminiRequestBody({}, config),
              R"({"contents":[],"generationConfig":{"temperature":0.3,"maxOutputTokens":60},)"
              R"("systemInstruction":{"parts":[{"text":"Be brief."}]},)"
              R"("tools":[{"functionDeclarations":[{"name":"now","description":"The time.",)"
              R"("parameters":{"type":"object","description":"kept"}}]}]})");
}

TEST(GeminiRequestBody, EntriesOfTheContextBecomeOneContentEach)
{
    EXPECT_EQ(contentsOf({
                  APIMessage{APIMessage::Assistant{"I look."}},
                  APIMessage{APIMessage::FunctionCall{"c1", "f", objectOf(R"({"a":1})"), "sig"}},
                  APIMessage{APIMessage::FunctionResponse{"c1", "f", "done"}},
              }),
              R"([{"role":"model","parts":[{"text":"I look."}]},)"
              R"({"role":"model","parts":[{"functionCall":{"name":"f","args":{"a":1},"id":"c1"},)"
              R"("thoughtSignature":"sig"}]},)"
              R"({"role":"user","parts":[{"functionResponse":{"name":"f","response":{"result":"done"}}}]}])");
}

TEST(GeminiRequestBody, CallWithoutIdAndSignatureSendsNeither)
{
    EXPECT_EQ(contentsOf({APIMessage{APIMessage::FunctionCall{"", "f", {}, {}}},
                          APIMessage{APIMessage::FunctionCall{"", "g", {}, ""}}}),
              R"([{"role":"model","parts":[{"functionCall":{"name":"f","args":{}}}]},)"
              R"({"role":"model","parts":[{"functionCall":{"name":"g","args":{}}}]}])");
}

TEST(GeminiRequestBody, TemperatureThatIsNoNumberIsAnError)
{
    AIConfiguration config = configuration(ProviderID::gemini);
    config.temperature = std::nan("");
    EXPECT_FALSE(apiErrorOf([&] { geminiRequestBody({}, config); }).isEmpty());
}

TEST(GeminiParts, ImageWithoutTextIsExactlyOnePart)
{
    EXPECT_EQ(partsJson("", {image("a.png", "BYTES", "image/png")}),
              R"([{"inline_data":{"mime_type":"image/png","data":"QllURVM="}}])");
}

TEST(GeminiParts, ImagesStandBeforeTheText)
{
    EXPECT_EQ(
        partsJson("Look", {attachment(AttachmentKind::pdf, "a.pdf", "pages"), image("1", "1", "image/png")}),
        R"([{"inline_data":{"mime_type":"image/png","data":"MQ=="}},)"
        R"({"text":"Look\n\n[Attached document a.pdf]\npages\n[End of a.pdf]"}])");
}

TEST(GeminiParts, ImageWithoutTypeOrBytesIsABracketedPiece)
{
    ChatAttachment noType = image("a.png", "x", "image/png");
    noType.mimeType.reset();
    EXPECT_EQ(partsJson("", {noType, attachment(AttachmentKind::image, "b.png")}),
              R"([{"text":"[Image attached: a.png]\n\n[Image attached: b.png]"}])");
}

TEST(GeminiParts, NothingIsOneEmptyText)
{
    EXPECT_EQ(partsJson("", {}), R"([{"text":""}])");
}

} // namespace
} // namespace morvane
