#include "providers/HttpAIService.h"

#include "TurnFixture.h"
#include "base/Json.h"
#include "support/ScriptedModel.h"

#include <QThread>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class HttpAIServiceTest : public testing::Test {
protected:
    SystemClock clock;
    Scheduler scheduler{clock};
    HttpClient client;
    ScriptedModel model;
    HttpAIService service{client, endpointsAt(QString::fromStdString(model.baseURL()))};

    RunningTurn start(const AIConfiguration &config = configurationFor(ProviderID::openai))
    {
        return RunningTurn(scheduler, service, contextSaying("Hi"), config);
    }
    TurnOutcome turn(ScriptedTurn scripted,
                     const AIConfiguration &config = configurationFor(ProviderID::openai))
    {
        model.appendTurn(std::move(scripted));
        return start(config).wait();
    }
};

const QString emptyResponse = u"The AI provider returned an empty response. Please try again."_s;

TEST_F(HttpAIServiceTest, DeliversEachPieceInOrderAndTheResult)
{
    const TurnOutcome outcome = turn(ScriptedTurn::saying({"Hel", "lo ", "there"}));
    EXPECT_EQ(outcome.pieces, QStringList({"Hel", "lo ", "there"}));
    EXPECT_EQ(outcome.result, (AITurnResult{"Hello there", {}}));
}

TEST_F(HttpAIServiceTest, PiecesComeOnTheMainThreadWhileTheStreamRuns)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"first"});
    scripted.steps.push_back(step::Stall{});
    scripted.steps.push_back(step::Text{"second"});
    model.appendTurn(scripted);
    bool onMainThread = true;
    QStringList pieces;
    auto handle = scheduler.spawn(service.runOpenAITurn(
        contextSaying("Hi"), configurationFor(ProviderID::openai), [&](const QString &piece) {
            onMainThread = onMainThread && QThread::currentThread() == QCoreApplication::instance()->thread();
            pieces.append(piece);
        }));
    ASSERT_TRUE(waitUntil([&] { return pieces.size() == 1; }));
    EXPECT_FALSE(handle.done());
    model.release();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(handle.result().text, "firstsecond");
    EXPECT_TRUE(onMainThread);
}

TEST_F(HttpAIServiceTest, SendsTheBodyAndHeadersOfTheProvider)
{
    AIConfiguration config = configurationFor(ProviderID::openrouter);
    config.systemPrompt = "Be brief.";
    turn(ScriptedTurn::saying({"ok"}), config);
    const ScriptedRequest request = model.requests().at(0);
    EXPECT_EQ(request.target, "/api/v1/chat/completions");
    EXPECT_EQ(request.headers.at("content-type"), "application/json");
    EXPECT_EQ(request.headers.at("authorization"), "Bearer key");
    EXPECT_EQ(request.headers.at("x-title"), "Morvane (macOS)");
    EXPECT_EQ(request.headers.at("http-referer"), Endpoints().productSite.toStdString());
    EXPECT_EQ(request.body, R"({"model":"scripted","messages":[{"role":"system","content":"Be brief."},)"
                            R"({"role":"user","content":"Hi"}],"temperature":0.7,"stream":true})");
}

TEST_F(HttpAIServiceTest, LocalServerNeverGetsAKey)
{
    turn(ScriptedTurn::saying({"ok"}), configurationFor(ProviderID::ollama));
    const ScriptedRequest request = model.requests().at(0);
    EXPECT_EQ(request.target, "/v1/chat/completions");
    EXPECT_FALSE(request.headers.contains("authorization"));
    EXPECT_EQ(request.json.at("keep_alive"), -1);
}

TEST_F(HttpAIServiceTest, CustomProviderIsAskedAtItsBaseURL)
{
    AIConfiguration config = configurationFor(ProviderID::custom);
    config.baseURL = QString::fromStdString(model.baseURL()) + "/deep/v1/ ";
    EXPECT_EQ(turn(ScriptedTurn::saying({"ok"}), config).text(), "ok");
    EXPECT_EQ(model.requests().at(0).target, "/deep/v1/chat/completions");
}

TEST_F(HttpAIServiceTest, UnusableAddressFailsWithoutARequest)
{
    AIConfiguration config = configurationFor(ProviderID::custom);
    config.baseURL = "nowhere";
    EXPECT_TRUE(
        start(config).wait().reason<AIServiceError::Api>().message.startsWith("The custom provider's"));
    EXPECT_TRUE(model.requests().empty());
}

