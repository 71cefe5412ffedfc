#include "mcp/ToolAnswers.h"

#include "base/Json.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace json = boost::json;

json::object parsed(const char *text)
{
    return parseJsonObject(text).value();
}

QString failureOf(std::optional<json::object> message)
{
    const auto result = resultOf(std::move(message));
    return result ? u"no failure"_s : result.error().message();
}

TEST(ToolAnswersTest, ErrorsAreToldInTheServersWords)
{
    EXPECT_EQ(failureOf(parsed(R"({"error":{"code":-1,"message":"no such tool"}})")), "no such tool");
    EXPECT_EQ(failureOf(parsed(R"({"error":{"code":-1}})")), "the server returned an error");
    EXPECT_EQ(failureOf(parsed(R"({"error":{"message":7},"result":{}})")), "the server returned an error");
    EXPECT_EQ(failureOf(std::nullopt), "The MCP server did not respond in time.");
}

TEST(ToolAnswersTest, AResultOfAnotherTypeIsAnEmptySuccess)
{
    EXPECT_EQ(resultOf(parsed(R"({"result":{"a":1}})")).value(), parsed(R"({"a":1})"));
    for (const char *message : {R"({"result":[1]})", R"({"result":null})", R"({})", R"({"error":"text"})",
                                R"({"error":null,"result":7})"}) {
        EXPECT_EQ(resultOf(parsed(message)).value(), json::object()) << message;
    }
}

TEST(ToolAnswersTest, AResultWithoutAToolArrayIsNoToolList)
{
    for (const char *result :
         {"{}", R"({"tools":{}})", R"({"tools":["x"]})", R"({"tools":[{"name":"a"},1]})"})
        EXPECT_EQ(listedTools(parsed(result)).error().message(), "The server did not return a tool list.");
    EXPECT_TRUE(listedTools(parsed(R"({"tools":[]})")).value().isEmpty());
}

TEST(ToolAnswersTest, AToolWithoutNameDisappearsAndOneWithoutSchemaGetsTheDefault)
{
    const auto tools = listedTools(parsed(R"({"nextCursor":"2","tools":[
        {"description":"nameless"},{"name":7},{"name":"a"},
        {"name":"b","description":"does b","inputSchema":{"type":"object","x":[1]}},
        {"name":"c","description":1,"inputSchema":[]}]})"))
                           .value();
    const json::object schema = parsed(R"({"type":"object","properties":{}})");
    EXPECT_EQ(tools, (QList<MCPTool>{{u"a"_s, {}, schema},
                                     {u"b"_s, u"does b"_s, parsed(R"({"type":"object","x":[1]})")},
                                     {u"c"_s, {}, schema}}));
}

TEST(ToolAnswersTest, TextItemsAreJoinedByLineFeedsAndOthersLeftOut)
{
    EXPECT_EQ(toolResult(parsed(R"({"content":[{"type":"text","text":"one"},{"type":"image","data":"…"},
        {"type":"text","text":"twö"},{"type":"text"},{"text":"typeless"}],"structuredContent":{"a":1}})")),
              ToolResult(u"one\ntwö"_s));
}

TEST(ToolAnswersTest, ContentOfOneImageOnlyIsNoOutput)
{
    EXPECT_EQ(toolResult(parsed(R"({"content":[{"type":"image","data":"x"}]})")),
              ToolResult(u"(no output)"_s));
    EXPECT_EQ(toolResult(parsed(R"({"content":[{"type":"image","data":"x"}],"isError":true})")),
              ToolResult(u"Error: the tool reported a failure"_s));
    EXPECT_EQ(toolResult(parsed("{}")), ToolResult(u"(no output)"_s));
    EXPECT_EQ(toolResult(parsed(R"({"content":["x",{"type":"text","text":"t"}]})")).text, "(no output)");
}

TEST(ToolAnswersTest, AToolsFailureIsAResultAndNotAThrow)
{
    EXPECT_EQ(toolResult(parsed(R"({"isError":true,"content":[{"type":"text","text":"no disk"}]})")),
              ToolResult(u"Error: no disk"_s));
    EXPECT_EQ(toolResult(parsed(R"({"isError":"true","content":[{"type":"text","text":"fine"}]})")),
              ToolResult(u"fine"_s))
        << "only the boolean counts";
}

TEST(ToolAnswersTest, LongTextsOfAnyScriptComeOutAsTheyWere)
{
    // Of one to four bytes, so that the pieces that are read cut characters at every place.
    const QString mixed = u"plain ascii, Grüße, 日本語, 😀, "_s.repeated(2'000);
    for (const QString &text : {mixed, u"x"_s + mixed, u"xy"_s + mixed, u"xyz"_s + mixed, u"\uFEFFmarked"_s,
                                QString(100'000, u'a'), QString(100'000, u'語'), u"a\0b"_s}) {
        const json::object item{{"type", "text"}, {"text", jsonFromText(text)}};
        EXPECT_EQ(toolResult({{"content", json::array{item}}}).text, text);
        EXPECT_EQ(toolResult({{"content", json::array{item, item, item}}}).text,
                  text + u'\n' + text + u'\n' + text);
        EXPECT_EQ(toolResult({{"content", json::array{item}}, {"isError", true}}).text, u"Error: "_s + text);
    }
}

TEST(ToolAnswersTest, TwoEmptyTextsAreALineEnd)
{
    EXPECT_EQ(toolResult(parsed(R"({"content":[{"type":"text","text":""}]})")).text, "(no output)");
    EXPECT_EQ(toolResult(parsed(R"({"content":[{"type":"text","text":""},{"type":"text","text":""}]})")).text,
              "\n");
}

} // namespace
} // namespace morvane
