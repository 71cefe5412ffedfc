#include "TurnFixture.h"
#include "providers/HttpModelCatalog.h"
#include "support/FakeClock.h"
#include "support/LogRecorder.h"
#include "support/RawHttpServer.h"
#include "support/ScriptedModel.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The lists of a scripted server that stands for every provider.
class ModelCatalogTest : public testing::Test {
protected:
    static ModelScript listing(const std::string &route, const std::string &body, int status = 200)
    {
        ModelScript script;
        script.routes = {{"GET " + route, ScriptedTurn::failing(status, body)}};
        return script;
    }

    CatalogModels load(const QString &origin, ProviderID provider, const QString &key = {},
                       const QString &baseURL = {})
    {
        HttpModelCatalog catalog(client, endpointsAt(origin));
        return runTask(scheduler, catalog.load(provider, key, baseURL));
    }

    CatalogModels load(const ScriptedModel &server, ProviderID provider, const QString &key = {},
                       const QString &baseURL = {})
    {
        return load(QString::fromStdString(server.baseURL()), provider, key, baseURL);
    }

    static QString origin(const RawHttpServer &server) { return u"http://127.0.0.1:%1"_s.arg(server.port()); }

    /// The value of a header of the only request; "(none)" if it was not sent.
    static std::string header(const ScriptedModel &server, const std::string &name)
    {
        const auto requests = server.requests();
        EXPECT_EQ(requests.size(), 1u);
        if (requests.empty())
            return {};
        const auto field = requests[0].headers.find(name);
        return field == requests[0].headers.end() ? "(none)" : field->second;
    }

    FakeClock clock; // moved only where a test waits for a limit
    Scheduler scheduler{clock};
    HttpClient client;
};

const QList<CatalogModel> oneModel{{u"m"_s, std::nullopt}};
constexpr auto oneModelReply = R"({"data":[{"id":"m"}]})";

TEST_F(ModelCatalogTest, OpenRouterIsAskedWithoutTheKey)
{
    const ScriptedModel server(
        listing("/api/v1/models", R"({"data":[{"id":"m","pricing":{"prompt":"0","completion":"0"}}]})"));
    EXPECT_EQ(load(server, ProviderID::openrouter, "secret"), QList<CatalogModel>({{"m", true}}));
    EXPECT_EQ(header(server, "authorization"), "(none)");
}

TEST_F(ModelCatalogTest, GroqIsAskedWithTheKeyAsBearer)
{
    const ScriptedModel server(listing("/openai/v1/models", R"({"data":[{"id":"m"},{"id":"whisper"}]})"));
    EXPECT_EQ(load(server, ProviderID::groq, "secret"), QList<CatalogModel>({{"m", true}}));
    EXPECT_EQ(header(server, "authorization"), "Bearer secret");
}

TEST_F(ModelCatalogTest, OpenAIIsAskedWithTheKeyAsBearer)
{
    const ScriptedModel server(listing("/v1/models", oneModelReply));
    EXPECT_EQ(load(server, ProviderID::openai, "secret"), QList<CatalogModel>({{"m", false}}));
    EXPECT_EQ(header(server, "authorization"), "Bearer secret");
}

TEST_F(ModelCatalogTest, GeminiIsAskedWithItsOwnHeader)
{
    const ScriptedModel server(
        listing("/v1beta/models",
                R"({"models":[{"name":"models/m","supportedGenerationMethods":["generateContent"]}]})"));
    EXPECT_EQ(load(server, ProviderID::gemini, "secret"), QList<CatalogModel>({{"m", true}}));
    EXPECT_EQ(header(server, "x-goog-api-key"), "secret");
    EXPECT_EQ(header(server, "authorization"), "(none)");
    EXPECT_EQ(server.requests()[0].target, "/v1beta/models");
}

TEST_F(ModelCatalogTest, TheLocalServerIsAskedForItsTagsWithoutAKey)
{
    ModelScript script;
    script.models = {"llama3.1:latest", "qwen2.5:14b"};
    const ScriptedModel server(script);
    EXPECT_EQ(load(server, ProviderID::ollama, "secret"),
              QList<CatalogModel>({{"llama3.1", true}, {"qwen2.5:14b", true}}));
    EXPECT_EQ(header(server, "authorization"), "(none)");
}

TEST_F(ModelCatalogTest, ZenIsAskedWithoutTheKey)
{
    const ScriptedModel server(listing("/zen/v1/models", R"({"data":[{"id":"paid"},{"id":"x-free"}]})"));
    EXPECT_EQ(load(server, ProviderID::zen, "secret"),
              QList<CatalogModel>({{"x-free", true}, {"paid", false}}));
    EXPECT_EQ(header(server, "authorization"), "(none)");
}

TEST_F(ModelCatalogTest, ACustomServerIsAskedBelowItsBaseURL)
{
    const ScriptedModel server(listing("/base/models", oneModelReply));
    const QString base = QString::fromStdString(server.baseURL()) + "/base/chat/completions";
    EXPECT_EQ(load(server, ProviderID::custom, "secret", base), oneModel);
    EXPECT_EQ(header(server, "authorization"), "Bearer secret");
}

