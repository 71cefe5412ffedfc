#include "providers/ProviderRequest.h"

#include "ProviderTestData.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

AIConfiguration withKey(ProviderID provider, const QString &key = u" key "_s)
{
    AIConfiguration config = configuration(provider);
    config.apiKey = key;
    config.baseURL = "https://custom.example/v1/";
    return config;
}

TEST(OpenAIRequest, IsAJsonPostWithFiveMinutesOfSilence)
{
    const HttpRequest request = openAIRequest(withKey(ProviderID::openai), {});
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.headers.value("Content-Type"), "application/json");
    EXPECT_EQ(request.silenceLimit, std::chrono::seconds(300));
    EXPECT_EQ(request.connectLimit, std::nullopt); // as long as the silence
}

TEST(OpenAIRequest, EachProviderHasItsAddress)
{
    const auto urlOf = [](ProviderID provider) {
        return openAIRequest(withKey(provider), {}).url.toString();
    };
    EXPECT_EQ(urlOf(ProviderID::openrouter), "https://openrouter.ai/api/v1/chat/completions");
    EXPECT_EQ(urlOf(ProviderID::groq), "https://api.groq.com/openai/v1/chat/completions");
    EXPECT_EQ(urlOf(ProviderID::ollama), "http://localhost:11434/v1/chat/completions");
    EXPECT_EQ(urlOf(ProviderID::openai), "https://api.openai.com/v1/chat/completions");
    EXPECT_EQ(urlOf(ProviderID::zen), "https://opencode.ai/zen/v1/chat/completions");
    EXPECT_EQ(urlOf(ProviderID::custom), "https://custom.example/v1/chat/completions");
}

TEST(OpenAIRequest, KeyIsSentAsItStandsToAllButTheLocalServer)
{
    for (ProviderID provider :
         {ProviderID::openrouter, ProviderID::groq, ProviderID::openai, ProviderID::zen, ProviderID::custom})
        EXPECT_EQ(openAIRequest(withKey(provider), {}).headers.value("Authorization"), "Bearer  key ");
    EXPECT_FALSE(openAIRequest(withKey(ProviderID::ollama), {}).headers.contains("Authorization"));
}

TEST(OpenAIRequest, EmptyKeySendsNoHeader)
{
    EXPECT_FALSE(openAIRequest(withKey(ProviderID::groq, {}), {}).headers.contains("Authorization"));
}

TEST(OpenAIRequest, OnlyOpenRouterLearnsWhoAsks)
{
    for (ProviderID provider : {ProviderID::openrouter, ProviderID::groq, ProviderID::ollama,
                                ProviderID::openai, ProviderID::zen, ProviderID::custom}) {
        const HttpHeaders headers = openAIRequest(withKey(provider), {}).headers;
        const bool isOpenRouter = provider == ProviderID::openrouter;
        EXPECT_EQ(headers.contains("X-Title"), isOpenRouter);
        EXPECT_EQ(headers.contains("HTTP-Referer"), isOpenRouter);
    }
    const HttpHeaders headers = openAIRequest(withKey(ProviderID::openrouter), {}).headers;
    EXPECT_EQ(headers.value("X-Title"), "Morvane (macOS)");
    EXPECT_EQ(headers.value("HTTP-Referer"), Endpoints().productSite.toUtf8());
}

TEST(OpenAIRequest, CustomProviderWithoutUsableAddressSaysSo)
{
    AIConfiguration config = withKey(ProviderID::custom);
    for (const char *baseURL : {"", "host/v1", "https://"}) {
        config.baseURL = baseURL;
        EXPECT_EQ(apiErrorOf([&] { openAIRequest(config, {}); }),
                  "The custom provider's API base URL is missing or invalid. Open Settings and check it (for "
                  "example https://api.example.com/v1).");
    }
}

TEST(OpenAIRequest, ProviderWithoutAnEntryHasNoURL)
{
    EXPECT_EQ(apiErrorOf([] { openAIRequest(withKey(ProviderID::gemini), {}); }), "Invalid provider URL.");
}

TEST(GeminiRequest, NamesModelAndStreamInTheURLAndTheKeyInAHeader)
{
    AIConfiguration config = withKey(ProviderID::gemini, "secret");
    config.model = "gemini-3.6-flash";
    const HttpRequest request = geminiRequest(config, {});
    EXPECT_EQ(request.url.toString(), "https://generativelanguage.googleapis.com/v1beta/models/"
                                      "gemini-3.6-flash:streamGenerateContent?alt=sse");
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.headers.value("Content-Type"), "application/json");
    EXPECT_EQ(request.headers.value("x-goog-api-key"), "secret");
    EXPECT_FALSE(request.headers.contains("Authorization"));
    EXPECT_EQ(request.silenceLimit, std::chrono::seconds(300));
}

TEST(GeminiRequest, KeyHeaderIsSentEvenWhenEmpty)
{
    EXPECT_EQ(geminiRequest(withKey(ProviderID::gemini, {}), {}).headers.value("x-goog-api-key"), "");
}

TEST(GeminiRequest, ModelThatMakesNoURLIsAnError)
{
    AIConfiguration config = withKey(ProviderID::gemini);
    for (const char *model : {"two words", "100%"}) {
        config.model = model;
        EXPECT_EQ(apiErrorOf([&] { geminiRequest(config, {}); }), "Invalid Gemini model or API URL.")
            << model;
    }
    Endpoints broken;
    broken.gemini = "nowhere";
    EXPECT_EQ(apiErrorOf([&] { geminiRequest(withKey(ProviderID::gemini), broken); }),
              "Invalid Gemini model or API URL.");
}

} // namespace
} // namespace morvane
