#include "support/AppFixture.h"

#include "base/Text.h"
#include "providers/AIServiceError.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::Not;

namespace morvane {
namespace {

using Service = FakeAIService;

class TitleTest : public AppFixture {
protected:
    void answerOnce()
    {
        service.willTurn(Service::answer(u"It is noon."_s));
        sendAndFinish(u"What time is it?"_s);
    }
};

TEST_F(TitleTest, FirstFinishedExchangeGetsATitle)
{
    service.willTitle(u" \"Time of day\"\n"_s);
    answerOnce();
    EXPECT_EQ(model->currentTitle(), u"Time of day"_s);
    EXPECT_EQ(model->conversations().list().first().title, u"Time of day"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Conversation summarized as: Time of day."_s));
    const auto request = service.titleRequests().value(0);
    EXPECT_EQ(std::get<APIMessage::User>(request.context.first().entry).text,
              u"First message: What time is it?\nReply: It is noon.\nTitle:"_s);
    EXPECT_EQ(request.config.temperature, 0.3);
    EXPECT_EQ(request.config.maxTokens, 60);
    EXPECT_TRUE(request.config.tools.isEmpty());
}

TEST_F(TitleTest, IsAskedForOnceForAConversation)
{
    service.willTitle(u"Time"_s);
    answerOnce();
    answerOnce();
    EXPECT_EQ(service.titleRequests().size(), 1);
}

TEST_F(TitleTest, IsAskedForAgainWhenANewConversationWasBegunInBetween)
{
    service.willTitle(u"First"_s);
    service.willTurn(Service::answer(u"a"_s));
    sendAndFinish(u"one"_s);
    const QUuid id = *model->currentConversationID();
    model->newConversation();
    model->openConversation(id);
    settle();
    service.willTitle(u"Second"_s);
    service.willTurn(Service::answer(u"b"_s));
    sendAndFinish(u"two"_s);
    EXPECT_EQ(service.titleRequests().size(), 2);
    EXPECT_EQ(model->currentTitle(), u"Second"_s);
}

TEST_F(TitleTest, ReplyWithTheWordErrorLeavesTheProvisionalTitle)
{
    service.willTitle(u"Internal ERROR occurred"_s);
    answerOnce();
    EXPECT_EQ(model->currentTitle(), u"What time is it?"_s);
}

TEST_F(TitleTest, LongReplyIsCutAt60CharactersWithoutAMark)
{
    service.willTitle(QString(80, u't'));
    answerOnce();
    EXPECT_EQ(model->currentTitle(), QString(60, u't'));
}

TEST_F(TitleTest, KeepsNoControlEscapeOrDirectionCharacters)
{
    service.willTitle(u"\x1b[31mA\tquiet\a \u202Etitle\u2066\u200F\r\nof\x1b two\x85lines\x1b[0m"_s);
    answerOnce();
    EXPECT_EQ(model->currentTitle(), u"A quiet title of two lines"_s);
}

TEST_F(TitleTest, LettersThatJoinKeepTheirJoiners)
{
    service.willTitle(u"خانه\u200Cها 👩\u200D👧"_s);
    answerOnce();
    EXPECT_EQ(model->currentTitle(), u"خانه\u200Cها 👩\u200D👧"_s);
}

TEST_F(TitleTest, AReplyOfOneEndlessCharacterIsBounded)
{
    service.willTitle(u'e' + QString(3'000'000, QChar(0x301)));
    answerOnce();
    EXPECT_EQ(model->currentTitle().size(), 60 * longestCharacterUnits);
}

TEST_F(TitleTest, FailureIsSilent)
{
    answerOnce();
    EXPECT_EQ(service.titleRequests().size(), 1);
    EXPECT_EQ(model->currentTitle(), u"What time is it?"_s);
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
}

TEST_F(TitleTest, AfterAFailureThereIsNoSecondAttempt)
{
    answerOnce();
    service.willTitle(u"Time"_s);
    answerOnce();
    EXPECT_EQ(service.titleRequests().size(), 1);
    EXPECT_EQ(model->currentTitle(), u"What time is it?"_s);
}

TEST_F(TitleTest, TitleOfAConversationThatIsNoLongerOpenIsDropped)
{
    service.willTitle(u"Time"_s);
    service.setTitleTime(1min);
    answerOnce();
    model->newConversation();
    settle();
    clock.advance(1min);
    settle();
    EXPECT_EQ(service.titleRequests().size(), 1);
    EXPECT_EQ(model->currentTitle(), QString());
    EXPECT_FALSE(model->currentConversationID().has_value());
    ASSERT_EQ(listed().size(), 1);
    EXPECT_EQ(listed().first().title, u"What time is it?"_s);
    EXPECT_THAT(announcer.spoken, Not(Contains(u"Conversation summarized as: Time."_s)));
}

TEST_F(TitleTest, TitleThatArrivesDuringTheNextRequestSavesWhatIsThere)
{
    service.willTitle(u"Time"_s);
    service.setTitleTime(1min);
    answerOnce();
    neverAnswer();
    ASSERT_TRUE(model->send(u"And now?"_s, {}));
    settle();
    clock.advance(1min);
    settle();
    EXPECT_EQ(model->currentTitle(), u"Time"_s);
    EXPECT_TRUE(model->isBusy());
    ASSERT_EQ(listed().size(), 1);
    EXPECT_EQ(listed().first().messageCount, 4);
}

TEST_F(TitleTest, RunThatEndedWithAnErrorStillAsks)
{
    service.willTitle(u"Trouble"_s);
    service.willTurn(Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}))));
    sendAndFinish(u"hi"_s);
    EXPECT_EQ(model->currentTitle(), u"Trouble"_s);
}

TEST_F(TitleTest, CancelledRunAsksForNone)
{
    Service::Turn turn;
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    settle();
    model->cancel();
    settle();
    EXPECT_TRUE(service.titleRequests().isEmpty());
}

TEST_F(TitleTest, ConversationThatBeganWithAFileAloneKeepsTheFilesName)
{
    ChatAttachment file;
    file.filename = u"notes.txt"_s;
    file.kind = AttachmentKind::text;
    file.extractedText = u"milk"_s;
    service.willTitle(u"Shopping"_s);
    service.willTurn(Service::answer(u"A list."_s));
    ASSERT_TRUE(model->send(QString(), {file}));
    finishRun();
    EXPECT_TRUE(service.titleRequests().isEmpty());
    EXPECT_EQ(model->currentTitle(), u"notes.txt"_s);
}

TEST_F(TitleTest, ReopenedConversationAsksOnceMore)
{
    service.willTitle(u"Old title"_s);
    answerOnce();
    start();
    service.willTitle(u"New title"_s);
    answerOnce();
    EXPECT_EQ(model->currentTitle(), u"New title"_s);
    EXPECT_EQ(service.titleRequests().size(), 2);
}

} // namespace
} // namespace morvane
