#include "support/ModelScript.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace morvane {
namespace {

TEST(ModelScript, ReadsEveryPartOfAScript)
{
    const ModelScript script = ModelScript::fromJson(R"({
        "turns": [{"text": ["a", "b"], "steps": [{"stall": true}, {"burst": 3}],
                   "calls": [{"name": "f", "arguments": {"x": 1}}], "finish": "length", "done": false,
                   "segment_bytes": 1, "line_end": "\r\n"}],
        "afterwards": {"status": 500, "headers": {"Retry-After": "0"}, "body": {"error": {}}},
        "title": "T",
        "rules": [{"system_begins": "S", "last_message_contains": "L", "turn": {"text": "r"}}],
        "routes": {"GET /v1/models": {"body": {"data": []}}},
        "ollama_version": "1", "models": ["m"]})");
    ASSERT_EQ(script.turns.size(), 1u);
    const ScriptedTurn &turn = script.turns[0];
    ASSERT_EQ(turn.steps.size(), 5u);
    EXPECT_EQ(std::get<step::Text>(turn.steps[1]).piece, "b");
    EXPECT_TRUE(std::holds_alternative<step::Stall>(turn.steps[2]));
    EXPECT_EQ(std::get<step::Burst>(turn.steps[3]).tokens, 3u);
    EXPECT_EQ(std::get<step::Call>(turn.steps[4]).call.argumentFragments,
              std::vector<std::string>{R"({"x":1})"});
    EXPECT_EQ(turn.finish, "length");
    EXPECT_FALSE(turn.doneMarker);
    EXPECT_EQ(turn.segmentBytes, 1u);
    EXPECT_EQ(turn.lineEnd, "\r\n");
    EXPECT_EQ(script.afterwards.value().status, 500);
    EXPECT_EQ(script.afterwards.value().body, R"({"error":{}})");
    EXPECT_EQ(script.title, "T");
    EXPECT_EQ(script.rules.at(0).lastMessageContains, "L");
    EXPECT_EQ(script.routes.at(0).first, "GET /v1/models");
    EXPECT_EQ(script.models, std::vector<std::string>{"m"});
}

TEST(ModelScript, RefusesUnknownKeysAndWrongTypes)
{
    for (const char *text :
         {"[]", R"({"turn":[]})", R"({"turns":[{"txt":"a"}]})", R"({"turns":[{"text":1}]})",
          R"({"turns":[{"steps":[{"text":"a","stall":true}]}]})", R"({"turns":[{"steps":[{"burst":-1}]}]})",
          R"({"title":1})"})
        EXPECT_THROW(ModelScript::fromJson(text), std::runtime_error) << text;
}

} // namespace
} // namespace morvane
