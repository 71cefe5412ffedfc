#include "net/Redirect.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class RedirectTest : public testing::Test {
protected:
    HttpRequest request;

    void SetUp() override { request.url = QUrl(u"https://host/a/b?q=1#f"_s); }

    std::optional<HttpRequest> follow(int status, const QByteArray &location)
    {
        return redirected(request, status, {{"Location", location}});
    }
    QString target(const QByteArray &location)
    {
        const auto next = follow(302, location);
        return next ? next->url.toString() : QString();
    }
};

TEST_F(RedirectTest, LocationIsRelativeToTheRequest)
{
    EXPECT_EQ(target("/c"), "https://host/c");
    EXPECT_EQ(target("c"), "https://host/a/c");
    EXPECT_EQ(target("../c?x"), "https://host/c?x");
    EXPECT_EQ(target("//other/c"), "https://other/c");
    EXPECT_EQ(target("http://other:81/c"), "http://other:81/c");
    EXPECT_EQ(target("/with blank"), "https://host/with blank");
}

TEST_F(RedirectTest, OnlyRedirectStatusesWithALocationAreFollowed)
{
    for (const int status : {200, 300, 304, 305, 306, 309, 400, 503})
        EXPECT_FALSE(follow(status, "/c")) << status;
    EXPECT_FALSE(redirected(request, 302, {}));
    EXPECT_FALSE(follow(302, ""));
}

TEST_F(RedirectTest, PostStaysAPostOrIsNotFollowed)
{
    request.method = "POST";
    request.body = "body";
    for (const int status : {301, 302, 303})
        EXPECT_FALSE(follow(status, "/c")) << status;
    for (const int status : {307, 308}) {
        const auto next = follow(status, "/c");
        ASSERT_TRUE(next);
        EXPECT_EQ(next->method, "POST");
        EXPECT_EQ(next->body, "body");
    }
}

TEST_F(RedirectTest, PostBecomesAGetWhereAllowed)
{
    request.method = "POST";
    request.body = "body";
    request.redirects = RedirectRule::allowGet;
    request.headers.set("Content-Type", "application/json");
    const auto next = follow(303, "/c");
    ASSERT_TRUE(next);
    EXPECT_EQ(next->method, "GET");
    EXPECT_TRUE(next->body.isEmpty());
    EXPECT_FALSE(next->headers.contains("Content-Type"));
    EXPECT_EQ(follow(307, "/c")->method, "POST");
}

TEST_F(RedirectTest, HeadStaysAHead)
{
    request.method = "HEAD";
    for (const int status : {301, 302, 303, 307, 308})
        EXPECT_EQ(follow(status, "/c")->method, "HEAD") << status;
}

TEST_F(RedirectTest, BodyNeverGoesOutUnencryptedAfterTls)
{
    request.method = "POST";
    request.body = "body";
    EXPECT_FALSE(follow(307, "http://host/c"));
    request.body.clear();
    EXPECT_TRUE(follow(307, "http://host/c"));
}

TEST_F(RedirectTest, WhatMustStayEncryptedIsNotFollowedOutOfTls)
{
    request.encryption = EncryptionRule::kept;
    EXPECT_FALSE(follow(302, "http://host/c"));
    EXPECT_TRUE(follow(302, "https://elsewhere/c"));
    request.url = QUrl(u"http://host/a"_s);
    EXPECT_TRUE(follow(302, "http://host/c"));
}

TEST_F(RedirectTest, ARangeAndItsConditionGoToAnyOrigin)
{
    request.headers = {{"Range", "bytes=5-"}, {"If-Range", "\"v\""}, {"Accept-Encoding", "identity"}};
    EXPECT_EQ(follow(302, "https://elsewhere/c")->headers.fields(), request.headers.fields());
}

TEST_F(RedirectTest, OnlyTheSameOriginGetsAllHeaders)
{
    request.headers = {{"Authorization", "key"}, {"X-Key", "key"}, {"Cookie", "c"}, {"accept", "text/html"}};
    EXPECT_EQ(follow(302, "https://host:443/c")->headers.fields(), request.headers.fields());
    for (const char *location : {"https://host:444/c", "http://host/c", "https://sub.host/c"}) {
        EXPECT_EQ(follow(302, location)->headers.fields(),
                  (QList<HttpHeaders::Field>{{"accept", "text/html"}}))
            << location;
    }
}

} // namespace
} // namespace morvane