TEST_F(HttpAIServiceTest, ToolCallsInFragmentsReachTheResult)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"I look."});
    scripted.steps.push_back(step::Call{{"read_file", {"{\"pa", "th\":", "\"/x\"}"}, "c1", {}, {}}});
    scripted.steps.push_back(step::Call{{"now", {}, "c2", {}, {}}});
    const TurnOutcome outcome = turn(scripted);
    const AITurnResult expected{
        "I look.",
        {AIToolCall{"read_file", SharedJsonObject(boost::json::object{{"path", "/x"}}), "c1", {}},
         AIToolCall{"now", {}, "c2", {}}}};
    EXPECT_EQ(outcome.result, expected);
}

TEST_F(HttpAIServiceTest, SegmentsMayBeCutAnywhereEvenWithinACharacter)
{
    for (std::size_t bytes : {1u, 2u, 3u, 7u}) {
        ScriptedTurn scripted = ScriptedTurn::saying({"é", "日本", "😀 ok"});
        scripted.segmentBytes = bytes;
        const TurnOutcome outcome = turn(scripted);
        EXPECT_EQ(outcome.pieces, QStringList({u"é"_s, u"日本"_s, u"😀 ok"_s})) << bytes;
    }
}

TEST_F(HttpAIServiceTest, LinesMayEndWithCarriageReturns)
{
    for (const char *lineEnd : {"\r\n", "\r"}) {
        ScriptedTurn scripted = ScriptedTurn::saying({"a", "b"});
        scripted.lineEnd = lineEnd;
        scripted.segmentBytes = 5;
        EXPECT_EQ(turn(scripted).pieces, QStringList({"a", "b"}));
    }
}

TEST_F(HttpAIServiceTest, CommentsAndBrokenChunksAreSkipped)
{
    ScriptedTurn scripted;
    scripted.steps = {step::Raw{": OPENROUTER PROCESSING\n\n"}, step::Text{"a"},
                      step::Raw{"event: ping\ndata: {\"broken\n\n"}, step::Text{"b"}};
    EXPECT_EQ(turn(scripted).text(), "ab");
}

TEST_F(HttpAIServiceTest, ChunksOfAMegabyteArriveWhole)
{
    const std::string megabyte(1024 * 1024, 'x');
    const TurnOutcome outcome = turn(ScriptedTurn::saying({"a", megabyte, "b", megabyte}));
    ASSERT_EQ(outcome.pieces.size(), 4);
    EXPECT_EQ(outcome.pieces[1].size(), 1024 * 1024);
    EXPECT_EQ(outcome.text().size(), 2 * 1024 * 1024 + 2);
}

TEST_F(HttpAIServiceTest, BurstOfTokensArrivesWhole)
{
    ScriptedTurn scripted;
    scripted.steps = {step::Burst{50'000}};
    const TurnOutcome outcome = turn(scripted);
    EXPECT_EQ(outcome.pieces.size(), 50'000);
    EXPECT_EQ(outcome.text(), QString("word ").repeated(50'000));
}

TEST_F(HttpAIServiceTest, StreamWithoutDoneMarkerIsASuccess)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"text"});
    scripted.doneMarker = false;
    EXPECT_EQ(turn(scripted).text(), "text");
}

TEST_F(HttpAIServiceTest, ErrorWithinTheStreamFailsAfterTheText)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"some "});
    scripted.steps.push_back(step::Error{"The model is overloaded."});
    const TurnOutcome outcome = turn(scripted);
    EXPECT_EQ(outcome.pieces, QStringList("some "));
    EXPECT_EQ(outcome.reason<AIServiceError::Api>().message, "The model is overloaded.");
}

TEST_F(HttpAIServiceTest, CutOffAndBlockedAnswersFail)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"text"});
    scripted.finish = "length";
    EXPECT_TRUE(turn(scripted).description().startsWith("The response was cut off"));
    scripted.finish = "content_filter";
    turn(scripted).reason<AIServiceError::Blocked>();
}

TEST_F(HttpAIServiceTest, ResetConnectionIsATransportError)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"a"});
    scripted.steps.push_back(step::Reset{});
    const TurnOutcome outcome = turn(scripted);
    EXPECT_EQ(outcome.transportError, TransportError::Kind::networkConnectionLost);
}

