#include "providers/OpenAIStreamParser.h"

#include "ProviderTestData.h"
#include "support/LogRecorder.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QByteArray delta(const QByteArray &delta, const QByteArray &finishReason = "null")
{
    return R"(data: {"choices":[{"index":0,"delta":)" + delta + R"(,"finish_reason":)" + finishReason + "}]}";
}

QByteArray content(const QByteArray &text)
{
    return delta(R"({"content":")" + text + R"("})");
}

QByteArray toolCalls(const QByteArray &elements)
{
    return delta(R"({"tool_calls":[)" + elements + "]}");
}

AITurnResult turnOf(const QList<QByteArray> &lines)
{
    OpenAIStreamParser parser;
    feedAll(parser, lines);
    return parser.finish();
}

const QString emptyResponse = u"The AI provider returned an empty response. Please try again."_s;

TEST(OpenAIStreamParser, DeliversEachPieceAndTheWholeText)
{
    OpenAIStreamParser parser;
    const QStringList pieces =
        feedAll(parser, {content("Hel"), content("lo "), content("there"), "data: [DONE]"});
    EXPECT_EQ(pieces, QStringList({"Hel", "lo ", "there"}));
    EXPECT_EQ(parser.finish().text, "Hello there");
}

TEST(OpenAIStreamParser, EndsAtTheDoneMarkerEvenBetweenBlanks)
{
    OpenAIStreamParser parser;
    QStringList pieces;
    EXPECT_EQ(parser.feed(content("a"), pieces), StreamParser::Progress::goesOn);
    EXPECT_EQ(parser.feed("data:  \t[DONE] \t", pieces), StreamParser::Progress::ended);
}

TEST(OpenAIStreamParser, StreamWithoutDoneMarkerIsASuccess)
{
    EXPECT_EQ(turnOf({content("text")}).text, "text");
}

TEST(OpenAIStreamParser, LineWithoutBlankAfterTheColonIsSkipped)
{
    OpenAIStreamParser parser;
    const QByteArray line = content("x").replace("data: ", "data:");
    EXPECT_TRUE(feedAll(parser, {line}).isEmpty());
    EXPECT_EQ(apiErrorOf([&] { parser.finish(); }), emptyResponse);
}

TEST(OpenAIStreamParser, SkipsCommentsEventNamesAndKeepAliveLines)
{
    EXPECT_EQ(turnOf({": keep-alive", "event: message", "id: 1", "data", "DATA: {}", content("a")}).text,
              "a");
}

TEST(OpenAIStreamParser, BlanksAndTabsAroundTheDataAreTrimmed)
{
    const QByteArray line = content("a").replace("data: ", "data: \t ") + " \t";
    EXPECT_EQ(turnOf({line}).text, "a");
}

TEST(OpenAIStreamParser, BrokenChunksDoNotEndTheStream)
{
    EXPECT_EQ(turnOf({content("a"), "data: {\"choices\":[{", "data: ", "data: 17", "data: [1]",
                      "data: \xff\xfe", "data: {} trailing", content("b")})
                  .text,
              "ab");
}

TEST(OpenAIStreamParser, ChunksOfAnotherFormAreSkipped)
{
    EXPECT_EQ(turnOf({"data: {}", R"(data: {"choices":{}})", R"(data: {"choices":[]})",
                      R"(data: {"choices":[1]})", R"(data: {"choices":[{"delta":{"content":"no"}},"x"]})",
                      R"(data: {"choices":[{"delta":[]}]})", R"(data: {"choices":[{"delta":{"content":7}}]})",
                      R"(data: {"choices":[{"delta":{"content":null,"reasoning":"no","role":"assistant"}}]})",
                      content("a")})
                  .text,
              "a");
}

TEST(OpenAIStreamParser, OnlyTheFirstChoiceIsRead)
{
    EXPECT_EQ(turnOf({R"(data: {"choices":[{"delta":{"content":"a"}},{"delta":{"content":"b"}}]})"}).text,
              "a");
}

TEST(OpenAIStreamParser, EmptyContentIsNoPiece)
{
    OpenAIStreamParser parser;
    EXPECT_EQ(feedAll(parser, {content(""), content("a")}), QStringList({"a"}));
}

