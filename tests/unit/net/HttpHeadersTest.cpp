#include "net/HttpHeaders.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(HttpHeadersTest, NamesCompareWithoutCase)
{
    HttpHeaders headers{{"Retry-After", "1"}, {"retry-after", "2"}};
    EXPECT_EQ(headers.value("RETRY-AFTER"), "1");
    EXPECT_TRUE(headers.contains("retry-After"));
    EXPECT_FALSE(headers.contains("Retry"));
    EXPECT_EQ(headers.value("other"), std::nullopt);
}

TEST(HttpHeadersTest, SetReplacesAllAndAddKeeps)
{
    HttpHeaders headers{{"A", "1"}, {"B", "2"}, {"a", "3"}};
    headers.set("a", "4");
    EXPECT_EQ(headers.fields(), (QList<HttpHeaders::Field>{{"B", "2"}, {"a", "4"}}));
    headers.add("A", "5");
    EXPECT_EQ(headers.fields().size(), 3);
    headers.remove("A");
    EXPECT_EQ(headers.fields(), (QList<HttpHeaders::Field>{{"B", "2"}}));
}

TEST(HttpHeadersTest, ControlCharactersAreNotWellFormed)
{
    for (const char *value : {"a\r\nb: c", "a\n", "\r", "a\x01", "a\x7f"})
        EXPECT_FALSE((HttpHeaders{{"A", value}}).areWellFormed()) << value;
    EXPECT_FALSE((HttpHeaders{{"A", QByteArray("a\0b", 3)}}).areWellFormed());
    for (const char *value : {"", "plain", "tab\there", "\xC3\xA4", "a: b; c=\"d\""})
        EXPECT_TRUE((HttpHeaders{{"A", value}}).areWellFormed()) << value;
}

TEST(HttpHeadersTest, NamesAreTokens)
{
    for (const char *name : {"", "a b", "a:", "a\r\nb", "\xC3\xA4", "a(b)", "a\t"})
        EXPECT_FALSE((HttpHeaders{{name, "1"}}).areWellFormed()) << name;
    EXPECT_TRUE((HttpHeaders{{"x-Goog_api.key~1", "1"}}).areWellFormed());
}

} // namespace
} // namespace morvane