TEST_F(HttpAIServiceTest, RefusedConnectionIsATransportError)
{
    QString nobody;
    {
        const ScriptedModel gone;
        nobody = QString::fromStdString(gone.baseURL());
    }
    HttpAIService lonely(client, endpointsAt(nobody));
    const auto config = configurationFor(ProviderID::openai);
    EXPECT_EQ(RunningTurn(scheduler, lonely, contextSaying("Hi"), config).wait().transportError,
              TransportError::Kind::cannotConnectToHost);
}

TEST_F(HttpAIServiceTest, PageInsteadOfAStreamIsAnEmptyResponse)
{
    const TurnOutcome outcome =
        turn(ScriptedTurn::failing(200, "<!DOCTYPE html>\n<html><body>Sign in to the network</body></html>\n",
                                   {{"Content-Type", "text/html"}}));
    EXPECT_EQ(outcome.reason<AIServiceError::Api>().message, emptyResponse);
}

TEST_F(HttpAIServiceTest, EmptyBodyIsAnEmptyResponse)
{
    EXPECT_EQ(turn(ScriptedTurn::failing(200)).reason<AIServiceError::Api>().message, emptyResponse);
}

TEST_F(HttpAIServiceTest, CancellingEndsAnEndlessStream)
{
    ScriptedTurn scripted;
    scripted.steps = {step::Endless{"word "}};
    model.appendTurn(scripted);
    RunningTurn running = start();
    ASSERT_TRUE(waitUntil([&] { return running.outcome().pieces.size() > 100; }));
    running.cancel();
    EXPECT_TRUE(running.wait().cancelled);
    EXPECT_TRUE(model.waitForAbandoned(1));
}

TEST_F(HttpAIServiceTest, CancellingEndsASilentStream)
{
    ScriptedTurn scripted = ScriptedTurn::saying({"a"});
    scripted.steps.push_back(step::Stall{});
    model.appendTurn(scripted);
    RunningTurn running = start();
    ASSERT_TRUE(waitUntil([&] { return running.outcome().pieces.size() == 1; }));
    running.cancel();
    EXPECT_TRUE(running.wait().cancelled);
    EXPECT_TRUE(model.waitForAbandoned(1));
}

TEST_F(HttpAIServiceTest, CancellingFromWithinAPieceStopsAtTheNextLine)
{
    model.appendTurn(ScriptedTurn::saying({"a", "b", "c"}));
    std::optional<TaskHandle<AITurnResult>> handle;
    int pieces = 0;
    handle = scheduler.spawn(service.runOpenAITurn(contextSaying("Hi"), configurationFor(ProviderID::openai),
                                                   [&](const QString &) {
                                                       ++pieces;
                                                       handle->cancel();
                                                   }));
    ASSERT_TRUE(waitUntil([&] { return handle->done(); }));
    EXPECT_THROW(handle->result(), Cancelled);
    EXPECT_EQ(pieces, 1);
}

TEST_F(HttpAIServiceTest, TurnsRunBesideEachOther)
{
    ScriptedTurn slow = ScriptedTurn::saying({"slow"});
    slow.steps.push_back(step::Stall{});
    model.appendTurn(slow);
    RunningTurn first = start();
    ASSERT_TRUE(waitUntil([&] { return first.outcome().pieces.size() == 1; }));
    EXPECT_EQ(turn(ScriptedTurn::saying({"quick"})).text(), "quick");
    EXPECT_FALSE(first.done());
    model.release();
    EXPECT_EQ(first.wait().text(), "slow");
}

TEST_F(HttpAIServiceTest, StatusThatIsNoSuccessIsAskedOnce)
{
    for (int status : {400, 401, 403, 404, 304}) {
        const std::size_t before = model.requests().size();
        const TurnOutcome outcome = turn(ScriptedTurn::failing(status, R"({"error":{"message":"No."}})"));
        const auto http = outcome.reason<AIServiceError::Http>();
        EXPECT_EQ(http.status, status);
        if (status != 304) // has no body by definition
            EXPECT_EQ(http.body, "{\"error\":{\"message\":\"No.\"}}\n");
        EXPECT_EQ(model.requests().size(), before + 1);
    }
}

TEST_F(HttpAIServiceTest, ErrorBodyIsItsLinesEachWithALineFeed)
{
    const TurnOutcome outcome = turn(ScriptedTurn::failing(404, "one\r\n\r\ntwo\n\nthree"));
    EXPECT_EQ(outcome.reason<AIServiceError::Http>().body, "one\ntwo\nthree\n");
}

