#include "SettingsViewFixture.h"

#include "localmodel/LocalModelRecommendation.h"
#include "providers/Endpoints.h"
#include "ui/controls/StepSlider.h"

#include <QAccessible>
#include <QCheckBox>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Key, local model, behaviour, allowed tools, accessibility, privacy and version.
class SettingsSectionsTest : public SettingsViewFixture {
protected:
    /// The state of the local model that the flow reads on its next look.
    void refreshLocalModel()
    {
        model->localModel().refreshLocalModel();
        settle();
    }
};

TEST_F(SettingsSectionsTest, KeySectionIsNotThereForTheLocalProviderAndTheLocalSectionOnlyThere)
{
    choose(ProviderID::ollama);
    EXPECT_EQ(named<QLineEdit>(u"Local (Ollama) API key"_s), nullptr);
    EXPECT_NE(named<QWidget>(u"Built-in Local Model"_s), nullptr);
    for (const ProviderID provider : allProviders) {
        if (provider == ProviderID::ollama)
            continue;
        choose(provider);
        EXPECT_NE(named<QLineEdit>(displayName(provider) + " API key"), nullptr);
        EXPECT_EQ(named<QWidget>(u"Built-in Local Model"_s), nullptr);
    }
}

TEST_F(SettingsSectionsTest, KeyIsHiddenUntilItIsShown)
{
    choose(ProviderID::openai);
    auto *key = named<QLineEdit>(u"OpenAI API key"_s);
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
    named<QPushButton>(u"Show API key"_s)->click();
    EXPECT_EQ(key->echoMode(), QLineEdit::Normal);
    retype(key, "typed in clear");
    EXPECT_EQ(settings->apiKey(), "typed in clear");
    named<QPushButton>(u"Hide API key"_s)->click();
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
}

TEST_F(SettingsSectionsTest, KeyIsCoveredAgainWhenTheWindowClosesOrTheProviderChanges)
{
    choose(ProviderID::openai);
    named<QPushButton>("Show API key")->click();
    view->close();
    view->show();
    EXPECT_EQ(named<QLineEdit>("OpenAI API key")->echoMode(), QLineEdit::Password);
    named<QPushButton>("Show API key")->click();
    choose(ProviderID::groq);
    EXPECT_EQ(named<QLineEdit>("Groq API key")->echoMode(), QLineEdit::Password);
}

TEST_F(SettingsSectionsTest, AKeyPastedWithALineEndIsStoredWithoutIt)
{
    choose(ProviderID::openai);
    auto *key = named<QLineEdit>("OpenAI API key");
    key->setFocus();
    key->insert(QString());
    retype(key, " sk-1 ");
    EXPECT_EQ(settings->apiKey(), "sk-1");
    EXPECT_EQ(key->text(), " sk-1 ");
}

TEST_F(SettingsSectionsTest, TheSignupPageOpensOutsideAndIsNotThereForACustomServer)
{
    EXPECT_EQ(named<QPushButton>("Free API key"), nullptr);
    EXPECT_TRUE(shows("API Key (optional)"));
    choose(ProviderID::zen);
    EXPECT_TRUE(shows("API Key"));
    named<QPushButton>("Free API key")->click();
    EXPECT_EQ(urls.opened, QList<QUrl>{QUrl(Endpoints().signupURL(ProviderID::zen))});
}

TEST_F(SettingsSectionsTest, WhereTheKeyGoesIsTold)
{
    EXPECT_TRUE(
        shows("Your key is stored on this Mac and is sent only to the server you configured. It is kept "
              "out of the Keychain so macOS does not ask for a password on every launch."));
    choose(ProviderID::openai);
    EXPECT_TRUE(
        shows("Your key is stored on this Mac and is sent only to OpenAI. It is kept out of the Keychain "
              "so macOS does not ask for a password on every launch."));
}

TEST_F(SettingsSectionsTest, TheMachineIsToldAndItsModelsAreRecommended)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    choose(ProviderID::ollama);
    EXPECT_NE(named<QLabel>("Your Mac. Test machine."), nullptr);
    EXPECT_TRUE(shows("Recommended models for your Mac"));
    EXPECT_TRUE(
        shows("Pick the model you want to use. It downloads once and then runs fully on your Mac with no "
              "limits."));
    for (const LocalModelRecommendation &one : recommendations(16)) {
        EXPECT_NE(named<QWidget>(one.name), nullptr) << qPrintable(one.name);
        EXPECT_TRUE(shows(one.badge));
        EXPECT_TRUE(shows(one.note));
    }
    EXPECT_TRUE(shows("~4.7 GB download · needs 8 GB RAM"));
}

