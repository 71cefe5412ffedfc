#include "app/ContextTrimming.h"

#include "base/Text.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

constexpr qsizetype ollamaBudget = 64000;
constexpr qsizetype ollamaTarget = 44800;
constexpr qsizetype hostedBudget = 32000;
constexpr qsizetype hostedTarget = 22400;
constexpr qsizetype messageOverhead = 8;
constexpr qsizetype callOverhead = 48;

const QString toolResultMarker = "\n[...output truncated...]";
const QString messageMarker = u"\n[…message truncated…]"_qs;

QString text(qsizetype length, char16_t unit = u'x')
{
    return QString(length, QChar(unit));
}

APIMessage user(const QString &content, const QList<ChatAttachment> &attachments = {})
{
    return {APIMessage::User{content, attachments}};
}

APIMessage assistant(const QString &content)
{
    return {APIMessage::Assistant{content}};
}

APIMessage functionCall(const QString &id, const QString &name = "read_file")
{
    return {APIMessage::FunctionCall{id, name, {}, {}}};
}

APIMessage response(const QString &id, const QString &content)
{
    return {APIMessage::FunctionResponse{id, "read_file", content}};
}

ChatAttachment attachment(qsizetype bytes, const QString &extracted = {})
{
    ChatAttachment result;
    result.filename = "picture.png";
    result.kind = AttachmentKind::image;
    if (bytes >= 0)
        result.data = QByteArray(bytes, 'i');
    result.extractedText = extracted;
    return result;
}

ChatMessage message(Role role, const QString &content, const QList<ChatAttachment> &attachments = {})
{
    ChatMessage result;
    result.role = role;
    result.text = content;
    result.attachments = attachments;
    return result;
}

APIMessage note(const QString &quoted)
{
    return user("[Earlier part of this conversation was trimmed to save space. It began with: \"" + quoted +
                "\".]");
}

QList<APIMessage> trimmedForOllama(const QList<APIMessage> &context)
{
    return trimmedAPIContext(context, ProviderID::ollama);
}

TEST(ContextBuildingTest, TextsAreTrimmedAndKeepTheirOrder)
{
    EXPECT_EQ(apiContext({message(Role::user, "  hello\n"), message(Role::assistant, "\n hi \r\n")}),
              (QList{user("hello"), assistant("hi")}));
}

TEST(ContextBuildingTest, AnAssistantMessageOfBlanksIsSkipped)
{
    EXPECT_TRUE(apiContext({message(Role::assistant, " \n\t ")}).isEmpty());
    EXPECT_TRUE(apiContext({message(Role::assistant, "", {attachment(3)})}).isEmpty());
}

TEST(ContextBuildingTest, AUserMessageOfBlanksIsKeptForItsAttachments)
{
    EXPECT_TRUE(apiContext({message(Role::user, "  ")}).isEmpty());
    EXPECT_EQ(apiContext({message(Role::user, "  ", {attachment(3)})}), (QList{user("", {attachment(3)})}));
}

TEST(ContextBuildingTest, AttachmentsOfAUserMessageAreKept)
{
    EXPECT_EQ(apiContext({message(Role::user, "look", {attachment(3), attachment(-1, "words")})}),
              (QList{user("look", {attachment(3), attachment(-1, "words")})}));
}

TEST(ContextBuildingTest, ErrorsAndStreamingFlagsPlayNoPart)
{
    ChatMessage failed = message(Role::assistant, "half");
    failed.errorMessage = "broken";
    failed.isStreaming = true;
    EXPECT_EQ(apiContext({failed}), (QList{assistant("half")}));
}

TEST(ContextBuildingTest, NoMessagesGiveAnEmptyContext)
{
    EXPECT_TRUE(apiContext({}).isEmpty());
}

TEST(ContextTrimmingTest, AnEmptyContextStaysEmpty)
{
    EXPECT_TRUE(trimmedForOllama({}).isEmpty());
}

