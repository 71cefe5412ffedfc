#include "app/SettingsModel.h"

#include "providers/Endpoints.h"
#include "support/AppFixture.h"

namespace morvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using Question = FakeModelCatalog::Question;

class SettingsModelTest : public AppFixture {
protected:
    SettingsModelTest() { open(); }
    ~SettingsModelTest() override { settingsModel.reset(); }

    void open() { settingsModel = std::make_unique<SettingsModel>(*settingsServices, model->localModel()); }

    static CatalogModels list(const QStringList &names)
    {
        QList<CatalogModel> models;
        for (const QString &name : names)
            models.append({name, true});
        return models;
    }

    QStringList displayed() const
    {
        QStringList names;
        for (const ProviderModel &model : settingsModel->displayedModels())
            names.append(model.name);
        return names;
    }

    void load()
    {
        settingsModel->loadModelCatalog();
        settle();
    }

    /// Types into the base URL, a character at a time, with a pause after each.
    void typeBaseURL(const QString &text, std::chrono::milliseconds pause)
    {
        for (qsizetype length = 1; length <= text.size(); ++length) {
            settings->setCustomBaseURL(text.first(length));
            settle();
            clock.advance(pause);
            settle();
        }
    }

    std::unique_ptr<SettingsModel> settingsModel;
};

TEST_F(SettingsModelTest, APresetIsLeftWithItsAddress)
{
    settingsModel->chooseProvider(ProviderID::custom);
    const QString preset = customPresets().front().name;
    settingsModel->selectPreset(preset);
    EXPECT_EQ(settingsModel->selectedPreset(), preset);
    settings->setCustomBaseURL("https://example.org/v1");
    EXPECT_EQ(settingsModel->selectedPreset(), QString());
}

TEST_F(SettingsModelTest, WhoeverHasTypedAModelChoosesFromTheListAgainAfterAReset)
{
    settingsModel->chooseProvider(ProviderID::groq);
    const QString standard = defaultModel(ProviderID::groq);
    settingsModel->typeModel(standard);
    EXPECT_TRUE(settingsModel->isCustomSelected());
    settingsModel->resetModel();
    EXPECT_EQ(settingsModel->modelSelection(), standard);
    settingsModel->typeModel(standard);
    settingsModel->chooseProvider(ProviderID::gemini);
    EXPECT_EQ(settingsModel->modelSelection(), defaultModel(ProviderID::gemini));
}

TEST_F(SettingsModelTest, ShowsThePopularPicksUntilTheListIsThere)
{
    settingsModel->chooseProvider(ProviderID::groq);
    modelCatalog.lists.insert(ProviderID::groq, list({"a", "b"}));
    EXPECT_EQ(settingsModel->displayedModels(), curatedModels(ProviderID::groq));
    EXPECT_TRUE(settingsModel->loadingModels());
    EXPECT_EQ(settingsModel->listStatus(), "Loading the full model list…");
    settle();
    EXPECT_EQ(displayed(), QStringList({"a", "b"}));
    EXPECT_FALSE(settingsModel->loadingModels());
    EXPECT_EQ(settingsModel->listStatus(), "2 models from Groq, free ones first.");
}

TEST_F(SettingsModelTest, ShowsThePopularPicksWhenTheListCannotBeHad)
{
    settingsModel->chooseProvider(ProviderID::openai);
    settle();
    EXPECT_EQ(settingsModel->displayedModels(), curatedModels(ProviderID::openai));
    EXPECT_EQ(settingsModel->listStatus(),
              "Showing popular picks — the full list could not be loaded right now.");
}

TEST_F(SettingsModelTest, AnEmptyListShowsThePopularPicksToo)
{
    modelCatalog.lists.insert(ProviderID::zen, QList<CatalogModel>());
    settingsModel->chooseProvider(ProviderID::zen);
    settle();
    EXPECT_EQ(settingsModel->displayedModels(), curatedModels(ProviderID::zen));
}

TEST_F(SettingsModelTest, ANewLoadDropsTheOldList)
{
    modelCatalog.lists.insert(ProviderID::custom, list({"old"}));
    load();
    ASSERT_EQ(displayed(), QStringList("old"));
    settingsModel->loadModelCatalog();
    EXPECT_FALSE(settingsModel->fetchedModels().has_value());
    EXPECT_TRUE(settingsModel->loadingModels());
    settle();
    EXPECT_EQ(displayed(), QStringList("old"));
}

TEST_F(SettingsModelTest, TheCatalogIsAskedWithTheProvidersKeyAndTheBaseURL)
{
    settings->setApiKey("custom key");
    settings->setCustomBaseURL("http://127.0.0.1:1/v1");
    load();
    settingsModel->chooseProvider(ProviderID::groq);
    settings->setApiKey("groq key");
    load();
    EXPECT_EQ(modelCatalog.questions.first(),
              (Question{ProviderID::custom, "custom key", "http://127.0.0.1:1/v1"}));
    EXPECT_EQ(modelCatalog.questions.last(),
              (Question{ProviderID::groq, "groq key", "http://127.0.0.1:1/v1"}));
}