TEST_F(SettingsSectionsTest, TheModelInUseIsTheActiveOne)
{
    localModel.serverRunning = true;
    localModel.models = QStringList{"qwen2.5", "qwen3:4b"};
    choose(ProviderID::ollama);
    EXPECT_TRUE(shows("The local model is ready. No limits, nothing leaves this Mac."));
    EXPECT_NE(named<QLabel>("qwen2.5 is active"), nullptr);
    EXPECT_EQ(named<QLabel>("qwen3:4b is active"), nullptr);
    EXPECT_EQ(named<QPushButton>("Install the built-in local model"), nullptr);
    EXPECT_EQ(named<QProgressBar>("Download progress"), nullptr);
    EXPECT_FALSE(shows("Local model error: "));
    settings->setModel(" qwen2.5:latest");
    EXPECT_NE(named<QLabel>("qwen2.5 is active"), nullptr);
    settings->setModel("qwen3:4b");
    EXPECT_EQ(named<QLabel>("qwen2.5 is active"), nullptr);
    EXPECT_NE(named<QLabel>("qwen3:4b is active"), nullptr);
    localModel.serverRunning = false;
    refreshLocalModel();
    EXPECT_EQ(named<QLabel>("qwen3:4b is active"), nullptr);
    EXPECT_FALSE(shows("The local model is ready. No limits, nothing leaves this Mac."));
}

TEST_F(SettingsSectionsTest, TheMemoryOfTheModelCanBeFreedWhileItIsReady)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    choose(ProviderID::ollama);
    EXPECT_TRUE(shows("It stays in memory when Morvane ends, so that the next answer comes at once. Memory "
                      "that you free here is taken again by the next message."));
    named<QPushButton>("Free the memory of the local model")->click();
    settle();
    EXPECT_EQ(localModel.unloaded, QStringList("qwen2.5"));
    localModel.serverRunning = false;
    refreshLocalModel();
    EXPECT_EQ(named<QPushButton>("Free the memory of the local model"), nullptr);
}

TEST_F(SettingsSectionsTest, AChosenModelThatIsNotThereIsOfferedAndNotCalledActive)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    choose(ProviderID::ollama);
    settings->setModel("qwen3:4b");
    EXPECT_EQ(named<QLabel>("qwen3:4b is active"), nullptr);
    EXPECT_NE(named<QPushButton>("Download qwen3:4b"), nullptr);
}

TEST_F(SettingsSectionsTest, NothingIsInstalledDuringADownload)
{
    localModel.failure = "No room.";
    choose(ProviderID::ollama);
    auto *install = named<QPushButton>("Install the built-in local model");
    ASSERT_TRUE(install->isEnabled());
    localModel.failure.clear();
    localModel.pullTime = std::chrono::hours(1);
    named<QPushButton>("Download qwen3:4b")->click();
    settle();
    EXPECT_FALSE(install->isEnabled());
}

TEST_F(SettingsSectionsTest, AnInstallationShowsItsProgress)
{
    localModel.installationTime = std::chrono::hours(1);
    choose(ProviderID::ollama);
    EXPECT_NE(named<QLabel>("Installing the local model. Starting Ollama…"), nullptr);
    EXPECT_TRUE(shows("Starting Ollama…"));
    auto *bar = named<QProgressBar>("Download progress");
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->maximum(), 0);
    localModel.progress("Downloading Ollama… 70 MB of 1000 MB (7%)", 0.07);
    EXPECT_EQ(bar->accessibleName(), "Download progress 7%");
    EXPECT_NE(named<QLabel>("Installing the local model. Downloading Ollama… 70 MB of 1000 MB (7%)"),
              nullptr);
    EXPECT_EQ(named<QPushButton>("Install the built-in local model"), nullptr);
}

TEST_F(SettingsSectionsTest, AFailedInstallationTellsWhyAndCanBeTriedAgain)
{
    localModel.failure = "No room.";
    choose(ProviderID::ollama);
    EXPECT_TRUE(shows("Local model error: No room."));
    auto *install = named<QPushButton>("Install the built-in local model");
    ASSERT_NE(install, nullptr);
    localModel.failure.clear();
    install->click();
    settle();
    EXPECT_FALSE(shows("Local model error: No room."));
    EXPECT_TRUE(shows("The local model is ready. No limits, nothing leaves this Mac."));
}

