#include "providers/SchemaTools.h"

#include "ProviderTestData.h"

namespace morvane {
namespace {

QByteArray compacted(QByteArrayView schema)
{
    return serializeJson(compactSchema(jsonOf(schema).as_object()));
}

QByteArray merged(QByteArrayView target, QByteArrayView source)
{
    boost::json::object result = jsonOf(target).as_object();
    deepMerge(result, jsonOf(source).as_object());
    return serializeJson(result);
}

TEST(CompactSchema, RemovesDescriptionsAndKeepsTheRestInOrder)
{
    EXPECT_EQ(
        compacted(R"({"type":"object","description":"d","properties":{)"
                  R"("path":{"description":"d","type":"string","enum":["a"]},"n":{"type":"integer"}},)"
                  R"("required":["path"]})"),
        R"({"type":"object","properties":{"path":{"type":"string","enum":["a"]},"n":{"type":"integer"}},)"
        R"("required":["path"]})");
}

TEST(CompactSchema, SchemaWithoutPropertiesLosesOnlyItsDescription)
{
    EXPECT_EQ(compacted(R"({"description":"d","type":"string"})"), R"({"type":"string"})");
    EXPECT_EQ(compacted(R"({"description":"d","properties":7})"), R"({"properties":7})");
    EXPECT_EQ(compacted("{}"), "{}");
}

TEST(CompactSchema, ItemsAreCompactedInTurn)
{
    EXPECT_EQ(compacted(R"({"properties":{"list":{"type":"array","items":{"description":"d","type":"object",)"
                        R"("properties":{"x":{"description":"d","type":"string"}}}}}})"),
              R"({"properties":{"list":{"type":"array","items":{"type":"object",)"
              R"("properties":{"x":{"type":"string"}}}}}})");
}

TEST(CompactSchema, NestedPropertiesAreStrippedOneLevelDeep)
{
    EXPECT_EQ(compacted(R"({"properties":{"o":{"properties":{"a":{"description":"d","type":"object",)"
                        R"("properties":{"b":{"description":"kept"}}},"c":5}}}})"),
              R"({"properties":{"o":{"properties":{"a":{"type":"object",)"
              R"("properties":{"b":{"description":"kept"}}},"c":5}}}})");
}

TEST(CompactSchema, ParameterNamedDescriptionStays)
{
    EXPECT_EQ(compacted(R"({"properties":{"description":{"type":"string","description":"d"},"x":true}})"),
              R"({"properties":{"description":{"type":"string"},"x":true}})");
}

TEST(DeepMerge, ObjectsMergeAndEverythingElseIsReplaced)
{
    EXPECT_EQ(merged(R"({"a":{"x":1,"deep":{"p":1}},"b":[1,2],"c":1})",
                     R"({"a":{"y":2,"deep":{"q":2}},"b":[3],"d":null})"),
              R"({"a":{"x":1,"deep":{"p":1,"q":2},"y":2},"b":[3],"c":1,"d":null})");
}

TEST(DeepMerge, ObjectReplacesScalarAndScalarReplacesObject)
{
    EXPECT_EQ(merged(R"({"a":1,"b":{"x":1}})", R"({"a":{"x":1},"b":2})"), R"({"a":{"x":1},"b":2})");
}

TEST(DeepMerge, EmptySourceChangesNothing)
{
    EXPECT_EQ(merged(R"({"a":{"x":1}})", R"({"a":{}})"), R"({"a":{"x":1}})");
}

} // namespace
} // namespace morvane