TEST(ContextTrimmingTest, ACostOfExactlyTheBudgetIsNotCut)
{
    const QList context{user(text(30000)), assistant(text(ollamaBudget - 30000 - 2 * messageOverhead))};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, OneCharacterAboveTheBudgetIsCut)
{
    const QList context{user(text(30000)), assistant(text(ollamaBudget - 30000 - 2 * messageOverhead + 1))};
    EXPECT_EQ(trimmedForOllama(context), (QList{note(text(120)), context.last()}));
}

TEST(ContextTrimmingTest, AToolResultOf1200CharactersStays)
{
    const QList context{user("hi"), functionCall("1"), response("1", text(1200))};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, AToolResultOf1201CharactersIsShortenedFarBelowTheBudget)
{
    EXPECT_EQ(trimmedForOllama({user("hi"), functionCall("1"), response("1", text(1201))}),
              (QList{user("hi"), functionCall("1"), response("1", text(1200) + toolResultMarker)}));
}

TEST(ContextTrimmingTest, ToolResultsAreMeasuredInCharactersThatAUserSees)
{
    const QString family = u"👩‍👩‍👧"_qs;
    const QList short1200{response("1", family.repeated(1200))};
    EXPECT_EQ(trimmedForOllama(short1200), short1200);
    EXPECT_EQ(trimmedForOllama({response("1", family.repeated(1201))}),
              (QList{response("1", family.repeated(1200) + toolResultMarker)}));
    const QList lines{response("1", QString("\r\n").repeated(1200))};
    EXPECT_EQ(trimmedForOllama(lines), lines);
}

TEST(ContextTrimmingTest, AShortenedResultStaysAsItIsOnTheNextCall)
{
    const QList once = trimmedForOllama({response("1", text(5000))});
    const QList twice = trimmedForOllama(once);
    EXPECT_EQ(twice, once);
    EXPECT_EQ(&twice.constFirst(), &once.constFirst()); // still shared, nothing was copied
}

TEST(ContextTrimmingTest, AResultThatOnlyLooksShortenedIsShortened)
{
    EXPECT_EQ(trimmedForOllama({response("1", text(1201) + toolResultMarker)}),
              (QList{response("1", text(1200) + toolResultMarker)}));
    EXPECT_EQ(trimmedForOllama({response("1", text(1200) + toolResultMarker + "y")}),
              (QList{response("1", text(1200) + toolResultMarker)}));
}

TEST(ContextTrimmingTest, ResultsAreShortenedBeforeTheTotalIsTaken)
{
    QList<APIMessage> context{user("hi")};
    for (int i = 0; i < 20; ++i)
        context += {functionCall(QString::number(i)), response(QString::number(i), text(8000))};
    const QList result = trimmedForOllama(context);
    ASSERT_EQ(result.size(), context.size());
    EXPECT_EQ(result.first(), user("hi"));
    EXPECT_EQ(result.last(), response("19", text(1200) + toolResultMarker));
}

TEST(ContextTrimmingTest, TheBudgetIsLargerForTheLocalProvider)
{
    const QList context{user(text(20000)), assistant(text(20000))};
    EXPECT_EQ(trimmedAPIContext(context, ProviderID::ollama), context);
    for (const ProviderID provider : allProviders)
        if (provider != ProviderID::ollama)
            EXPECT_EQ(trimmedAPIContext(context, provider), (QList{note(text(120)), context.last()}));
}

TEST(ContextTrimmingTest, TheHostedBudgetAndTargetHoldToTheCharacter)
{
    const QList atBudget{user(text(1000)), assistant(text(hostedBudget - 1000 - 2 * messageOverhead))};
    EXPECT_EQ(trimmedAPIContext(atBudget, ProviderID::openai), atBudget);
    const QList atTarget{user(text(10000)), assistant(text(hostedTarget - messageOverhead))};
    EXPECT_EQ(trimmedAPIContext(atTarget, ProviderID::openai), (QList{note(text(120)), atTarget.last()}));
}

