#include "support/AppFixture.h"
#include "support/FakeBrowser.h"
#include "support/FakeDesktop.h"

#include "net/HttpClient.h"
#include "support/QuietReminders.h"
#include "support/RawHttpServer.h"
#include "tools/BuiltinTools.h"
#include "tools/screen/ScreenTools.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Service = FakeAIService;
using testing::Contains;

/// The whole agent with the program's own tools.
class WebCancellationTest : public AppFixture {
protected:
    WebCancellationTest()
    {
        tool = [this](ToolPermit permit) { return tools.execute(std::move(permit)); };
    }
    ~WebCancellationTest() override { scheduler.shutdown(std::chrono::seconds(5)); }

    AIToolCall fetch(const RawHttpServer &server) const
    {
        return {u"web_fetch"_s, boost::json::object{{"url", server.url().toString().toStdString()}}, {}, {}};
    }

    HttpClient http;
    QuietReminders reminders{scheduler, home.path(u"Morvane.conf"_s)};
    ScreenTools screen{desktop.desktop()};
    FakeBrowser browser;
    BuiltinTools tools{http, reminders.store, screen, browser};
};

TEST_F(WebCancellationTest, StoppingTheAgentClosesTheConnectionAndEndsTheRun)
{
    RawHttpServer server([](RawHttpConnection &connection) {
        connection.readRequest();
        connection.send(rawHttpHead(200, {{"Content-Length", "1000"}}) + "begun");
        connection.waitUntilClosedByPeer();
    });
    service.willTurn(Service::calls({fetch(server), fetch(server)}));
    service.willTurn(Service::answer(u"never said"_s));
    ASSERT_TRUE(model->send(u"read it"_s, {}));
    ASSERT_TRUE(waitUntil([&server] { return server.requests().size() == 1; }));
    model->cancel();
    EXPECT_TRUE(waitUntil([&server] { return server.connectionsClosedByPeer() >= 1; }));
    // The second call of the turn is answered without a wait; the task ends with the next turn.
    EXPECT_TRUE(
        waitUntil([this] { return activityTexts().filter(u"The request was cancelled."_s).size() == 2; }));
    finishRun();
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
    EXPECT_EQ(lastMessage().text, QString());
}

TEST_F(WebCancellationTest, APageIsAResultLikeAnyOther)
{
    RawHttpServer server(RawHttpServer::answering(
        [](const RawHttpRequest &) { return rawHttpResponse(200, "<h1>Fish</h1>"); }));
    service.willTurn(Service::calls({fetch(server)}));
    service.willTurn(Service::answer(u"It is about fish."_s));
    sendAndFinish(u"read it"_s);
    EXPECT_EQ(contextEntries<APIMessage::FunctionResponse>().value(0).content, u"Fish"_s);
    EXPECT_THAT(activityTexts(), Contains(u"web fetch returned: Fish"_s));
}

} // namespace
} // namespace morvane