TEST(OpenAIStreamParser, ErrorObjectEndsTheTurnWithItsMessageEvenAfterText)
{
    OpenAIStreamParser parser;
    QStringList pieces;
    parser.feed(content("some text"), pieces);
    const auto feedError = [&] { parser.feed(R"(data: {"error":{"message":"Overloaded"}})", pieces); };
    EXPECT_EQ(apiErrorOf(feedError), "Overloaded");
}

TEST(OpenAIStreamParser, ErrorObjectWithoutMessageIsUnknown)
{
    OpenAIStreamParser parser;
    QStringList pieces;
    const QString unknown = u"Unknown provider error."_s;
    EXPECT_EQ(apiErrorOf([&] { parser.feed(R"(data: {"error":{"code":5}})", pieces); }), unknown);
    EXPECT_EQ(apiErrorOf([&] { parser.feed(R"(data: {"error":{"message":5}})", pieces); }), unknown);
}

TEST(OpenAIStreamParser, WhatIsNoJsonIsSkippedAndToldToWhoeverListens)
{
    const LogRecorder log;
    EXPECT_EQ(turnOf({content("a"), "data: {broken", content("b")}).text, "ab");
    EXPECT_EQ(log.lines(),
              QStringList(u"morvane.providers: what is no JSON in a stream is passed over; 7 bytes"_s));
}

TEST(OpenAIStreamParser, ErrorThatIsNoObjectIsIgnored)
{
    EXPECT_EQ(turnOf({R"(data: {"error":null,"choices":[{"delta":{"content":"a"}}]})",
                      R"(data: {"error":"x","choices":[{"delta":{"content":"b"}}]})"})
                  .text,
              "ab");
}

TEST(OpenAIStreamParser, StopWithoutContentIsAnEmptyResponse)
{
    EXPECT_EQ(apiErrorOf([] { turnOf({delta("{}", "\"stop\""), "data: [DONE]"}); }), emptyResponse);
}

TEST(OpenAIStreamParser, NothingAtAllIsAnEmptyResponse)
{
    EXPECT_EQ(apiErrorOf([] { turnOf({}); }), emptyResponse);
}

TEST(OpenAIStreamParser, LengthFailsEvenWithTextAndCalls)
{
    const auto turn = [] {
        turnOf({content("text"), toolCalls(R"({"index":0,"function":{"name":"f","arguments":"{}"}})"),
                delta("{}", "\"length\"")});
    };
    EXPECT_EQ(apiErrorOf(turn),
              "The response was cut off because it reached the maximum token limit. Increase "
              "Max tokens in Settings and try again.");
}

TEST(OpenAIStreamParser, ContentFilterIsBlocked)
{
    EXPECT_TRUE(throwsBlocked([] { turnOf({content("text"), delta("{}", "\"content_filter\"")}); }));
}

TEST(OpenAIStreamParser, LaterFinishReasonOverwritesAndEmptyOrNullLeavesIt)
{
    EXPECT_EQ(turnOf({content("a"), delta("{}", "\"length\""), delta("{}", "\"stop\"")}).text, "a");
    EXPECT_TRUE(throwsBlocked(
        [] { turnOf({content("a"), delta("{}", "\"content_filter\""), delta("{}", "\"\""), delta("{}")}); }));
}

TEST(OpenAIStreamParser, FinishReasonOnAChoiceWithoutDeltaIsNotSeen)
{
    EXPECT_EQ(turnOf({content("a"), R"(data: {"choices":[{"finish_reason":"length"}]})"}).text, "a");
}

TEST(OpenAIStreamParser, OtherFinishReasonsHaveNoEffect)
{
    for (const char *reason : {"\"tool_calls\"", "\"function_call\"", "\"weird\""}) {
        const AITurnResult result = turnOf({content("a"), delta("{}", reason)});
        EXPECT_EQ(result.text, "a");
        EXPECT_TRUE(result.toolCalls.isEmpty());
    }
}

