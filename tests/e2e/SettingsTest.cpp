#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The settings window, by the names of its controls.
class SettingsTest : public MorvaneTest {
protected:
    static ScriptedTurn listOf(const std::vector<std::string> &names)
    {
        std::string entries;
        for (const std::string &name : names)
            entries += (entries.empty() ? "" : ",") + ("{\"id\":\"" + name + "\"}");
        return ScriptedTurn::failing(200, "{\"data\":[" + entries + "]}");
    }

    /// The program with a provider that cannot be reached, beside a server that serves two lists of models.
    MorvaneSession &startElsewhere()
    {
        ModelScript script;
        script.turns = {ScriptedTurn::saying({"Heard."})};
        script.routes = {{"GET /v1/models", listOf({"gamma", "Alpha-chat", "beta-chat"})},
                         {"GET /v2/models", listOf({"delta"})}};
        MorvaneSession &morvane = prepareScript(std::move(script));
        morvane.setSetting(u"provider"_s, u"openai"_s);
        morvane.setSetting(u"model"_s, u"gpt-5-mini"_s);
        morvane.start();
        return morvane;
    }

    /// The content of the picker of this name, now or soon.
    static bool reads(MorvaneSession &morvane, const QString &picker, const QString &text)
    {
        return waitUntil([&] { return morvane.program().find(picker).text() == text; });
    }

    /// The models that were asked for answers.
    static std::vector<std::string> askedModels(MorvaneSession &morvane)
    {
        std::vector<std::string> models;
        for (const ScriptedRequest &request : morvane.model().requests())
            if (request.turn >= 0)
                models.emplace_back(request.json.at("model").as_string());
        return models;
    }
};

TEST_F(SettingsTest, TheWindowFitsASmallScreenAtScaleTwo)
{
    MorvaneSession &morvane = prepare({});
    morvane.setVariable(u"QT_SCALE_FACTOR"_s, u"2"_s);
    morvane.start();
    const XConnection &screen = morvane.screen();
    const xcb_window_t first = screen.activeWindow();
    openSettings(morvane);
    const auto sizeOf = [&](xcb_window_t window) {
        const std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> reply(
            xcb_get_geometry_reply(screen.handle(), xcb_get_geometry(screen.handle(), window), nullptr),
            &std::free);
        return reply ? QSize(reply->width, reply->height) : QSize();
    };
    ASSERT_TRUE(waitUntil([&] { return screen.activeWindow() != first && screen.activeWindow() != 0; }));
    const QSize size = sizeOf(screen.activeWindow());
    const QSize room = sizeOf(screen.root());
    EXPECT_FALSE(size.isEmpty());
    EXPECT_LE(size.width(), room.width());
    EXPECT_LT(size.height(), room.height());
}

TEST_F(SettingsTest, AProviderAndAModelOfItsListAreChosenAndAsked)
{
    MorvaneSession &morvane = startElsewhere();
    openSettings(morvane);
    ASSERT_TRUE(reads(morvane, u"Model for OpenAI"_s, u"gpt-5-mini"_s));
    morvane.program().find(u"Custom"_s).act(u"Toggle"_s);
    ASSERT_TRUE(morvane.program().shows(u"3 models from your server, free ones first."_s));
    const auto picker = u"Model for Custom"_s;
    EXPECT_TRUE(reads(morvane, picker, u"Custom"_s)) << "the default model is the empty text";

    morvane.program().find(picker).takeFocus();
    ASSERT_TRUE(morvane.program().focuses(picker));
    morvane.keyboard().type(u"beta"_s);
    ASSERT_TRUE(morvane.program().shows(u"Search: beta"_s));
    ASSERT_TRUE(morvane.program().focuses(u"beta-chat"_s));
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(reads(morvane, picker, u"beta-chat"_s));

    morvane.keyboard().press(u"Escape"_s);
    ASSERT_TRUE(morvane.program().hides(u"Morvane Settings"_s));
    morvane.send(u"Which model are you?"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said Heard."_s));
    EXPECT_EQ(askedModels(morvane), std::vector<std::string>{"beta-chat"});
}

TEST_F(SettingsTest, AnotherBaseURLBringsItsList)
{
    MorvaneSession &morvane = startElsewhere();
    openSettings(morvane);
    morvane.program().find(u"Custom"_s).act(u"Toggle"_s);
    ASSERT_TRUE(morvane.program().shows(u"3 models from your server, free ones first."_s));
    const AccessibleElement url = morvane.program().find(u"API base URL"_s, AccessibleRole::text);
    url.takeFocus();
    ASSERT_TRUE(morvane.program().focuses(u"API base URL"_s));
    morvane.keyboard().press(u"BackSpace"_s);
    morvane.keyboard().type(u"2"_s);
    EXPECT_TRUE(waitUntil([&] { return url.text().endsWith(u"/v2"_s); }));
    EXPECT_TRUE(morvane.program().shows(u"1 models from your server, free ones first."_s));
}

TEST_F(SettingsTest, AKeyTypedHereIsSentAndStaysHiddenOnTheScreen)
{
    ModelScript script;
    script.turns = {ScriptedTurn::saying({"Heard."})};
    MorvaneSession &morvane = prepareScript(std::move(script));
    morvane.start();
    openSettings(morvane);
    const AccessibleElement key = morvane.program().find(u"Custom API key"_s, AccessibleRole::passwordText);
    key.takeFocus();
    ASSERT_TRUE(morvane.program().focuses(u"Custom API key"_s));
    morvane.keyboard().type(u"secret"_s);
    morvane.program().find(u"Show API key"_s).press();
    EXPECT_EQ(morvane.program().find(u"Custom API key"_s, AccessibleRole::text).text(), u"secret"_s);
    morvane.program().find(u"Hide API key"_s).press();
    EXPECT_TRUE(morvane.program().shows(u"Show API key"_s));
    morvane.keyboard().press(u"Escape"_s);
    ASSERT_TRUE(morvane.program().hides(u"Morvane Settings"_s));
    morvane.send(u"Hello"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane said Heard."_s));
    for (const ScriptedRequest &request : morvane.model().requests())
        if (request.turn == 0)
            EXPECT_EQ(request.headers.at("authorization"), "Bearer secret");
}

TEST_F(SettingsTest, NoControlLacksAName)
{
    MorvaneSession &morvane = startElsewhere();
    openSettings(morvane);
    EXPECT_THAT(nameless(morvane), testing::IsEmpty());
}

} // namespace
} // namespace morvane