TEST_F(SettingsSectionsTest, AModelIsDownloadedAndBecomesTheActiveOne)
{
    localModel.serverRunning = true;
    localModel.models = QStringList("qwen2.5");
    choose(ProviderID::ollama);
    EXPECT_EQ(named<QPushButton>("Download qwen2.5"), nullptr);
    auto *download = named<QPushButton>("Download qwen3:4b");
    ASSERT_NE(download, nullptr);
    localModel.pullTime = std::chrono::hours(1);
    download->click();
    settle();
    EXPECT_TRUE(shows("Downloading qwen3:4b\nDownloading model… 42%"));
    EXPECT_NE(named<QProgressBar>("Download progress 42%"), nullptr);
    EXPECT_EQ(named<QPushButton>("Download qwen3:4b"), nullptr);
    // What would do nothing meanwhile cannot be pressed.
    EXPECT_FALSE(named<QPushButton>("Download llama3.1:8b")->isEnabled());
    EXPECT_FALSE(named<QPushButton>("Delete the qwen2.5 model from this Mac")->isEnabled());
    clock.advance(std::chrono::hours(1));
    settle();
    EXPECT_EQ(settings->model(), "qwen3:4b");
    EXPECT_NE(named<QLabel>("qwen3:4b is active"), nullptr);
    EXPECT_TRUE(named<QPushButton>("Download llama3.1:8b")->isEnabled());
}

TEST_F(SettingsSectionsTest, AModelIsDeletedWhenThatIsConfirmed)
{
    localModel.serverRunning = true;
    localModel.models = QStringList{"qwen2.5", "qwen3:4b"};
    choose(ProviderID::ollama);
    const auto answer = [this](const QString &text) {
        auto *question = view->findChild<QMessageBox *>();
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(question->text(), "Delete the qwen3:4b model?");
        EXPECT_EQ(question->informativeText(),
                  "This frees disk space but you will need to download the model again before using it.");
        // Neither Return nor Escape deletes anything.
        EXPECT_EQ(question->defaultButton(), question->button(QMessageBox::Cancel));
        EXPECT_EQ(question->escapeButton(), question->button(QMessageBox::Cancel));
        for (QAbstractButton *button : question->buttons())
            if (button->text().remove(u'&') == text)
                button->click();
        settle();
        EXPECT_TRUE(waitUntil([this] { return !view->findChild<QMessageBox *>(); }));
    };
    named<QPushButton>("Delete the qwen3:4b model from this Mac")->click();
    answer("Cancel");
    EXPECT_TRUE(localModel.removed.isEmpty());
    named<QPushButton>("Delete the qwen3:4b model from this Mac")->click();
    answer("Delete");
    EXPECT_EQ(localModel.removed, QStringList("qwen3:4b"));
    EXPECT_EQ(named<QPushButton>("Delete the qwen3:4b model from this Mac"), nullptr);
    EXPECT_NE(named<QPushButton>("Download qwen3:4b"), nullptr);
}

TEST_F(SettingsSectionsTest, TemperatureMovesInTenths)
{
    auto *slider = named<StepSlider>(u"Creativity temperature"_s);
    ASSERT_NE(slider, nullptr);
    slider->setValue(3);
    EXPECT_EQ(settings->temperature(), 0.3);
    EXPECT_TRUE(shows("Creativity (temperature): 0.3"));
    const QAccessibleInterface *heard = QAccessible::queryAccessibleInterface(slider);
    EXPECT_EQ(heard->text(QAccessible::Value), u"Creativity temperature 0.3"_s);
    EXPECT_TRUE(heard->text(QAccessible::Description).isEmpty()); // which would say the name again
    settings->setTemperature(0.9);
    EXPECT_EQ(slider->value(), 9);
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Home);
    EXPECT_EQ(settings->temperature(), 0.0);
    QTest::keyClick(slider, Qt::Key_End);
    EXPECT_EQ(settings->temperature(), 1.0);
}

TEST_F(SettingsSectionsTest, AReaderHearsTheTemperatureItself)
{
    auto *slider = named<StepSlider>("Creativity temperature");
    settings->setTemperature(0.3);
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(slider);
    EXPECT_EQ(interface->role(), QAccessible::Slider);
    EXPECT_EQ(interface->text(QAccessible::Value), "Creativity temperature 0.3");
    EXPECT_TRUE(shows("Creativity (temperature): 0.3"));
    ASSERT_NE(interface->valueInterface(), nullptr);
    EXPECT_EQ(interface->valueInterface()->currentValue().toDouble(), 0.3);
    EXPECT_EQ(interface->valueInterface()->minimumValue().toDouble(), 0.0);
    EXPECT_EQ(interface->valueInterface()->maximumValue().toDouble(), 1.0);
    interface->valueInterface()->setCurrentValue(0.62);
    EXPECT_EQ(settings->temperature(), 0.6);
}

