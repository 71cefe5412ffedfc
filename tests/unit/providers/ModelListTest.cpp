#include "providers/ModelList.h"

#include "support/LogRecorder.h"

#include <QStringList>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QStringList names(const CatalogModels &models)
{
    QStringList result;
    for (const CatalogModel &model : models.value_or(QList<CatalogModel>()))
        result.append(model.name);
    return result;
}

std::optional<bool> isFree(const CatalogModels &models, const QString &name)
{
    for (const CatalogModel &model : models.value_or(QList<CatalogModel>()))
        if (model.name == name)
            return model.isFree;
    ADD_FAILURE() << "not listed: " << qPrintable(name);
    return std::nullopt;
}

CatalogModels openRouter(const QByteArray &pricing)
{
    return modelListFromReply(ProviderID::openrouter, R"({"data":[{"id":"m")" + pricing + "}]}");
}

TEST(ModelList, AnOpenRouterModelIsFreeWhenBothItsPricesAreZero)
{
    EXPECT_EQ(isFree(openRouter(R"(,"pricing":{"prompt":"0","completion":"0"})"), "m"), true);
    EXPECT_EQ(isFree(openRouter(R"(,"pricing":{"prompt":"0.000","completion":"0e5"})"), "m"), true);
    EXPECT_EQ(isFree(openRouter(R"(,"pricing":{"prompt":"0","completion":"0.000001"})"), "m"), false);
    EXPECT_EQ(isFree(openRouter(R"(,"pricing":{"prompt":"0.1","completion":"0"})"), "m"), false);
}

TEST(ModelList, AMissingOrUnreadablePriceIsNotFree)
{
    for (const char *pricing :
         {"", R"(,"pricing":{})", R"(,"pricing":null)", R"(,"pricing":"0")", R"(,"pricing":{"prompt":"0"})",
          R"(,"pricing":{"prompt":0,"completion":0})", R"(,"pricing":{"prompt":"","completion":""})",
          R"(,"pricing":{"prompt":"free","completion":"0"})",
          R"(,"pricing":{"prompt":"0","completion":"0 USD"})"})
        EXPECT_EQ(isFree(openRouter(pricing), "m"), false) << pricing;
}

TEST(ModelList, AnOpenRouterModelWithoutPricesComesLast)
{
    const auto models = modelListFromReply(ProviderID::openrouter, R"({"data":[
        {"id":"a-unpriced"},
        {"id":"z-free","pricing":{"prompt":"0","completion":"0"}}]})");
    EXPECT_EQ(names(models), QStringList({"z-free", "a-unpriced"}));
    EXPECT_EQ(names(finished({{"not free", false}, {"unknown", std::nullopt}, {"zero", true}})),
              QStringList({"zero", "unknown", "not free"}));
}

TEST(ModelList, FreeModelsComeBeforePaidOnesThatTheAlphabetWouldPutFirst)
{
    EXPECT_EQ(names(finished({{"alpha", false}, {"zulu", true}, {"beta", false}, {"yankee", true}})),
              QStringList({"yankee", "zulu", "alpha", "beta"}));
}

TEST(ModelList, NamesAreOrderedWithoutRegardToCase)
{
    EXPECT_EQ(
        names(finished({{"Zeta", true}, {"alpha", true}, {"Beta", true}, {"éclair", true}, {"echo", true}})),
        QStringList({"alpha", "Beta", "echo", "éclair", "Zeta"}));
    EXPECT_EQ(names(finished({{"gpt-B", true}, {"GPT-a", true}, {"gpt-b", true}, {"gpt-A", true}})),
              QStringList({"GPT-a", "gpt-A", "gpt-B", "gpt-b"}));
}

TEST(ModelList, AnEmptyListIsNone)
{
    EXPECT_EQ(finished({}), std::nullopt);
    EXPECT_EQ(modelListFromReply(ProviderID::custom, R"({"data":[]})"), std::nullopt);
    EXPECT_EQ(modelListFromReply(ProviderID::gemini, R"({"models":[]})"), std::nullopt);
    EXPECT_EQ(modelListFromReply(ProviderID::openai, R"({"data":[{"id":"whisper-1"}]})"), std::nullopt);
}

TEST(ModelList, ALocalModelsLatestTagIsLeftOut)
{
    const auto models = modelListFromReply(
        ProviderID::ollama,
        R"({"models":[{"name":"llama3.1:latest"},{"name":"qwen2.5:14b"},{"name":"a:latest:latest"}]})");
    EXPECT_EQ(names(models), QStringList({"a", "llama3.1", "qwen2.5:14b"}));
    EXPECT_EQ(isFree(models, "llama3.1"), true);
}

TEST(ModelList, AGeminiModelThatOnlyEmbedsIsDropped)
{
    const auto models = modelListFromReply(ProviderID::gemini, R"({"models":[
        {"name":"models/gemini-b","supportedGenerationMethods":["countTokens","generateContent"]},
        {"name":"models/embedding-001","supportedGenerationMethods":["embedContent"]},
        {"name":"models/without"},
        {"name":"gemini-models/a","supportedGenerationMethods":["generateContent"]}]})");
    EXPECT_EQ(names(models), QStringList({"gemini-b", "gemini-models/a"}));
    EXPECT_EQ(isFree(models, "gemini-b"), true);
}

