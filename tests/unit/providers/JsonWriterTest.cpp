#include "providers/JsonWriter.h"

#include "ProviderTestData.h"

#include <limits>

namespace morvane {
namespace {

TEST(JsonWriter, PutsCommasWhereTheyBelong)
{
    JsonWriter json(0);
    json.beginObject();
    json.key("a");
    json.beginArray();
    json.integer(1);
    json.null();
    json.boolean(false);
    json.beginObject();
    json.endObject();
    json.endArray();
    json.member("b", "x");
    json.member("c", true);
    json.endObject();
    EXPECT_EQ(json.take(), R"({"a":[1,null,false,{}],"b":"x","c":true})");
}

TEST(JsonWriter, EscapesExactlyWhatMustBeEscaped)
{
    JsonWriter json(0);
    json.string(std::string_view("\"\\/\b\f\n\r\t\x01\x1f\x7f\0é", 14));
    EXPECT_EQ(json.take(), "\"\\\"\\\\/\\u0008\\u000c\\n\\r\\t\\u0001\\u001f\x7f\\u0000\xC3\xA9\"");
}

TEST(JsonWriter, DoublesReadBackExactly)
{
    for (double number : {0.0, 0.1, 0.7, 1.0, -2.5, 1e300, 5e-324, std::numeric_limits<double>::max()}) {
        JsonWriter json(0);
        json.number(number);
        EXPECT_EQ(jsonOf(json.take()).to_number<double>(), number);
    }
}

TEST(JsonWriter, DataUrlEscapesTheMediaType)
{
    JsonWriter json(0);
    json.dataURL(u"a\"b", "x");
    EXPECT_EQ(json.take(), R"("data:a\"b;base64,eA==")");
}

} // namespace
} // namespace morvane