TEST_F(SettingsModelTest, ChangingTheProviderTakesItsDefaultModelAndLoadsItsList)
{
    settings->setProviderID(ProviderID::openai);
    settings->setModel("gpt-favourite");
    settingsModel->chooseProvider(ProviderID::groq);
    settingsModel->chooseProvider(ProviderID::openai);
    EXPECT_EQ(settings->model(), "gpt-5-mini");
    settle();
    EXPECT_EQ(modelCatalog.questions.last().provider, ProviderID::openai);
}

TEST_F(SettingsModelTest, ChoosingTheSameProviderAgainChangesNothing)
{
    settingsModel->chooseProvider(ProviderID::custom);
    settle();
    EXPECT_EQ(settings->model(), "scripted");
    EXPECT_TRUE(modelCatalog.questions.isEmpty());
}

TEST_F(SettingsModelTest, ALateListOfAnotherProviderIsDropped)
{
    modelCatalog.held = true;
    settingsModel->chooseProvider(ProviderID::groq);
    settle();
    settingsModel->chooseProvider(ProviderID::openai);
    settle();
    ASSERT_EQ(modelCatalog.questions.size(), 2);
    modelCatalog.answer(1, list({"of openai"}));
    settle();
    modelCatalog.answer(0, list({"of groq"}));
    settle();
    EXPECT_EQ(displayed(), QStringList("of openai"));
}

TEST_F(SettingsModelTest, AListThatComesAfterTheWindowClosedIsDropped)
{
    modelCatalog.held = true;
    settingsModel->loadModelCatalog();
    settle();
    settingsModel.reset();
    modelCatalog.answer(0, list({"late"}));
    settle();
    open();
    EXPECT_TRUE(displayed().isEmpty());
}

TEST_F(SettingsModelTest, ChoosingTheLocalModelReadsItsStateAndInstallsIt)
{
    settingsModel->chooseProvider(ProviderID::ollama);
    settle();
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_TRUE(model->localModel().info().running);
}

TEST_F(SettingsModelTest, ChoosingALocalModelThatIsThereInstallsNothing)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    settingsModel->chooseProvider(ProviderID::ollama);
    settle();
    EXPECT_EQ(localModel.installations, 0);
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(SettingsModelTest, LeavingTheLocalModelAtOnceInstallsNothing)
{
    settingsModel->chooseProvider(ProviderID::ollama);
    settingsModel->chooseProvider(ProviderID::groq);
    settle();
    EXPECT_EQ(localModel.installations, 0);
}

TEST_F(SettingsModelTest, AModelThatIsNotListedIsACustomOne)
{
    settingsModel->chooseProvider(ProviderID::openai);
    EXPECT_EQ(settingsModel->modelSelection(), "gpt-5-mini");
    settings->setModel("gpt-next");
    EXPECT_EQ(settingsModel->modelSelection(), "__custom__");
    settings->setModel("gpt-5");
    EXPECT_EQ(settingsModel->modelSelection(), "gpt-5");
}

TEST_F(SettingsModelTest, AFetchedListDecidesWhatIsListed)
{
    modelCatalog.lists.insert(ProviderID::openai, list({"gpt-next"}));
    settingsModel->chooseProvider(ProviderID::openai);
    settle();
    EXPECT_EQ(settingsModel->modelSelection(), "__custom__");
    settings->setModel("gpt-next");
    EXPECT_EQ(settingsModel->modelSelection(), "gpt-next");
}

TEST_F(SettingsModelTest, ChoosingCustomChangesNoSetting)
{
    settingsModel->chooseProvider(ProviderID::openai);
    settingsModel->selectModel("gpt-5");
    settingsModel->selectModel(QString::fromLatin1(SettingsModel::customTag));
    EXPECT_EQ(settings->model(), "gpt-5");
    EXPECT_TRUE(settingsModel->isCustomSelected());
    settingsModel->selectModel("gpt-5");
    EXPECT_FALSE(settingsModel->isCustomSelected());
}

TEST_F(SettingsModelTest, TypingPastAListedNameStaysCustom)
{
    settingsModel->chooseProvider(ProviderID::openai);
    for (const char *name : {"gpt-4", "gpt-5", "gpt-5-", "gpt-5-turbo"}) {
        settingsModel->typeModel(name);
        EXPECT_EQ(settings->model(), name);
        EXPECT_TRUE(settingsModel->isCustomSelected()) << name;
    }
}

TEST_F(SettingsModelTest, ResettingTakesTheProvidersDefault)
{
    settingsModel->chooseProvider(ProviderID::groq);
    settingsModel->typeModel("mine");
    settingsModel->resetModel();
    EXPECT_EQ(settings->model(), "llama-3.3-70b-versatile");
    EXPECT_FALSE(settingsModel->isCustomSelected());
}

TEST_F(SettingsModelTest, ACustomServerWithoutAddressSaysSoAndHasNoList)
{
    load();
    EXPECT_EQ(settingsModel->listStatus(), "Choose a preset or enter a base URL below to load its models.");
    EXPECT_TRUE(settingsModel->displayedModels().isEmpty());
    modelCatalog.lists.insert(ProviderID::custom, list({"a"}));
    settings->setCustomBaseURL("http://127.0.0.1:1/v1");
    load();
    EXPECT_EQ(settingsModel->listStatus(), "1 models from your server, free ones first.");
}

