#include "base/Json.h"

#include "base/JsonInPlace.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace json = boost::json;

TEST(JsonTest, KeepsTheOrderOfKeysAndTheKindsOfNumbers)
{
    const auto value = parseJson(R"({"z":1,"a":2.0,"m":18446744073709551615})");
    ASSERT_TRUE(value.has_value());
    EXPECT_TRUE(value->at("z").is_int64());
    EXPECT_TRUE(value->at("a").is_double());
    EXPECT_TRUE(value->at("m").is_uint64());
    EXPECT_EQ(serializeJson(*value), QByteArray(R"({"z":1,"a":2E0,"m":18446744073709551615})"));
}

TEST(JsonTest, RefusesWhatIsNotExactlyOneValue)
{
    for (const char *text : {"",
                             " ",
                             "{",
                             "{}x",
                             "[1,]",
                             "{\"a\":1,}",
                             "nul",
                             "'a'",
                             "// c\n1",
                             "{a:1}",
                             "01",
                             "+1",
                             ".5",
                             "1.",
                             "NaN",
                             "Infinity",
                             "\"\t\"",
                             "\"\xff\"",
                             "\"\xed\xa0\x80\"",
                             "\"\\ud800\"",
                             "\"\\x\""})
        EXPECT_FALSE(parseJson(text).has_value()) << text;
}

TEST(JsonTest, SaysWhereATextIsWrong)
{
    const auto value = parseJson("[1,2,x]");
    ASSERT_FALSE(value.has_value());
    EXPECT_TRUE(value.error().startsWith(u"syntax error"_s)) << value.error().toStdString();
    EXPECT_TRUE(value.error().endsWith(u"at byte 5"_s)) << value.error().toStdString();
}

TEST(JsonTest, SkipsAByteOrderMark)
{
    const auto value = parseJson("\xEF\xBB\xBF[1]");
    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(serializeJson(*value), QByteArray("[1]"));
}

TEST(JsonTest, LastOfEqualKeysWins)
{
    const auto object = parseJsonObject(R"({"a":1,"a":"x"})");
    ASSERT_TRUE(object.has_value());
    EXPECT_EQ(stringMember(*object, "a"), u"x"_s);
}

TEST(JsonTest, NestsUpToTheLimitAndNoDeeper)
{
    const auto nested = [](std::size_t depth) {
        const auto size = static_cast<qsizetype>(depth);
        return QByteArray(size, '[') + QByteArray(size, ']');
    };
    EXPECT_TRUE(parseJson(nested(maximumJsonDepth)).has_value());
    EXPECT_FALSE(parseJson(nested(maximumJsonDepth + 1)).has_value());
    EXPECT_FALSE(parseJson(nested(1'000'000)).has_value());
}

TEST(JsonTest, RefusesNumbersBeyondTheRangeOfDoubles)
{
    EXPECT_FALSE(parseJson("1e999").has_value());
    EXPECT_FALSE(parseJson("-1e999").has_value());
    EXPECT_FALSE(parseJson("1E99999999999").has_value());
    EXPECT_FALSE(parseJson(QByteArray(400, '9')).has_value());
}

TEST(JsonTest, NumbersTooSmallToTellFromZeroAreZero)
{
    const auto tiny = parseJson("[1e-999,-1e-999]");
    ASSERT_TRUE(tiny.has_value());
    EXPECT_EQ(tiny->at(0).as_double(), 0.0);
    EXPECT_TRUE(std::signbit(tiny->at(1).as_double()));
}

TEST(JsonTest, ReadsTheNearestDouble)
{
    for (const char *text :
         {"0.1", "5.0E-324", "1.7976931348623157e308", "2.2250738585072014e-308", "7450580596923828125e-27",
          "785234567.12345678901234567890", "9007199254740993.0", "1.00000000000000011102230246251565"}) {
        const auto value = parseJson(text);
        ASSERT_TRUE(value.has_value()) << text;
        EXPECT_EQ(value->as_double(), std::strtod(text, nullptr)) << text;
    }
    const QByteArray manyZeros = "0." + QByteArray(68, '0') + "1e60";
    EXPECT_EQ(parseJson(manyZeros)->as_double(), 1e-9);
}

TEST(JsonTest, EveryDoubleSurvivesWritingAndReading)
{
    std::mt19937_64 random(20010101);
    for (int i = 0; i < 100'000; ++i) {
        const std::uint64_t bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        if (!std::isfinite(number))
            continue;
        const auto read = parseJson(serializeJson(json::value(number)));
        ASSERT_TRUE(read.has_value());
        ASSERT_EQ(read->as_double(), number);
    }
}

TEST(JsonTest, SerializesTextsOfAnyLength)
{
    const json::string large(3'000'000, 'x');
    const QByteArray bytes = serializeJson(json::value(large));
    EXPECT_EQ(bytes.size(), 3'000'002);
    const auto read = parseJson(bytes);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->as_string(), large);
}

