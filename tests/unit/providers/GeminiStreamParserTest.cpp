#include "providers/GeminiStreamParser.h"

#include "ProviderTestData.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QByteArray parts(const QByteArray &parts, const QByteArray &more = {})
{
    return R"(data: {"candidates":[{"content":{"parts":[)" + parts + R"(],"role":"model"})" + more + "}]}";
}

AITurnResult turnOf(const QList<QByteArray> &lines)
{
    GeminiStreamParser parser;
    feedAll(parser, lines);
    return parser.finish();
}

const QString emptyResponse = u"The AI provider returned an empty response. Please try again."_s;

TEST(GeminiStreamParser, DeliversEveryTextPartEvenAnEmptyOne)
{
    GeminiStreamParser parser;
    const QStringList pieces =
        feedAll(parser, {parts(R"({"text":"Hel"},{"text":""})"), parts(R"({"text":"lo","thought":true})")});
    EXPECT_EQ(pieces, QStringList({"Hel", "", "lo"}));
    EXPECT_EQ(parser.finish().text, "Hello");
}

TEST(GeminiStreamParser, TextThenStopWithEmptyPartsIsASuccess)
{
    EXPECT_EQ(turnOf({parts(R"({"text":"a"})"), parts("", R"(,"finishReason":"STOP")")}).text, "a");
}

TEST(GeminiStreamParser, BlockWithoutContentIsSkipped)
{
    const QByteArray safety = R"(data: {"candidates":[{"finishReason":"SAFETY"}]})";
    EXPECT_EQ(apiErrorOf([&] { turnOf({safety}); }), emptyResponse);
    EXPECT_EQ(turnOf({parts(R"({"text":"a"})"), safety}).text, "a");
}

TEST(GeminiStreamParser, BlockWithPartsIsBlocked)
{
    for (const QByteArray reason : {"SAFETY", "BLOCKED", "PROHIBITED_CONTENT"}) {
        EXPECT_TRUE(throwsBlocked([&] {
            turnOf({parts(R"({"text":"a"})"), parts("", R"(,"finishReason":")" + reason + R"(")")});
        })) << reason.constData();
    }
}

TEST(GeminiStreamParser, MaxTokensWithTextReturnsTheText)
{
    EXPECT_EQ(turnOf({parts(R"({"text":"cut"})", R"(,"finishReason":"MAX_TOKENS")")}).text, "cut");
    EXPECT_EQ(turnOf({parts(R"({"text":"cut"})", R"(,"finishReason":"RECITATION")")}).text, "cut");
}

TEST(GeminiStreamParser, LaterFinishReasonOverwritesAndAnEmptyOneLeavesIt)
{
    EXPECT_EQ(turnOf({parts(R"({"text":"a"})", R"(,"finishReason":"SAFETY")"),
                      parts("", R"(,"finishReason":"STOP")")})
                  .text,
              "a");
    EXPECT_TRUE(throwsBlocked([] {
        turnOf({parts(R"({"text":"a"})", R"(,"finishReason":"SAFETY")"), parts("", R"(,"finishReason":"")")});
    }));
}

TEST(GeminiStreamParser, CallWithoutArgumentsHasEmptyOnes)
{
    const AITurnResult result = turnOf({parts(R"({"functionCall":{"name":"now"}})")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0], (AIToolCall{"now", {}, {}, {}}));
}

TEST(GeminiStreamParser, CallWithoutIdHasNoneInTheResult)
{
    const AITurnResult result = turnOf(
        {parts(R"({"functionCall":{"name":"f","args":{"a":1}}},{"functionCall":{"name":"g","id":"g"}})")});
    ASSERT_EQ(result.toolCalls.size(), 2);
    EXPECT_EQ(result.toolCalls[0].id, std::nullopt);
    EXPECT_EQ(result.toolCalls[1].id, std::nullopt);
}

TEST(GeminiStreamParser, EmptyIdCountsAsNone)
{
    const AITurnResult result =
        turnOf({parts(R"({"functionCall":{"name":"f","id":""}},{"functionCall":{"name":"g","id":""}})")});
    ASSERT_EQ(result.toolCalls.size(), 2);
    EXPECT_EQ(result.toolCalls[1], (AIToolCall{"g", {}, {}, {}}));
}

TEST(GeminiStreamParser, SameIdMergesArgumentsAndKeepsTheFirstSignature)
{
    const AITurnResult result = turnOf({
        parts(R"({"functionCall":{"name":"f","id":"1","args":{"a":{"x":1},"l":[1,2]}}})"),
        parts(R"({"functionCall":{"name":"f","id":"1","args":{"a":{"y":2}}},"thoughtSignature":"first"})"),
        parts(R"({"functionCall":{"name":"other","id":"1","args":{"l":[3]}},"thoughtSignature":"second"})"),
    });
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0],
              (AIToolCall{"f", objectOf(R"({"a":{"x":1,"y":2},"l":[3]})"), "1", "first"}));
}

TEST(GeminiStreamParser, CallsOfOneToolWithoutIdMergeIntoOne)
{
    const AITurnResult result = turnOf({parts(R"({"functionCall":{"name":"f","args":{"a":1}}},)"
                                              R"({"functionCall":{"name":"f","args":{"a":2,"b":3}}})")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0].arguments, objectOf(R"({"a":2,"b":3})"));
}