TEST(ModelList, ModelsThatDoNotChatAreDroppedForGroqAndOpenAIOnly)
{
    const QByteArray reply = R"({"data":[{"id":"gpt-5"},{"id":"text-embedding-3"},{"id":"Whisper-Large"},
        {"id":"tts-1"},{"id":"dall-e-3"},{"id":"omni-moderation"},{"id":"gpt-4o-transcribe"},
        {"id":"babbage-002"},{"id":"davinci-002"}]})";
    for (const ProviderID provider : {ProviderID::groq, ProviderID::openai}) {
        EXPECT_EQ(names(modelListFromReply(provider, reply)), QStringList("gpt-5"));
        EXPECT_EQ(isFree(modelListFromReply(provider, reply), "gpt-5"), provider == ProviderID::groq);
    }
    for (const ProviderID provider : {ProviderID::openrouter, ProviderID::zen, ProviderID::custom})
        EXPECT_EQ(names(modelListFromReply(provider, reply)).size(), 9);
}

TEST(ModelList, AZenModelIsFreeByItsName)
{
    const auto models = modelListFromReply(
        ProviderID::zen,
        R"({"data":[{"id":"x-free"},{"id":"big-pickle"},{"id":"big-pickle-2"},{"id":"free-x"}]})");
    EXPECT_EQ(isFree(models, "x-free"), true);
    EXPECT_EQ(isFree(models, "big-pickle"), true);
    EXPECT_EQ(isFree(models, "big-pickle-2"), false);
    EXPECT_EQ(isFree(models, "free-x"), false);
}

TEST(ModelList, WhetherACustomServersModelIsFreeIsNotKnown)
{
    EXPECT_EQ(isFree(modelListFromReply(ProviderID::custom, R"({"data":[{"id":"x-free"}]})"), "x-free"),
              std::nullopt);
}

TEST(ModelList, AnEntryWithoutANameIsPassedOver)
{
    const QByteArray reply =
        R"({"data":[{},null,7,"x",[],{"id":null},{"id":3},{"id":""},{"name":"n"},{"id":"good"}]})";
    EXPECT_EQ(names(modelListFromReply(ProviderID::custom, reply)), QStringList("good"));
    EXPECT_EQ(
        names(modelListFromReply(
            ProviderID::gemini,
            R"({"models":[{"name":"models/","supportedGenerationMethods":["generateContent"]},{"id":"x"},
                      {"name":"models/y","supportedGenerationMethods":["generateContent"]}]})")),
        QStringList("y"));
}

TEST(ModelList, WhatIsNoListIsNone)
{
    for (const char *reply :
         {"", "{", "null", "[]", "[{\"id\":\"x\"}]", "{}", R"({"data":{}})", R"({"data":null})",
          R"({"data":"x"})", "<html>", "{\"data\":[{\"id\":\"\xff\"}]}"}) {
        for (const ProviderID provider : allProviders)
            EXPECT_EQ(modelListFromReply(provider, reply), std::nullopt) << reply;
    }
}

TEST(ModelList, AReplyOfAnotherFormIsToldToWhoeverListens)
{
    const LogRecorder log;
    EXPECT_EQ(modelListFromReply(ProviderID::openai, R"({"models":[]})"), std::nullopt);
    EXPECT_EQ(log.lines(),
              QStringList(u"morvane.providers: no list of models: the reply has another form; 13 bytes"_s));
}

TEST(ModelList, NamesThatCannotBeShownArePassedOver)
{
    const QByteArray longest(longestModelName, 'a');
    const QByteArray reply = R"({"data":[{"id":"a\nb"},{"id":"\u0000"},{"id":"x\u001bz"},{"id":")" + longest +
                             R"("},{"id":")" + longest + R"(b"}]})";
    EXPECT_EQ(names(modelListFromReply(ProviderID::custom, reply)), QStringList(longest));
}

TEST(ModelList, AListWithoutEndIsCut)
{
    QByteArray reply = R"({"data":[)";
    for (int i = 0; i < 3 * mostListedModels; ++i)
        reply += R"({"id":"m)" + QByteArray::number(i) + "\"},";
    reply += R"({"id":"last"}]})";
    EXPECT_EQ(names(modelListFromReply(ProviderID::openai, reply)).size(), mostListedModels);
}

TEST(ModelList, DeeplyNestedRepliesAreHarmless)
{
    const QByteArray deep = R"({"data":)" + QByteArray(100'000, '[') + QByteArray(100'000, ']') + "}";
    EXPECT_EQ(modelListFromReply(ProviderID::openai, deep), std::nullopt);
}

TEST(ModelList, TheSameNameTwiceStaysInTheOrderOfTheReply)
{
    const auto models = modelListFromReply(ProviderID::zen, R"({"data":[{"id":"B"},{"id":"b"},{"id":"B"}]})");
    EXPECT_EQ(names(models), QStringList({"B", "b", "B"}));
}

} // namespace
} // namespace morvane
