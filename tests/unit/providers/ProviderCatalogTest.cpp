#include "providers/ProviderCatalog.h"

#include "providers/Endpoints.h"

#include <QMap>
#include <QUrl>
#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(ProviderCatalog, EveryProviderButCustomOffersModelsWithTheDefaultFirst)
{
    for (ProviderID provider : allProviders) {
        const auto models = curatedModels(provider);
        if (provider == ProviderID::custom)
            EXPECT_TRUE(models.isEmpty());
        else
            EXPECT_EQ(models.value(0).name, defaultModel(provider));
    }
}

TEST(ProviderCatalog, KnowsWhichModelsAreFree)
{
    const QList<ProviderModel> expected{{"deepseek/deepseek-chat-v3-0324", false},
                                        {"deepseek/deepseek-chat-v3-0324:free", true},
                                        {"meta-llama/llama-3.3-70b-instruct:free", true},
                                        {"google/gemma-3-27b-it:free", true}};
    EXPECT_EQ(curatedModels(ProviderID::openrouter), expected);
    for (ProviderID provider : {ProviderID::gemini, ProviderID::groq, ProviderID::ollama, ProviderID::zen})
        for (const ProviderModel &model : curatedModels(provider))
            EXPECT_EQ(model.isFree, true) << qPrintable(model.name);
    for (const ProviderModel &model : curatedModels(ProviderID::openai))
        EXPECT_EQ(model.isFree, false) << qPrintable(model.name);
}

TEST(ProviderCatalog, EveryProviderHasANoteAndASignupPage)
{
    const Endpoints endpoints;
    for (ProviderID provider : allProviders) {
        EXPECT_TRUE(providerNote(provider).endsWith(u'.')) << qPrintable(rawValue(provider));
        const QUrl page(endpoints.signupURL(provider), QUrl::StrictMode);
        EXPECT_TRUE(page.isValid());
        EXPECT_EQ(page.scheme(), "https");
    }
    EXPECT_EQ(endpoints.signupURL(ProviderID::custom), endpoints.productDocumentation);
    EXPECT_TRUE(providerNote(ProviderID::openai).endsWith("create a key at platform.openai.com."));
}

TEST(ProviderCatalog, EveryProviderButCustomHasAListOfModelsBelowItsOrigin)
{
    const Endpoints endpoints;
    const QMap<ProviderID, QString> paths{
        {ProviderID::gemini, "/v1beta/models"},  {ProviderID::openrouter, "/api/v1/models"},
        {ProviderID::groq, "/openai/v1/models"}, {ProviderID::ollama, "/api/tags"},
        {ProviderID::openai, "/v1/models"},      {ProviderID::zen, "/zen/v1/models"}};
    for (auto path = paths.cbegin(); path != paths.cend(); ++path) {
        const QUrl url(endpoints.modelList(path.key()), QUrl::StrictMode);
        EXPECT_TRUE(url.isValid());
        EXPECT_FALSE(url.host().isEmpty());
        EXPECT_EQ(url.path(), *path);
    }
    EXPECT_EQ(endpoints.modelList(ProviderID::ollama), "http://localhost:11434/api/tags");
    EXPECT_EQ(endpoints.modelList(ProviderID::custom), QString());
}

TEST(ProviderCatalog, PresetsAreOfferedInOrder)
{
    QStringList names;
    QList<bool> needKeys;
    for (const CustomPreset &preset : customPresets()) {
        names.append(preset.name);
        needKeys.append(preset.needsKey);
        const QUrl url(preset.baseURL, QUrl::StrictMode);
        EXPECT_TRUE(url.isValid());
        EXPECT_EQ(url.path(), preset.name == "GitHub Models" ? "/inference" : "/v1");
    }
    EXPECT_EQ(names, QStringList({"GitHub Models", "LM Studio", "NVIDIA NIM", "DeepSeek", "Mistral"}));
    EXPECT_EQ(needKeys, QList<bool>({true, false, true, true, true}));
    EXPECT_EQ(customPresets().value(1).baseURL, "http://localhost:1234/v1");
}

} // namespace
} // namespace morvane