TEST(GeminiStreamParser, CallsKeepTheOrderOfFirstAppearance)
{
    const AITurnResult result = turnOf({parts(R"({"functionCall":{"name":"z","id":"9"}})"),
                                        parts(R"({"functionCall":{"name":"a","id":"1"}})"),
                                        parts(R"({"functionCall":{"name":"z","id":"9","args":{"k":1}}})")});
    ASSERT_EQ(result.toolCalls.size(), 2);
    EXPECT_EQ(result.toolCalls[0].name, "z");
    EXPECT_EQ(result.toolCalls[1].name, "a");
}

TEST(GeminiStreamParser, PartWithTextAndCallIsTextOnly)
{
    const AITurnResult result = turnOf({parts(R"({"text":"t","functionCall":{"name":"f"}})")});
    EXPECT_EQ(result.text, "t");
    EXPECT_TRUE(result.toolCalls.isEmpty());
}

TEST(GeminiStreamParser, SignatureOnATextPartIsIgnored)
{
    const AITurnResult result =
        turnOf({parts(R"({"text":"t","thoughtSignature":"s"},{"functionCall":{"name":"f"}})")});
    EXPECT_EQ(result.toolCalls.value(0).thoughtSignature, std::nullopt);
}

TEST(GeminiStreamParser, CallWithoutNameIsIgnored)
{
    EXPECT_EQ(apiErrorOf([] {
                  turnOf({parts(R"({"functionCall":{"name":"","id":"1"}},{"functionCall":{"args":{}}},)"
                                R"({"functionCall":"f"})")});
              }),
              emptyResponse);
}

TEST(GeminiStreamParser, ErrorObjectEndsTheTurnWithItsMessage)
{
    GeminiStreamParser parser;
    QStringList pieces;
    parser.feed(parts(R"({"text":"a"})"), pieces);
    EXPECT_EQ(apiErrorOf([&] { parser.feed(R"(data: {"error":{"message":"Quota"}})", pieces); }), "Quota");
    EXPECT_EQ(apiErrorOf([&] { parser.feed(R"(data: {"error":{}})", pieces); }), "Unknown Gemini error.");
}

TEST(GeminiStreamParser, LinesOfAnotherFormAreSkipped)
{
    EXPECT_EQ(
        turnOf({": comment", "data:{}", "data: [DONE]", "data: {", "data: 1", "data: {}",
                R"(data: {"candidates":[]})", R"(data: {"candidates":[1]})", R"(data: {"candidates":{}})",
                R"(data: {"candidates":[{"content":[]}]})", R"(data: {"candidates":[{"content":{}}]})",
                R"(data: {"candidates":[{"content":{"parts":[{"text":"no"},1]}}]})",
                R"(data: {"candidates":[{"content":{"parts":{"text":"no"}}}]})",
                parts(R"({"text":null},{"other":1},{"text":"a"})")})
            .text,
        "a");
}

TEST(GeminiStreamParser, OnlyTheFirstCandidateIsRead)
{
    EXPECT_EQ(turnOf({R"(data: {"candidates":[{"content":{"parts":[{"text":"a"}]}},)"
                      R"({"content":{"parts":[{"text":"b"}]}}]})"})
                  .text,
              "a");
}

TEST(GeminiStreamParser, ArgumentsKeepTheKindAndExactnessOfNumbers)
{
    const AITurnResult result =
        turnOf({parts(R"({"functionCall":{"name":"f","args":{"i":3,"d":0.1,"e":1.7976931348623157e308}}})")});
    const auto &arguments = result.toolCalls.value(0).arguments.get();
    EXPECT_TRUE(arguments.at("i").is_int64());
    EXPECT_EQ(arguments.at("d").as_double(), 0.1);
    EXPECT_EQ(arguments.at("e").as_double(), 1.7976931348623157e308);
}

TEST(GeminiStreamParser, LinesOfAnySizeFollowOneAnother)
{
    const QByteArray text(17'000, 'x');
    const QList<QByteArray> lines(100, parts(R"({"text":")" + text + R"("})"));
    EXPECT_EQ(turnOf(lines).text.size(), 100 * text.size());
}

TEST(GeminiStreamParser, CharactersThatAreCutAreWholeAndOtherBytesAreReplaced)
{
    GeminiStreamParser parser;
    const QStringList pieces =
        feedAll(parser, {parts("{\"text\":\"a\xF0\x9F\"}"), parts("{\"text\":\"\x98\x80\"}"),
                         parts("{\"text\":\"b\xff\"}"), parts("{\"text\":\"caf\xe9\"}")});
    EXPECT_EQ(pieces, (QStringList{u"a"_s, u"😀"_s, u"b\uFFFD"_s, u"caf"_s, u"\uFFFD"_s}));
    EXPECT_EQ(parser.finish().text, pieces.join(QString()));
}

TEST(GeminiStreamParser, ArgumentsHoldUtf8Only)
{
    const AITurnResult result =
        turnOf({parts("{\"functionCall\":{\"name\":\"f\",\"args\":{\"a\":[\"\xff\",{\"b\":\"x\xfe\"}],"
                      "\"c\":\"\\ud83d\",\"d\":0.1}}}")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0].arguments->at("a"), jsonOf("[\"\uFFFD\",{\"b\":\"x\uFFFD\"}]"));
    EXPECT_EQ(result.toolCalls[0].arguments->at("d"), 0.1);
    EXPECT_TRUE(QByteArrayView(serializeJson(result.toolCalls[0].arguments.get())).isValidUtf8());
}

} // namespace
} // namespace morvane
