#include "browser/pages/BrowserTarget.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

QString led(const QString &text)
{
    return resolveTarget(text).spelling;
}

TEST(BrowserTargetTest, AnAddressIsTakenAsItIsTyped)
{
    EXPECT_EQ(led("https://host.test/a?b=c#d"), "https://host.test/a?b=c#d");
    EXPECT_EQ(led("  http://host.test:8080/x\r\n"), "http://host.test:8080/x");
    const BrowserTarget shouted = resolveTarget("HTTP://Host.test");
    EXPECT_EQ(shouted.spelling, "HTTP://Host.test");
    EXPECT_EQ(shouted.host(), "Host.test");
    EXPECT_EQ(shouted.url, QUrl("http://host.test"));
}

TEST(BrowserTargetTest, WhatLooksLikeAHostIsOpenedSecurely)
{
    EXPECT_EQ(led("host.test"), "https://host.test");
    EXPECT_EQ(led("localhost"), "https://localhost");
    EXPECT_EQ(led("localhost:3000"), "https://localhost:3000");
    EXPECT_EQ(led("LOCALHOST:8080/x"), "https://LOCALHOST:8080/x");
    EXPECT_EQ(resolveTarget("LOCALHOST:8080/X").host(), "LOCALHOST");
    EXPECT_EQ(resolveTarget("LOCALHOST:8080/X").url, QUrl("https://localhost:8080/X"));
}

TEST(BrowserTargetTest, EverythingElseIsASearch)
{
    const QString search = "https://www.google.com/search?q=";
    EXPECT_EQ(led("host.test/a b"), search + "host.test%2Fa%20b");
    EXPECT_EQ(led("what is 2.5 plus 1"), search + "what%20is%202.5%20plus%201");
    EXPECT_EQ(led("1+1=2&x#y"), search + "1%2B1%3D2%26x%23y");
    EXPECT_EQ(led("file:///x"), search + "file%3A%2F%2F%2Fx");
    EXPECT_EQ(led("javascript:alert(1)"), search + "javascript%3Aalert%281%29");
    EXPECT_EQ(led(" \n"), search);
    EXPECT_EQ(led(""), search);
    EXPECT_EQ(led("localhosts"), search + "localhosts");
    EXPECT_EQ(led("https://"), search + "https%3A%2F%2F");
    EXPECT_EQ(led("http:///path"), search + "http%3A%2F%2F%2Fpath");
}

TEST(BrowserTargetTest, NoOtherSchemeIsLetThrough)
{
    for (const char *text :
         {"file:///etc/passwd", "file:///a.b", "ftp://a.b", "chrome://version.x", "data:text/html,a.b",
          "javascript:location='//a.b'", "about:blank", "view-source:http://a.b"}) {
        const BrowserTarget target = resolveTarget(text);
        EXPECT_TRUE(target.url.scheme() == "https" && !target.url.host().isEmpty()) << text;
    }
}

TEST(BrowserTargetTest, ATextWithoutEndStillLeadsSomewhere)
{
    const QString word(1'000'000, 'x');
    EXPECT_EQ(led(word).size(), 32 + word.size());
    EXPECT_FALSE(resolveTarget(word + ".test").url.host().isEmpty());
    EXPECT_FALSE(resolveTarget(QString(1000, QChar(0xD800))).url.host().isEmpty());
}

} // namespace
} // namespace morvane