TEST_F(SettingsSectionsTest, StepsStayBetween8And200)
{
    auto *steps = named<QSpinBox>(u"Maximum steps per task"_s);
    ASSERT_NE(steps, nullptr);
    EXPECT_EQ(steps->text(), "25 steps");
    steps->stepUp();
    EXPECT_EQ(settings->maxSteps(), 26);
    steps->setValue(1);
    EXPECT_EQ(settings->maxSteps(), 8);
    steps->stepDown();
    EXPECT_EQ(settings->maxSteps(), 8);
    steps->setValue(1000);
    EXPECT_EQ(settings->maxSteps(), 200);
    steps->stepUp();
    EXPECT_EQ(settings->maxSteps(), 200);
}

TEST_F(SettingsSectionsTest, StepsAreThereOnlyWhileTheyLimitAnything)
{
    for (QCheckBox *box : view->findChildren<QCheckBox *>())
        if (box->text() == "Keep going until the task is done")
            box->click();
    EXPECT_TRUE(settings->unlimitedSteps());
    EXPECT_EQ(named<QSpinBox>(u"Maximum steps per task"_s), nullptr);
    EXPECT_FALSE(shows("How many tool actions one task may take before the assistant stops and reports."));
    settings->setUnlimitedSteps(false);
    EXPECT_NE(named<QSpinBox>(u"Maximum steps per task"_s), nullptr);
}

TEST_F(SettingsSectionsTest, SwitchesWriteThrough)
{
    named<QCheckBox>("Allow tools")->click();
    EXPECT_FALSE(settings->useTools());
    named<QCheckBox>("Speak responses")->click();
    EXPECT_FALSE(settings->announceResponses());
    settings->setUseTools(true);
    EXPECT_TRUE(named<QCheckBox>("Allow tools")->isChecked());
}

TEST_F(SettingsSectionsTest, RemovedToolAsksAgain)
{
    settings->setAlwaysAllowedTools({u"write_file"_s, u"edit_file"_s});
    settle();
    auto *remove = named<QPushButton>("Stop always allowing write_file");
    ASSERT_NE(remove, nullptr);
    EXPECT_EQ(remove->text(), "Remove");
    EXPECT_NE(named<QWidget>("Write files (write_file)"), nullptr);
    remove->click();
    settle();
    EXPECT_EQ(settings->alwaysAllowedTools(), QSet<QString>{u"edit_file"_s});
    EXPECT_EQ(named<QPushButton>("Stop always allowing write_file"), nullptr);
    EXPECT_EQ(view->focusWidget(), named<QPushButton>("Stop always allowing edit_file"));
    named<QPushButton>("Stop always allowing edit_file")->click();
    settle();
    EXPECT_TRUE(
        shows("Safe commands now run automatically. You are only asked when an action is destructive or "
              "could change your files. You can tick \"always allow\" on an approval to skip future "
              "prompts for that type of action."));
}

TEST_F(SettingsSectionsTest, NamesFromAFileThatSomebodyEditedDoNotSpoilTheWindow)
{
    const QString name = QString(5000, u'x') + "\n\n<b>bold</b>";
    const int before = view->width();
    settings->setAlwaysAllowedTools({name});
    settle();
    EXPECT_EQ(view->width(), before);
    EXPECT_LT(view->findChild<QWidget *>()->minimumSizeHint().width(), before);
    for (QPushButton *button : view->findChildren<QPushButton *>())
        if (button->accessibleName().startsWith("Stop always allowing"))
            button->click();
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(SettingsSectionsTest, WhatLeavesTheComputerIsTold)
{
    const QString text =
        "Your messages and the tools you use are sent to %1 so it can generate a response. Your "
        "API key is stored on this Mac and is sent only to your provider. With the local model, "
        "nothing leaves your computer at all. Conversations are saved on your Mac in Application "
        "Support and can be deleted anytime from the sidebar.";
    EXPECT_TRUE(shows(text.arg("your custom provider")));
    choose(ProviderID::gemini);
    EXPECT_TRUE(shows(text.arg("Google Gemini")));
}

TEST_F(SettingsSectionsTest, TheVersionIsReadOutInWords)
{
    QApplication::setApplicationVersion("2.3");
    QApplication::instance()->setProperty("buildNumber", 45);
    view.reset();
    open();
    EXPECT_TRUE(shows("Morvane 2.3 (build 45)"));
    EXPECT_NE(named<QLabel>("Morvane version 2.3, build 45"), nullptr);
    EXPECT_TRUE(shows("Check for updates anytime from the Morvane menu, or press Command-U."));
}

} // namespace
} // namespace morvane