TEST(ContextTrimmingTest, TheNewestEntriesUpToTheKeepTargetAreKept)
{
    const QList context{user(text(30000, u'a')), assistant(text(20000, u'b')), user(text(20000, u'c')),
                        assistant(text(ollamaTarget - 20000 - 2 * messageOverhead, u'd'))};
    EXPECT_EQ(trimmedForOllama(context), (QList{note(text(120, u'a')), context[2], context[3]}));

    QList oneMore = context;
    oneMore[3] = assistant(text(ollamaTarget - 20000 - 2 * messageOverhead + 1, u'd'));
    EXPECT_EQ(trimmedForOllama(oneMore), (QList{note(text(120, u'a')), oneMore[3]}));
}

TEST(ContextTrimmingTest, AKeptRangeThatBeginsWithAResultLosesIt)
{
    const QList context{user(text(30000)),
                        functionCall("1"),
                        assistant(text(20000)),
                        functionCall("2", text(19000)),
                        response("2", "done"),
                        assistant(text(26000)),
                        user("next")};
    // The call does not fit any more, so its result would stand alone.
    EXPECT_EQ(trimmedForOllama(context), (QList{note(text(120)), context[5], context[6]}));
}

TEST(ContextTrimmingTest, AKeptRangeThatBeginsWithCallsLosesThemAndTheirResults)
{
    const QList context{user(text(64000)),    functionCall("1"), functionCall("2"), response("1", "one"),
                        response("2", "two"), assistant("so"),   functionCall("3"), response("3", "three")};
    EXPECT_EQ(trimmedForOllama(context), (QList{note(text(120)), context[5], context[6], context[7]}));
}

TEST(ContextTrimmingTest, AKeptRangeThatEndsInACallLosesIt)
{
    const QList context{user(text(60000)), assistant(text(10000)), functionCall("1"), functionCall("2")};
    EXPECT_EQ(trimmedForOllama(context), (QList{note(text(120)), context[1]}));
}

TEST(ContextTrimmingTest, ACallAtTheEndStaysWhenNothingIsCut)
{
    const QList context{user("hi"), functionCall("1")};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, OnlyTheNoteIsLeftWhenNothingCanBeKept)
{
    const QList context{user(text(70000)), functionCall("1"), response("1", "one")};
    EXPECT_EQ(trimmedForOllama(context), (QList{note(text(120))}));
}

TEST(ContextTrimmingTest, TheArgumentsOfACallCostNothing)
{
    const SharedJsonObject large(boost::json::object{{"content", std::string(100000, 'x')}});
    const QList<APIMessage> context{
        user("hi"), {APIMessage::FunctionCall{"1", "write_file", large, {}}}, response("1", "ok")};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, ACallCostsItsNameAnd48)
{
    const qsizetype rest = ollamaBudget - messageOverhead - callOverhead - 9;
    const QList fits{user(text(rest)), functionCall("1", "read_file")};
    EXPECT_EQ(trimmedForOllama(fits), fits);
    const QList over{user(text(rest)), functionCall("1", "read_files")};
    EXPECT_EQ(trimmedForOllama(over), (QList{note(text(120))}));
}

TEST(ContextTrimmingTest, AnAttachmentCostsItsTextAndHalfItsBytes)
{
    const auto context = [](qsizetype bytes, qsizetype extracted) {
        return QList{user(text(1000)), assistant("so"), user("ab", {attachment(bytes, text(extracted))}),
                     assistant("done")};
    };
    // 1,000 + 2 + 2 + 4 of text, four times 8, and what is left for the attachment.
    const qsizetype rest = ollamaBudget - 1008 - 4 * messageOverhead;
    const QList fits = context(20001, rest - 10000);
    EXPECT_EQ(trimmedForOllama(fits), fits);
    const QList over = context(20002, rest - 10000);
    EXPECT_NE(trimmedForOllama(over), over);
}