TEST(OpenAIStreamParser, FragmentsWithTheSameIndexAreOneCall)
{
    const AITurnResult result =
        turnOf({toolCalls(R"({"index":0,"id":"c1","type":"function","function":{"name":"read_file"}})"),
                toolCalls(R"({"index":0,"function":{"arguments":"{\"pa"}})"),
                toolCalls(R"({"index":0,"function":{"arguments":"th\": \"/x\"}"}})")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0], (AIToolCall{"read_file", objectOf(R"({"path":"/x"})"), "c1", {}}));
}

TEST(OpenAIStreamParser, DeltasWithoutIndexMergeIntoOneCall)
{
    const AITurnResult result =
        turnOf({toolCalls(R"({"id":"a","function":{"name":"f","arguments":"{\"a\":"}})"),
                toolCalls(R"({"index":"1","function":{"arguments":"1"}})"),
                toolCalls(R"({"index":null,"function":{"arguments":"}"}})")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0].arguments, objectOf(R"({"a":1})"));
}

TEST(OpenAIStreamParser, CallsComeOutInTheOrderOfTheirIndex)
{
    const AITurnResult result = turnOf({toolCalls(R"({"index":2,"function":{"name":"second"}})"),
                                        toolCalls(R"({"index":0,"function":{"name":"first"}})"),
                                        toolCalls(R"({"index":-3,"function":{"name":"before"}})")});
    ASSERT_EQ(result.toolCalls.size(), 3);
    EXPECT_EQ(result.toolCalls[0].name, "before");
    EXPECT_EQ(result.toolCalls[1].name, "first");
    EXPECT_EQ(result.toolCalls[2].name, "second");
}

TEST(OpenAIStreamParser, SeveralCallsInOneChunkAreTakenInOrder)
{
    const AITurnResult result = turnOf({toolCalls(R"({"index":0,"function":{"name":"a"}},)"
                                                  R"({"index":1,"function":{"name":"b"}})")});
    ASSERT_EQ(result.toolCalls.size(), 2);
    EXPECT_EQ(result.toolCalls[1].name, "b");
}

TEST(OpenAIStreamParser, LastIdWinsAndSplitNamesAreJoined)
{
    const AITurnResult result = turnOf({toolCalls(R"({"index":0,"id":"one","function":{"name":"read_"}})"),
                                        toolCalls(R"({"index":0,"id":"two","function":{"name":"file"}})"),
                                        toolCalls(R"({"index":0,"id":7})")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0].name, "read_file");
    EXPECT_EQ(result.toolCalls[0].id, "two");
}

TEST(OpenAIStreamParser, CallWithoutIdHasNone)
{
    const AITurnResult result = turnOf({toolCalls(R"({"index":0,"function":{"name":"f"}})")});
    EXPECT_EQ(result.toolCalls.value(0).id, std::nullopt);
}