TEST_F(ModelCatalogTest, AnEmptyKeyIsNotSent)
{
    for (const auto &[provider, route] :
         {std::pair{ProviderID::groq, "/openai/v1/models"}, std::pair{ProviderID::openai, "/v1/models"},
          std::pair{ProviderID::gemini, "/v1beta/models"}}) {
        const ScriptedModel server(listing(route, oneModelReply));
        load(server, provider);
        EXPECT_EQ(header(server, "authorization"), "(none)") << route;
        EXPECT_EQ(header(server, "x-goog-api-key"), "(none)") << route;
    }
}

TEST_F(ModelCatalogTest, ACustomServerWithAnEmptyListGivesNone)
{
    const ScriptedModel server(listing("/v1/models", R"({"data":[]})"));
    EXPECT_EQ(load(server, ProviderID::custom, {}, QString::fromStdString(server.baseURL()) + "/v1"),
              std::nullopt);
    EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(ModelCatalogTest, NoBaseURLAsksNobody)
{
    const ScriptedModel server;
    for (const char *baseURL : {"", "127.0.0.1", "ftp://127.0.0.1/v1"})
        EXPECT_EQ(load(server, ProviderID::custom, {}, baseURL), std::nullopt);
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(ModelCatalogTest, OnlyStatus200Counts)
{
    for (const int status : {201, 204, 299, 401, 404, 429, 500, 503}) {
        const ScriptedModel server(listing("/v1/models", oneModelReply, status));
        const LogRecorder log;
        EXPECT_EQ(load(server, ProviderID::openai, "k"), std::nullopt) << status;
        EXPECT_EQ(log.lines(), QStringList(u"morvane.providers: no list of models: status %1"_s.arg(status)));
        EXPECT_EQ(server.requests().size(), 1u) << "asked again after " << status;
    }
}

TEST_F(ModelCatalogTest, AServerThatIsNotThereGivesNone)
{
    quint16 port = 0;
    {
        const ScriptedModel server;
        port = server.port();
    }
    EXPECT_EQ(load(u"http://127.0.0.1:%1"_s.arg(port), ProviderID::openai), std::nullopt);
}

TEST_F(ModelCatalogTest, AReplyThatBreaksOffGivesNone)
{
    const RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
        connection.send(oneModelReply);
        connection.close();
    });
    EXPECT_EQ(load(origin(server), ProviderID::openai), std::nullopt);
}

TEST_F(ModelCatalogTest, AReplyWithoutEndIsGivenUp)
{
    const RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Connection", "close"}}));
        while (connection.send(QByteArray(1024 * 1024, ' '))) {
        }
    });
    EXPECT_EQ(load(origin(server), ProviderID::openai), std::nullopt);
    EXPECT_LT(server.sentBytes(), 64 * 1024 * 1024);
}

TEST_F(ModelCatalogTest, AServerThatTricklesIsGivenUpAfterHalfAMinute)
{
    const RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Connection", "close"}}));
        connection.waitUntilClosedByPeer();
    });
    HttpModelCatalog catalog(client, endpointsAt(origin(server)));
    auto loading = scheduler.spawn(catalog.load(ProviderID::openai, {}, {}));
    ASSERT_TRUE(waitUntil([&] { return !server.requests().isEmpty() && clock.pendingTimers() == 1; }));
    clock.advance(std::chrono::seconds(29));
    settle();
    EXPECT_FALSE(loading.done());
    clock.advance(std::chrono::seconds(1));
    ASSERT_TRUE(waitUntil([&] { return loading.done(); }));
    EXPECT_EQ(loading.result(), std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return server.connectionsClosedByPeer() == 1; }));
}

TEST_F(ModelCatalogTest, CancellingClosesTheConnection)
{
    const RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.waitUntilClosedByPeer();
    });
    HttpModelCatalog catalog(client, endpointsAt(origin(server)));
    auto loading = scheduler.spawn(catalog.load(ProviderID::openai, {}, {}));
    ASSERT_TRUE(waitUntil([&] { return !server.requests().isEmpty(); }));
    loading.cancel();
    EXPECT_TRUE(waitUntil([&] { return loading.done(); }));
    EXPECT_THROW(loading.result(), Cancelled);
    EXPECT_TRUE(waitUntil([&] { return server.connectionsClosedByPeer() == 1; }));
}

TEST_F(ModelCatalogTest, AKeyThatCannotBeSentGivesNone)
{
    const ScriptedModel server(listing("/v1/models", oneModelReply));
    EXPECT_EQ(load(server, ProviderID::openai, "a\r\nHost: evil"), std::nullopt);
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(ModelCatalogTest, SeveralListsAreLoadedAtOnce)
{
    ModelScript script = listing("/v1/models", oneModelReply);
    script.routes.emplace_back("GET /zen/v1/models", ScriptedTurn::failing(200, oneModelReply));
    const ScriptedModel server(script);
    HttpModelCatalog catalog(client, endpointsAt(QString::fromStdString(server.baseURL())));
    auto first = scheduler.spawn(catalog.load(ProviderID::openai, {}, {}));
    auto second = scheduler.spawn(catalog.load(ProviderID::zen, {}, {}));
    ASSERT_TRUE(waitUntil([&] { return first.done() && second.done(); }));
    EXPECT_EQ(first.result(), QList<CatalogModel>({{"m", false}}));
    EXPECT_EQ(second.result(), QList<CatalogModel>({{"m", false}}));
}

} // namespace
} // namespace morvane
