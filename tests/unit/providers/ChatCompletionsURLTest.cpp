#include "providers/CustomServerURL.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString urlOf(const QString &baseURL)
{
    const auto url = chatCompletionsURL(baseURL);
    return url ? url->toString(QUrl::FullyEncoded) : u"(none)"_s;
}

TEST(ChatCompletionsURL, AddsThePathAfterRemovingSlashes)
{
    EXPECT_EQ(urlOf("https://host/v1///"), "https://host/v1/chat/completions");
    EXPECT_EQ(urlOf("http://localhost:1234/v1"), "http://localhost:1234/v1/chat/completions");
    EXPECT_EQ(urlOf("https://host"), "https://host/chat/completions");
}

TEST(ChatCompletionsURL, KeepsAnAddressThatIsCompleteInAnyCase)
{
    EXPECT_EQ(urlOf("HTTPS://host/v1/Chat/Completions").toLower(), "https://host/v1/chat/completions");
    EXPECT_TRUE(urlOf("HTTPS://host/v1/Chat/Completions").endsWith("/v1/Chat/Completions"));
    EXPECT_EQ(urlOf("https://host/v1/chat/completions/"), "https://host/v1/chat/completions");
}

TEST(ChatCompletionsURL, TrimsWhiteSpaceAndLineFeeds)
{
    EXPECT_EQ(urlOf(" \n\thttps://host/v1 \r\n"), "https://host/v1/chat/completions");
}

TEST(ChatCompletionsURL, RefusesWhatIsNoHttpURL)
{
    for (const char *text :
         {"host/v1", "", "   ", "ftp://host/v1", "file:///etc", "https:/host", "javascript:1"})
        EXPECT_EQ(urlOf(text), "(none)") << text;
}

TEST(ChatCompletionsURL, RefusesWhatDoesNotParse)
{
    for (const char *text :
         {"https://", "https:///", "https://ho st/v1", "http://[::1/v1", "http://host:99999/v1"})
        EXPECT_EQ(urlOf(text), "(none)") << text;
}

} // namespace
} // namespace morvane
