#include "support/AppFixture.h"

#include "providers/AIServiceError.h"

using namespace std::chrono_literals;
using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

class TitleTest : public AppFixture {
protected:
    void answerOnce()
    {
        service.willTurn(Service::answer(QStringLiteral("It is noon.")));
        sendAndFinish(QStringLiteral("What time is it?"));
    }
};

TEST_F(TitleTest, FirstFinishedExchangeGetsATitle)
{
    service.willTitle(QStringLiteral(" \"Time of day\"\n"));
    answerOnce();
    EXPECT_EQ(model->currentTitle(), QStringLiteral("Time of day"));
    EXPECT_EQ(model->conversations().first().title, QStringLiteral("Time of day"));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Conversation summarized as: Time of day.")));
    const auto request = service.titleRequests().value(0);
    EXPECT_EQ(std::get<APIMessage::User>(request.context.first().entry).text,
              QStringLiteral("First message: What time is it?\nReply: It is noon.\nTitle:"));
    EXPECT_EQ(request.config.temperature, 0.3);
    EXPECT_EQ(request.config.maxTokens, 60);
    EXPECT_TRUE(request.config.tools.isEmpty());
}

TEST_F(TitleTest, IsAskedForOnceForAConversation)
{
    service.willTitle(QStringLiteral("Time"));
    answerOnce();
    answerOnce();
    EXPECT_EQ(service.titleRequests().size(), 1);
}

TEST_F(TitleTest, ReplyWithTheWordErrorLeavesTheProvisionalTitle)
{
    service.willTitle(QStringLiteral("Internal ERROR occurred"));
    answerOnce();
    EXPECT_EQ(model->currentTitle(), QStringLiteral("What time is it?"));
}

TEST_F(TitleTest, LongReplyIsCutAt60CharactersWithoutAMark)
{
    service.willTitle(QString(80, QLatin1Char('t')));
    answerOnce();
    EXPECT_EQ(model->currentTitle(), QString(60, QLatin1Char('t')));
}

TEST_F(TitleTest, FailureIsSilent)
{
    answerOnce();
    EXPECT_EQ(service.titleRequests().size(), 1);
    EXPECT_EQ(model->currentTitle(), QStringLiteral("What time is it?"));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Ready"));
}

TEST_F(TitleTest, RunThatEndedWithAnErrorStillAsks)
{
    service.willTitle(QStringLiteral("Trouble"));
    service.willTurn(Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}))));
    sendAndFinish(QStringLiteral("hi"));
    EXPECT_EQ(model->currentTitle(), QStringLiteral("Trouble"));
}

TEST_F(TitleTest, CancelledRunAsksForNone)
{
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(QStringLiteral("hi"), {}));
    settle();
    model->cancel();
    settle();
    EXPECT_TRUE(service.titleRequests().isEmpty());
}

TEST_F(TitleTest, ConversationThatBeganWithAFileAloneKeepsTheFilesName)
{
    ChatAttachment file;
    file.filename = QStringLiteral("notes.txt");
    file.kind = AttachmentKind::text;
    file.extractedText = QStringLiteral("milk");
    service.willTitle(QStringLiteral("Shopping"));
    service.willTurn(Service::answer(QStringLiteral("A list.")));
    ASSERT_TRUE(model->send(QString(), {file}));
    finishRun();
    EXPECT_TRUE(service.titleRequests().isEmpty());
    EXPECT_EQ(model->currentTitle(), QStringLiteral("notes.txt"));
}

TEST_F(TitleTest, ReopenedConversationAsksOnceMore)
{
    service.willTitle(QStringLiteral("Old title"));
    answerOnce();
    start();
    service.willTitle(QStringLiteral("New title"));
    answerOnce();
    EXPECT_EQ(model->currentTitle(), QStringLiteral("New title"));
    EXPECT_EQ(service.titleRequests().size(), 2);
}

} // namespace
} // namespace morvane
