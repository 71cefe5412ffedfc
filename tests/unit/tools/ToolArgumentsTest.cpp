#include "tools/ToolArguments.h"

#include "base/Json.h"

#include <gtest/gtest.h>
#include <limits>

namespace morvane {
namespace {

boost::json::object arguments(const char *json)
{
    return parseJsonObject(json).value();
}

TEST(ToolArgumentsTest, AStringIsReadAndAnythingElseGivesTheFallback)
{
    const auto a = arguments(R"({"path": "/tmp", "number": 5, "null": null, "list": ["x"], "bool": true})");
    EXPECT_EQ(stringArgument(a, "path"), "/tmp");
    EXPECT_EQ(stringArgument(a, "number"), QString());
    EXPECT_EQ(stringArgument(a, "null", "fallback"), "fallback");
    EXPECT_EQ(stringArgument(a, "list", "fallback"), "fallback");
    EXPECT_EQ(stringArgument(a, "bool", "fallback"), "fallback");
    EXPECT_EQ(stringArgument(a, "missing", "fallback"), "fallback");
    EXPECT_EQ(optionalStringArgument(a, "path"), "/tmp");
    EXPECT_EQ(optionalStringArgument(a, "number"), std::nullopt);
    EXPECT_EQ(optionalStringArgument(a, "missing"), std::nullopt);
}

TEST(ToolArgumentsTest, AnEmptyStringIsNotReplacedByTheFallback)
{
    EXPECT_EQ(stringArgument(arguments(R"({"path": ""})"), "path", "fallback"), "");
}

TEST(ToolArgumentsTest, AStringKeepsNulCharactersAndCharactersOutsideTheBasicPlane)
{
    EXPECT_EQ(stringArgument(arguments(R"({"text": "a\u0000b😀"})"), "text"), QString::fromUtf8("a\0b😀", 7));
}

TEST(ToolArgumentsTest, AListIsReadOnlyIfEveryElementIsAString)
{
    const auto a =
        arguments(R"({"good": ["a", "", "b"], "mixed": ["a", 1], "text": "a", "empty": [], "null": null})");
    EXPECT_EQ(stringListArgument(a, "good"), QStringList({"a", "", "b"}));
    EXPECT_EQ(stringListArgument(a, "mixed"), QStringList());
    EXPECT_EQ(stringListArgument(a, "text"), QStringList());
    EXPECT_EQ(stringListArgument(a, "empty"), QStringList());
    EXPECT_EQ(stringListArgument(a, "null"), QStringList());
    EXPECT_EQ(stringListArgument(a, "missing"), QStringList());
}

TEST(ToolArgumentsTest, OnlyTheBooleanTrueIsTrue)
{
    const auto a = arguments(R"({"t": true, "f": false, "one": 1, "text": "true", "null": null})");
    EXPECT_TRUE(booleanArgument(a, "t"));
    for (const char *const name : {"f", "one", "text", "null", "missing"})
        EXPECT_FALSE(booleanArgument(a, name)) << name;
}

TEST(ToolArgumentsTest, AnIntegerComesAsItStands)
{
    const auto a =
        arguments(R"({"small": -7, "least": -9223372036854775808, "greatest": 9223372036854775807})");
    EXPECT_EQ(intArgument(a, "small"), -7);
    EXPECT_EQ(intArgument(a, "least"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(intArgument(a, "greatest"), std::numeric_limits<qint64>::max());
}

TEST(ToolArgumentsTest, AFractionIsCutOffTowardsZero)
{
    const auto a = arguments(R"({"up": 3.9, "down": -3.9, "whole": 5.0, "exponent": 1.2e3, "tiny": 1e-300})");
    EXPECT_EQ(intArgument(a, "up"), 3);
    EXPECT_EQ(intArgument(a, "down"), -3);
    EXPECT_EQ(intArgument(a, "whole"), 5);
    EXPECT_EQ(intArgument(a, "exponent"), 1200);
    EXPECT_EQ(intArgument(a, "tiny"), 0);
}

TEST(ToolArgumentsTest, ABooleanIsOneOrZeroAsAnInteger)
{
    const auto a = arguments(R"({"t": true, "f": false})");
    EXPECT_EQ(intArgument(a, "t"), 1);
    EXPECT_EQ(intArgument(a, "f"), 0);
}

TEST(ToolArgumentsTest, NoOtherTypeIsAnInteger)
{
    const auto a = arguments(R"({"text": "5", "null": null, "list": [5], "object": {}})");
    for (const char *const name : {"text", "null", "list", "object", "missing"})
        EXPECT_EQ(intArgument(a, name), std::nullopt) << name;
}

TEST(ToolArgumentsTest, NumbersBeyond64SignedBitsAreNoIntegers)
{
    boost::json::object a = arguments(
        R"({"unsigned": 9223372036854775808, "largest": 18446744073709551615, "double": 9223372036854775808.0,
            "huge": 1e300, "negative": -1e300, "fits": -9223372036854775808.0})");
    a["infinite"] = std::numeric_limits<double>::infinity();
    a["minusInfinite"] = -std::numeric_limits<double>::infinity();
    a["nan"] = std::numeric_limits<double>::quiet_NaN();
    for (const char *const name :
         {"unsigned", "largest", "double", "huge", "negative", "infinite", "minusInfinite", "nan"})
        EXPECT_EQ(intArgument(a, name), std::nullopt) << name;
    EXPECT_EQ(intArgument(a, "fits"), std::numeric_limits<qint64>::min());
}

TEST(ToolArgumentsTest, AnyFiniteJsonNumberIsADouble)
{
    boost::json::object a =
        arguments(R"({"half": 0.5, "int": 3, "unsigned": 18446744073709551615, "text": "1", "bool": true})");
    a["infinite"] = std::numeric_limits<double>::infinity();
    a["nan"] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(numberArgument(a, "half"), 0.5);
    EXPECT_EQ(numberArgument(a, "int"), 3.0);
    EXPECT_EQ(numberArgument(a, "unsigned"), 18446744073709551615.0);
    for (const char *const name : {"text", "bool", "infinite", "nan", "missing"})
        EXPECT_EQ(numberArgument(a, name), std::nullopt) << name;
}

} // namespace
} // namespace morvane