TEST(JsonTest, TextsSurviveWithNullsQuotesAndEmoji)
{
    const QString text = u"a\"\\\n\t🙂é"_s + QChar(0) + QChar(0x2028);
    const auto read = parseJson(serializeJson(json::value(jsonFromText(text))));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(textFromJson(read->as_string()), text);
}

TEST(JsonTest, SurrogateWithoutPartnerIsWrittenAsAQuestionMark)
{
    const QString broken = u"a"_s + QChar(0xd83d);
    const QByteArray bytes = serializeJson(json::value(jsonFromText(broken)));
    EXPECT_EQ(bytes, QByteArray("\"a?\""));
}

TEST(JsonTest, MembersAreReadOnlyWithTheirType)
{
    const auto object = parseJsonObject(
        R"({"text":"x","number":1.5,"integer":3,"yes":true,"none":null,"list":[1],"map":{"a":1}})");
    ASSERT_TRUE(object.has_value());
    EXPECT_EQ(stringMember(*object, "text"), u"x"_s);
    EXPECT_EQ(stringMember(*object, "number"), std::nullopt);
    EXPECT_EQ(stringMember(*object, "none"), std::nullopt);
    EXPECT_EQ(stringMember(*object, "absent"), std::nullopt);
    EXPECT_EQ(booleanMember(*object, "yes"), true);
    EXPECT_EQ(booleanMember(*object, "integer"), std::nullopt);
    EXPECT_EQ(integerMember(*object, "integer"), 3);
    EXPECT_EQ(integerMember(*object, "number"), std::nullopt);
    EXPECT_EQ(integerMember(*object, "yes"), std::nullopt);
    EXPECT_EQ(numberMember(*object, "number"), 1.5);
    EXPECT_EQ(numberMember(*object, "integer"), 3.0);
    EXPECT_EQ(numberMember(*object, "text"), std::nullopt);
    ASSERT_NE(arrayMember(*object, "list"), nullptr);
    EXPECT_EQ(arrayMember(*object, "map"), nullptr);
    ASSERT_NE(objectMember(*object, "map"), nullptr);
    EXPECT_EQ(objectMember(*object, "list"), nullptr);
    EXPECT_EQ(objectMember(*object, "absent"), nullptr);
}

TEST(JsonTest, IntegersMayBeWrittenAsDoubles)
{
    EXPECT_EQ(integerFromJson(*parseJson("5.0")), 5);
    EXPECT_EQ(integerFromJson(*parseJson("1e3")), 1000);
    EXPECT_EQ(integerFromJson(*parseJson("-0.0")), 0);
    EXPECT_EQ(integerFromJson(*parseJson("5.5")), std::nullopt);
    EXPECT_EQ(integerFromJson(*parseJson("9223372036854775807")), std::numeric_limits<qint64>::max());
    EXPECT_EQ(integerFromJson(*parseJson("9223372036854775808")), std::nullopt);
    EXPECT_EQ(integerFromJson(*parseJson("9.3e18")), std::nullopt);
    EXPECT_EQ(integerFromJson(*parseJson("1e300")), std::nullopt);
    EXPECT_EQ(integerFromJson(*parseJson("-9223372036854775808")), std::numeric_limits<qint64>::min());
}

TEST(JsonTest, ATextReadInPlaceGivesTheSame)
{
    // Longer than what the parser puts together at a time, with escapes of every length.
    const QByteArray some = R"(plain \n \"quoted\" \u00e4 \u8a9e \ud83d\ude00 ä語😀 )";
    const QByteArray words = some.repeated(2'000);
    const QByteArray text = R"({"short":"a","esc\naped \u8a9e":"\t","long":")" + words +
                            R"(","list":[1,-2.5e3,true,null,")" + some + R"("],"again":")" + words +
                            QByteArray(10'000, 'x') + R"(","deep":{"":"","number":0.30000000000000004}})";
    ASSERT_TRUE(parseJsonObject(text).has_value());
    for (const QByteArray &each : {text, QByteArray("\xEF\xBB\xBF") + text, text.chopped(1), text + "x",
                                   QByteArray("[]"), QByteArray("{}"), QByteArray(),
                                   QByteArray(R"({"a":"\ud800"})"), QByteArray("{\"a\":\"\\n\xFF\"}")}) {
        QByteArray room(each.constData(), each.size());
        EXPECT_EQ(parseJsonObjectInPlace({room.data(), std::size_t(room.size())}), parseJsonObject(each))
            << each.left(50).constData();
    }
}

TEST(JsonTest, ParsesOnlyObjectsWhereAnObjectIsAsked)
{
    EXPECT_TRUE(parseJsonObject("{}").has_value());
    EXPECT_EQ(parseJsonObject("[]").error(), u"not an object"_s);
    EXPECT_FALSE(parseJsonObject("{").has_value());
}

} // namespace
} // namespace morvane