TEST(ContextTrimmingTest, AnAttachmentWithoutBytesCostsOnlyItsText)
{
    const QList context{user("hi", {attachment(-1, text(100))})};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, ANewestUserEntryWithATenMegabyteImageKeepsEverythingAndMarksItsText)
{
    const QList context{user("first"), assistant("second"), user("look", {attachment(10'000'000)})};
    EXPECT_EQ(trimmedForOllama(context),
              (QList{context[0], context[1], user("look" + messageMarker, {attachment(10'000'000)})}));
}

TEST(ContextTrimmingTest, ANewestUserEntryThatIsTooLongIsCutToTheTarget)
{
    const QList context{user("first"), user(text(70000))};
    EXPECT_EQ(trimmedForOllama(context), (QList{context[0], user(text(ollamaTarget) + messageMarker)}));
    EXPECT_EQ(trimmedAPIContext(context, ProviderID::gemini),
              (QList{context[0], user(text(hostedTarget) + messageMarker)}));
}

TEST(ContextTrimmingTest, ANewestAssistantEntryThatIsTooLongIsCutToTheTarget)
{
    EXPECT_EQ(trimmedForOllama({user("first"), assistant(text(70000))}),
              (QList{user("first"), assistant(text(ollamaTarget) + messageMarker)}));
}

TEST(ContextTrimmingTest, ANewestCallThatIsTooLongStays)
{
    const QList context{user("first"), functionCall("1", text(70000))};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, ResultsAreShortenedEvenWhenOnlyTheNewestEntryIsTooLong)
{
    EXPECT_EQ(
        trimmedForOllama({response("1", text(2000)), user(text(70000))}),
        (QList{response("1", text(1200) + toolResultMarker), user(text(ollamaTarget) + messageMarker)}));
}

TEST(ContextTrimmingTest, ANewestEntryBetweenTargetAndBudgetAloneIsNotShortened)
{
    const QList context{user(text(50000))};
    EXPECT_EQ(trimmedForOllama(context), context);
}

TEST(ContextTrimmingTest, WhatComesInIsNotChanged)
{
    const QList context{user(text(70000)), response("1", text(2000)), assistant("so")};
    const QList copy{user(text(70000)), response("1", text(2000)), assistant("so")};
    trimmedForOllama(context);
    EXPECT_EQ(context, copy);
}

TEST(ContextTrimmingTest, ALongContextIsCutToItsNewestEntries)
{
    QList<APIMessage> context;
    for (int i = 0; i < 50'000; ++i)
        context += {functionCall(QString::number(i)), response(QString::number(i), text(100))};
    context += user("last");
    const QList result = trimmedForOllama(context);
    EXPECT_EQ(result,
              (QList{user("[Earlier part of this conversation was trimmed to save space. It began with: "
                          "\"last\".]"),
                     user("last")}));
}

TEST(TrimmedNoteTest, AContextWithoutUserTextBeganWithItsStart)
{
    const QString expected =
        "[Earlier part of this conversation was trimmed to save space. It began with: \"the "
        "start of the conversation\".]";
    EXPECT_EQ(trimmedNote({}), expected);
    EXPECT_EQ(trimmedNote({assistant("hi"), user("", {attachment(3)})}), expected);
}

TEST(TrimmedNoteTest, TheFirstUserTextThatIsNotEmptyIsQuoted)
{
    EXPECT_EQ(trimmedNote({assistant("no"), user(""), user("yes"), user("later")}),
              "[Earlier part of this conversation was trimmed to save space. It began with: \"yes\".]");
}

TEST(TrimmedNoteTest, ATextOf200CharactersIsQuotedTo120WithoutAMark)
{
    EXPECT_EQ(QList{user(trimmedNote({user(text(200))}))}, QList{note(text(120))});
    const QString flags = u"🇩🇪"_qs;
    EXPECT_EQ(QList{user(trimmedNote({user(flags.repeated(200))}))}, QList{note(flags.repeated(120))});
}

TEST(TrimmedNoteTest, ANoteCanQuoteAnEarlierNote)
{
    const QString first = trimmedNote({user("hello")});
    EXPECT_EQ(QList{user(trimmedNote({user(first)}))}, QList{note(first)});
}

} // namespace
} // namespace morvane