TEST(OpenAIStreamParser, EmptyArgumentsAreTheEmptyObject)
{
    const AITurnResult result = turnOf({toolCalls(R"({"index":0,"function":{"name":"f","arguments":""}})")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_TRUE(result.toolCalls[0].arguments->empty());
}

TEST(OpenAIStreamParser, ArgumentsThatAreNoObjectAreMalformed)
{
    for (const QByteArray arguments : {"[1]", "{", "null", "{}{}", " "}) {
        const auto turn = [&] {
            turnOf({content("text"), toolCalls(R"({"index":0,"function":{"name":"write_file","arguments":")" +
                                               arguments + R"("}})")});
        };
        EXPECT_EQ(apiErrorOf(turn),
                  "The AI provider returned a malformed tool call for write_file. Please try again.");
    }
}

TEST(OpenAIStreamParser, CallWithoutNameIsDropped)
{
    const AITurnResult result =
        turnOf({content("a"), toolCalls(R"({"index":0,"id":"x","function":{"arguments":"[1]"}})")});
    EXPECT_TRUE(result.toolCalls.isEmpty());
    EXPECT_EQ(apiErrorOf([] { turnOf({toolCalls(R"({"index":0,"id":"x"})")}); }), emptyResponse);
}

TEST(OpenAIStreamParser, TextAndCallsOfOneTurnBothReachTheResult)
{
    const AITurnResult result =
        turnOf({content("I look."), toolCalls(R"({"index":0,"function":{"name":"f","arguments":"{}"}})")});
    EXPECT_EQ(result.text, "I look.");
    EXPECT_EQ(result.toolCalls.size(), 1);
}

TEST(OpenAIStreamParser, ToolCallsThatAreNotAllObjectsAreIgnored)
{
    EXPECT_TRUE(turnOf({content("a"), toolCalls(R"({"function":{"name":"f"}},1)"),
                        delta(R"({"tool_calls":[]})"), delta(R"({"tool_calls":"x"})")})
                    .toolCalls.isEmpty());
}

TEST(OpenAIStreamParser, KeepsUnicodeAndEscapes)
{
    const AITurnResult result = turnOf({content(R"(\u00e9\n\ud83d\ude00)"), content("日本")});
    EXPECT_EQ(result.text, u"é\n😀日本"_s);
}

TEST(OpenAIStreamParser, LinesOfAnySizeFollowOneAnother)
{
    const QByteArray text(17'000, 'x');
    QList<QByteArray> lines(100, content(text));
    EXPECT_EQ(turnOf(lines).text.size(), 100 * text.size());
}

TEST(OpenAIStreamParser, ByteThatIsNoUtf8CostsNoMoreThanItself)
{
    EXPECT_EQ(turnOf({content("a"),
                      content("b\xff"
                              "c"),
                      content("d")})
                  .text,
              u"ab\uFFFDcd"_s);
    EXPECT_EQ(turnOf({content("caf\xe9"), "data: [DONE]"}).text, u"caf\uFFFD"_s);
    EXPECT_EQ(turnOf({content("caf\xe9"), content("s")}).text, u"caf\uFFFDs"_s);
    EXPECT_EQ(turnOf({"data: {\"\xff\":1,\"choices\":[{\"delta\":{\"content\":\"a\"}}]}"}).text, "a");
}

TEST(OpenAIStreamParser, CharacterThatIsCutOverChunksArrivesWhole)
{
    const QByteArray emoji = "😀";
    for (int cut = 1; cut < 4; ++cut)
        EXPECT_EQ(turnOf({content("a" + emoji.first(cut)), content(emoji.sliced(cut) + "b")}).text,
                  u"a😀b"_s);
    EXPECT_EQ(turnOf({content("\xF0"), content("\x9F"), content("\x98"), content("\x80")}).text, u"😀"_s);
    EXPECT_EQ(turnOf({content(R"(a\ud83d)"), content(R"(\ude00b)")}).text, u"a😀b"_s);
}

TEST(OpenAIStreamParser, PiecesHoldWholeCharactersOnly)
{
    OpenAIStreamParser parser;
    EXPECT_EQ(feedAll(parser, {content("\xC3"), content("\xA9"), content(R"(x\ud83d)")}),
              (QStringList{u"é"_s, u"x"_s, u"\uFFFD"_s}));
    EXPECT_EQ(parser.finish().text, u"éx\uFFFD"_s);
}

TEST(OpenAIStreamParser, ArgumentsThatAreCutInACharacterAreWhole)
{
    const AITurnResult result = turnOf(
        {toolCalls("{\"index\":0,\"function\":{\"name\":\"f\",\"arguments\":\"{\\\"a\\\":\\\"\xC3\"}}"),
         toolCalls("{\"index\":0,\"function\":{\"arguments\":\"\xA9\xff\\\"}\"}}")});
    ASSERT_EQ(result.toolCalls.size(), 1);
    EXPECT_EQ(result.toolCalls[0].arguments, objectOf("{\"a\":\"é\uFFFD\"}"));
}

TEST(OpenAIStreamParser, TakesChunksOfAMegabyte)
{
    const QByteArray megabyte(1024 * 1024, 'x');
    EXPECT_EQ(turnOf({content(megabyte), content("!")}).text, QString::fromLatin1(megabyte) + "!");
}

TEST(OpenAIStreamParser, SurvivesDeepNesting)
{
    const QByteArray deep = "data: " + QByteArray(200'000, '[');
    const QByteArray closed = "data: " + QByteArray(200'000, '[') + QByteArray(200'000, ']');
    EXPECT_EQ(turnOf({deep, closed, content("a")}).text, "a");
}

} // namespace
} // namespace morvane
