#include "providers/CustomServerURL.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QString urlOf(const QString &baseURL)
{
    const auto url = modelsListURL(baseURL);
    return url ? url->toString(QUrl::FullyEncoded) : u"(none)"_s;
}

TEST(ModelsListURL, AddsThePathAfterRemovingSlashes)
{
    EXPECT_EQ(urlOf("https://host/v1///"), "https://host/v1/models");
    EXPECT_EQ(urlOf("http://localhost:1234/v1"), "http://localhost:1234/v1/models");
    EXPECT_EQ(urlOf("https://host"), "https://host/models");
}

TEST(ModelsListURL, TakesThePlaceOfTheChatPath)
{
    EXPECT_EQ(urlOf("https://host/v1/chat/completions"), "https://host/v1/models");
    EXPECT_EQ(urlOf("https://host/v1/Chat/Completions/"), "https://host/v1/models");
}

TEST(ModelsListURL, KeepsAnAddressThatIsCompleteInAnyCase)
{
    EXPECT_EQ(urlOf("https://host/v1/models"), "https://host/v1/models");
    EXPECT_EQ(urlOf("https://host/v1/Models/"), "https://host/v1/Models");
}

TEST(ModelsListURL, TrimsWhiteSpaceAndLineFeeds)
{
    EXPECT_EQ(urlOf(" \n\thttps://host/v1 \r\n"), "https://host/v1/models");
}

TEST(ModelsListURL, RefusesWhatIsNoHttpURL)
{
    for (const char *text : {"host/v1", "", "   ", "ftp://host/v1", "file:///etc", "https:/host", "https://",
                             "https:///", "https://ho st/v1", "http://[::1/v1", "http://host:99999/v1"})
        EXPECT_EQ(urlOf(text), "(none)") << text;
}

} // namespace
} // namespace morvane
