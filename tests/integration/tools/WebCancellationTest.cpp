#include "support/AppFixture.h"

#include "net/HttpClient.h"
#include "support/QuietReminders.h"
#include "support/RawHttpServer.h"
#include "tools/BuiltinTools.h"

namespace morvane {
namespace {

using Service = FakeAIService;
using testing::Contains;

/// The whole agent with the program's own tools.
class WebCancellationTest : public AppFixture {
protected:
    WebCancellationTest()
    {
        services->executeTool = [this](ToolPermit permit) { return tools.execute(std::move(permit)); };
    }
    ~WebCancellationTest() override { scheduler.shutdown(std::chrono::seconds(5)); }

    AIToolCall fetch(const RawHttpServer &server) const
    {
        return {QStringLiteral("web_fetch"),
                boost::json::object{{"url", server.url().toString().toStdString()}},
                {},
                {}};
    }

    HttpClient http;
    QuietReminders reminders{scheduler, home.path(QStringLiteral("Morvane.conf"))};
    BuiltinTools tools{http, reminders.store};
};

TEST_F(WebCancellationTest, StoppingTheAgentClosesTheConnectionAndEndsTheRun)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "1000"}}) + "begun");
        connection.waitUntilClosedByPeer();
    });
    service.willTurn(Service::calls({fetch(server), fetch(server)}));
    service.willTurn(Service::answer(QStringLiteral("never said")));
    ASSERT_TRUE(model->send(QStringLiteral("read it"), {}));
    ASSERT_TRUE(waitUntil([&server] { return server.requests().size() == 1; }));
    model->cancel();
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() >= 1; }));
    // The second call of the turn is answered without a wait; the task ends with the next turn.
    EXPECT_TRUE(waitUntil(
        [this] { return activityTexts().filter(QStringLiteral("The request was cancelled.")).size() == 2; }));
    finishRun();
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Cancelled"));
    EXPECT_EQ(lastMessage().text, QString());
}

TEST_F(WebCancellationTest, APageIsAResultLikeAnyOther)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, "<h1>Fish</h1>"); }));
    service.willTurn(Service::calls({fetch(server)}));
    service.willTurn(Service::answer(QStringLiteral("It is about fish.")));
    sendAndFinish(QStringLiteral("read it"));
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().value(0).content, QStringLiteral("Fish"));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("web fetch returned: Fish")));
}

} // namespace
} // namespace morvane
