#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>

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
        morvane.setSetting(QStringLiteral("provider"), QStringLiteral("openai"));
        morvane.setSetting(QStringLiteral("model"), QStringLiteral("gpt-5-mini"));
        morvane.start();
        return morvane;
    }

    static void openSettings(MorvaneSession &morvane)
    {
        morvane.program().find(QStringLiteral("Settings"), AccessibleRole::pushButton).press();
        morvane.program().find(
            [](const AccessibleNode &node) {
                return node.role == AccessibleRole::frame && node.name == QLatin1String("Morvane Settings") &&
                       node.has(AccessibleState::active);
            },
            QStringLiteral("that is the active settings window"));
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
        for (const ScriptedRequest &request : morvane.model().requests()) {
            if (request.turn >= 0)
                models.emplace_back(request.json.at("model").as_string());
        }
        return models;
    }
};

TEST_F(SettingsTest, AProviderAndAModelOfItsListAreChosenAndAsked)
{
    MorvaneSession &morvane = startElsewhere();
    openSettings(morvane);
    ASSERT_TRUE(reads(morvane, QStringLiteral("Model for OpenAI"), QStringLiteral("gpt-5-mini")));
    morvane.program().find(QStringLiteral("Custom")).act(QStringLiteral("Toggle"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("3 models from your server, free ones first.")));
    const auto picker = QStringLiteral("Model for Custom");
    EXPECT_TRUE(reads(morvane, picker, QStringLiteral("Custom"))) << "the default model is the empty text";

    morvane.program().find(picker).takeFocus();
    ASSERT_TRUE(morvane.program().focuses(picker));
    morvane.keyboard().type(QStringLiteral("beta"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Search: beta")));
    ASSERT_TRUE(morvane.program().focuses(QStringLiteral("beta-chat")));
    morvane.keyboard().press(QStringLiteral("Return"));
    ASSERT_TRUE(reads(morvane, picker, QStringLiteral("beta-chat")));

    morvane.keyboard().press(QStringLiteral("Escape"));
    ASSERT_TRUE(morvane.program().hides(QStringLiteral("Morvane Settings")));
    morvane.send(QStringLiteral("Which model are you?"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Heard.")));
    EXPECT_EQ(askedModels(morvane), std::vector<std::string>{"beta-chat"});
}

TEST_F(SettingsTest, AnotherBaseURLBringsItsList)
{
    MorvaneSession &morvane = startElsewhere();
    openSettings(morvane);
    morvane.program().find(QStringLiteral("Custom")).act(QStringLiteral("Toggle"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("3 models from your server, free ones first.")));
    const AccessibleElement url =
        morvane.program().find(QStringLiteral("API base URL"), AccessibleRole::text);
    url.takeFocus();
    ASSERT_TRUE(morvane.program().focuses(QStringLiteral("API base URL")));
    morvane.keyboard().press(QStringLiteral("BackSpace"));
    morvane.keyboard().type(QStringLiteral("2"));
    EXPECT_TRUE(waitUntil([&] { return url.text().endsWith(QStringLiteral("/v2")); }));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("1 models from your server, free ones first.")));
}

TEST_F(SettingsTest, AKeyTypedHereIsSentAndStaysHiddenOnTheScreen)
{
    ModelScript script;
    script.turns = {ScriptedTurn::saying({"Heard."})};
    MorvaneSession &morvane = prepareScript(std::move(script));
    morvane.start();
    openSettings(morvane);
    const AccessibleElement key =
        morvane.program().find(QStringLiteral("Custom API key"), AccessibleRole::passwordText);
    key.takeFocus();
    ASSERT_TRUE(morvane.program().focuses(QStringLiteral("Custom API key")));
    morvane.keyboard().type(QStringLiteral("secret"));
    morvane.program().find(QStringLiteral("Show API key")).press();
    EXPECT_EQ(morvane.program().find(QStringLiteral("Custom API key"), AccessibleRole::text).text(),
              QStringLiteral("secret"));
    morvane.program().find(QStringLiteral("Hide API key")).press();
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Show API key")));
    morvane.keyboard().press(QStringLiteral("Escape"));
    ASSERT_TRUE(morvane.program().hides(QStringLiteral("Morvane Settings")));
    morvane.send(QStringLiteral("Hello"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Heard.")));
    for (const ScriptedRequest &request : morvane.model().requests()) {
        if (request.turn == 0) {
            EXPECT_EQ(request.headers.at("authorization"), "Bearer secret");
        }
    }
}

TEST_F(SettingsTest, NoControlLacksAName)
{
    MorvaneSession &morvane = startElsewhere();
    openSettings(morvane);
    QStringList nameless;
    morvane.program().tree().visit([&nameless](const AccessibleNode &node) {
        const bool isControl =
            node.role == AccessibleRole::pushButton || node.role == AccessibleRole::checkBox ||
            node.role == AccessibleRole::comboBox || node.role == AccessibleRole::spinButton ||
            node.has(AccessibleState::focusable);
        if (isControl && node.has(AccessibleState::showing) && node.name.isEmpty())
            nameless.append(node.description().trimmed());
    });
    EXPECT_TRUE(nameless.isEmpty()) << nameless.join(u'\n').toStdString();
}

} // namespace
} // namespace morvane