TEST_F(HttpAIServiceTest, EndlessErrorBodyIsCutOff)
{
    ScriptedTurn scripted;
    scripted.status = 404;
    scripted.steps = {step::Endless{std::string(1000, 'x')}};
    const QString body = turn(scripted).reason<AIServiceError::Http>().body;
    EXPECT_EQ(body.size(), 1024 * 1024);
    EXPECT_TRUE(model.waitForAbandoned(1));
}

TEST_F(HttpAIServiceTest, ErrorBodyOfOneEndlessLineKeepsItsStatus)
{
    const TurnOutcome outcome = turn(ScriptedTurn::failing(413, std::string(20 * 1024 * 1024, 'x')));
    EXPECT_EQ(outcome.reason<AIServiceError::Http>().status, 413);
}

TEST_F(HttpAIServiceTest, ErrorBodyThatBreaksOffIsATransportError)
{
    ScriptedTurn scripted;
    scripted.status = 404;
    scripted.steps = {step::Raw{"half"}, step::Reset{}};
    EXPECT_EQ(turn(scripted).transportError, TransportError::Kind::networkConnectionLost);
}

TEST_F(HttpAIServiceTest, GeminiTurnSpeaksItsOwnDialect)
{
    AIConfiguration config = configurationFor(ProviderID::gemini);
    config.model = "gemini-3.6-flash";
    ScriptedTurn scripted = ScriptedTurn::saying({"I ", "look."});
    scripted.steps.push_back(step::Call{{"read_file", {R"({"path":"/x"})"}, "c1", {}, "signature"}});
    scripted.segmentBytes = 3;
    const TurnOutcome outcome = turn(scripted, config);
    EXPECT_EQ(outcome.pieces, QStringList({"I ", "look.", ""}));
    const AITurnResult expected{
        "I look.",
        {AIToolCall{"read_file", SharedJsonObject(boost::json::object{{"path", "/x"}}), "c1", "signature"}}};
    EXPECT_EQ(outcome.result, expected);
    const ScriptedRequest request = model.requests().at(0);
    EXPECT_EQ(request.target, "/v1beta/models/gemini-3.6-flash:streamGenerateContent?alt=sse");
    EXPECT_EQ(request.headers.at("x-goog-api-key"), "key");
    EXPECT_FALSE(request.headers.contains("authorization"));
    EXPECT_EQ(request.body, R"({"contents":[{"role":"user","parts":[{"text":"Hi"}]}],)"
                            R"("generationConfig":{"temperature":0.7}})");
}

TEST_F(HttpAIServiceTest, GeminiKeyHeaderIsSentEvenWhenEmpty)
{
    AIConfiguration config = configurationFor(ProviderID::gemini);
    config.apiKey.clear();
    turn(ScriptedTurn::saying({"ok"}), config);
    EXPECT_EQ(model.requests().at(0).headers.at("x-goog-api-key"), "");
}

TEST_F(HttpAIServiceTest, GeminiErrorsAreReadAsThoseOfTheOthers)
{
    const AIConfiguration config = configurationFor(ProviderID::gemini);
    ScriptedTurn failing;
    failing.steps = {step::Error{"Quota."}};
    EXPECT_EQ(turn(failing, config).reason<AIServiceError::Api>().message, "Quota.");
    EXPECT_EQ(turn(ScriptedTurn::failing(400, "bad"), config).reason<AIServiceError::Http>().body, "bad\n");
}

TEST_F(HttpAIServiceTest, LargeImagesGoOutAsBase64)
{
    QByteArray bytes(3'000'000, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 31);
    ChatAttachment image;
    image.kind = AttachmentKind::image;
    image.data = bytes;
    image.mimeType = "image/png";
    model.appendTurn(ScriptedTurn::saying({"seen"}));
    const QList<APIMessage> context{APIMessage{APIMessage::User{"Look", {image}}}};
    RunningTurn running(scheduler, service, context, configurationFor(ProviderID::openai));
    EXPECT_EQ(running.wait().text(), "seen");
    const auto requests = model.requests();
    const auto &url = requests.at(0).json.at("messages").at(0).at("content").at(1).at("image_url").at("url");
    EXPECT_EQ(std::string_view(url.as_string()), "data:image/png;base64," + bytes.toBase64().toStdString());
}

} // namespace
} // namespace morvane