TEST_F(SettingsModelTest, APresetFillsInItsBaseURL)
{
    settingsModel->selectPreset("LM Studio");
    EXPECT_EQ(settings->customBaseURL(), "http://localhost:1234/v1");
    EXPECT_EQ(settingsModel->selectedPreset(), "LM Studio");
    settingsModel->selectPreset(QString());
    EXPECT_EQ(settings->customBaseURL(), "http://localhost:1234/v1");
    EXPECT_EQ(settingsModel->selectedPreset(), QString());
}

TEST_F(SettingsModelTest, AnAddressOfTheUsersOwnIsNoPreset)
{
    settingsModel->selectPreset("Mistral");
    settings->setModel("x");
    EXPECT_EQ(settingsModel->selectedPreset(), "Mistral");
    settings->setCustomBaseURL("https://api.mistral.ai/v2");
    EXPECT_EQ(settingsModel->selectedPreset(), QString());
}

TEST_F(SettingsModelTest, OnlyAnAddressThatIsNoneGetsTheWarning)
{
    EXPECT_FALSE(settingsModel->hasBaseURLWarning());
    settings->setCustomBaseURL("127.0.0.1:1234");
    EXPECT_TRUE(settingsModel->hasBaseURLWarning());
    settings->setCustomBaseURL("http://127.0.0.1:1234");
    EXPECT_FALSE(settingsModel->hasBaseURLWarning());
}

TEST_F(SettingsModelTest, TypingQuicklyLoadsOnceAfterThePause)
{
    typeBaseURL("http://127.0.0.1:1/v1", 100ms);
    EXPECT_TRUE(modelCatalog.questions.isEmpty());
    clock.advance(699ms); // 0.1 seconds of the pause have gone by
    settle();
    EXPECT_TRUE(modelCatalog.questions.isEmpty());
    clock.advance(1ms);
    settle();
    EXPECT_THAT(modelCatalog.questions,
                ElementsAre(Question{ProviderID::custom, QString(), "http://127.0.0.1:1/v1"}));
    clock.advance(10s);
    settle();
    EXPECT_EQ(modelCatalog.questions.size(), 1);
}

TEST_F(SettingsModelTest, TypingAKeyOfTheCustomServerLoadsAfterThePause)
{
    settings->setApiKey("k");
    settings->setApiKey("ke");
    settle();
    clock.advance(SettingsModel::typingPause);
    settle();
    EXPECT_THAT(modelCatalog.questions, ElementsAre(Question{ProviderID::custom, "ke", QString()}));
}

TEST_F(SettingsModelTest, TypingAKeyOfAnotherProviderLoadsNothing)
{
    settingsModel->chooseProvider(ProviderID::openai);
    settle();
    settings->setApiKey("key");
    settle();
    clock.advance(10s);
    settle();
    EXPECT_EQ(modelCatalog.questions.size(), 1);
}

TEST_F(SettingsModelTest, ATextThatIsBackWhereItWasLoadsOnceAllTheSame)
{
    settings->setCustomBaseURL("http://a");
    settle();
    settings->setCustomBaseURL("http://ab");
    settle();
    settings->setCustomBaseURL("http://a");
    settle();
    clock.advance(SettingsModel::typingPause);
    settle();
    EXPECT_EQ(modelCatalog.questions.size(), 1);
}

TEST_F(SettingsModelTest, LeavingTheCustomProviderDuringThePauseLoadsTheNewProviderOnly)
{
    settings->setCustomBaseURL("http://127.0.0.1:1/v1");
    settle();
    settingsModel->chooseProvider(ProviderID::zen);
    settle();
    clock.advance(10s);
    settle();
    ASSERT_EQ(modelCatalog.questions.size(), 1);
    EXPECT_EQ(modelCatalog.questions.first().provider, ProviderID::zen);
}

TEST_F(SettingsModelTest, ClosingTheWindowDuringThePauseLoadsNothing)
{
    settings->setCustomBaseURL("http://127.0.0.1:1/v1");
    settle();
    settingsModel.reset();
    settle();
    clock.advance(10s);
    settle();
    EXPECT_TRUE(modelCatalog.questions.isEmpty());
}

TEST_F(SettingsModelTest, OpensTheSignupPageOfTheProvider)
{
    settingsModel->chooseProvider(ProviderID::groq);
    settingsModel->openSignupPage();
    EXPECT_THAT(urls.opened, ElementsAre(QUrl(Endpoints().signupURL(ProviderID::groq))));
}

TEST_F(SettingsModelTest, AListThatStaysTheSameIsNotAnnouncedAsAnother)
{
    modelCatalog.lists.insert(ProviderID::custom, list({"a"}));
    load();
    int changes = 0;
    QObject::connect(settingsModel.get(), &SettingsModel::displayedModelsChanged, settingsModel.get(),
                     [&changes] { ++changes; });
    settings->setTemperature(0.2);
    settings->setModel("x");
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace morvane
