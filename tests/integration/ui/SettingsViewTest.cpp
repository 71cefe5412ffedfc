#include "support/AppFixture.h"

#include "ui/controls/SegmentButton.h"
#include "ui/controls/SegmentedPicker.h"
#include "ui/settings/SettingsView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

namespace morvane {
namespace {

class SettingsViewTest : public AppFixture {
protected:
    SettingsViewTest() : view(std::make_unique<SettingsView>(*model, nullptr)) { view->show(); }
    ~SettingsViewTest() override { view.reset(); }

    template <class Widget> Widget *named(const QString &accessibleName) const
    {
        for (Widget *widget : view->findChildren<Widget *>())
            if (widget->isVisible() && widget->accessibleName() == accessibleName)
                return widget;
        return nullptr;
    }

    void choose(ProviderID provider)
    {
        const auto place = std::find(allProviders.begin(), allProviders.end(), provider);
        auto *picker = named<SegmentedPicker>(QStringLiteral("Provider"));
        ASSERT_NE(picker, nullptr);
        Q_EMIT picker->chosen(static_cast<int>(place - allProviders.begin()));
    }

    void retype(QLineEdit *field, const QString &text)
    {
        field->clear();
        QTest::keyClicks(field, text);
    }

    std::unique_ptr<SettingsView> view;
};

TEST_F(SettingsViewTest, ChangingTheProviderSetsItsDefaultModel)
{
    settings->setModel(QStringLiteral("my favourite"));
    choose(ProviderID::openai);
    EXPECT_EQ(settings->providerID(), ProviderID::openai);
    EXPECT_EQ(settings->model(), QStringLiteral("gpt-5-mini"));
    choose(ProviderID::custom);
    EXPECT_EQ(settings->model(), QString());
}

TEST_F(SettingsViewTest, ChangingTheProviderLeavesTheKeysAlone)
{
    choose(ProviderID::openai);
    retype(named<QLineEdit>(QStringLiteral("OpenAI API key")), QStringLiteral("sk-one"));
    choose(ProviderID::groq);
    EXPECT_EQ(named<QLineEdit>(QStringLiteral("Groq API key"))->text(), QString());
    choose(ProviderID::openai);
    EXPECT_EQ(named<QLineEdit>(QStringLiteral("OpenAI API key"))->text(), QStringLiteral("sk-one"));
    EXPECT_EQ(settings->apiKey(), QStringLiteral("sk-one"));
}

TEST_F(SettingsViewTest, UnlistedModelShowsAsCustomWithItsNameInTheField)
{
    choose(ProviderID::openai);
    settings->setModel(QStringLiteral("gpt-next"));
    EXPECT_EQ(named<QComboBox>(QStringLiteral("Model for OpenAI"))->currentText(), QStringLiteral("Custom"));
    auto *name = named<QLineEdit>(QStringLiteral("Custom model name"));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->text(), QStringLiteral("gpt-next"));
    named<QPushButton>(QStringLiteral("Reset model to default"))->click();
    EXPECT_EQ(settings->model(), QStringLiteral("gpt-5-mini"));
    EXPECT_EQ(named<QLineEdit>(QStringLiteral("Custom model name")), nullptr);
}

TEST_F(SettingsViewTest, ListedModelIsChosenInThePicker)
{
    choose(ProviderID::groq);
    auto *picker = named<QComboBox>(QStringLiteral("Model for Groq"));
    ASSERT_NE(picker, nullptr);
    picker->setCurrentIndex(1);
    Q_EMIT picker->activated(1);
    EXPECT_EQ(settings->model(), picker->itemText(1));
    EXPECT_NE(settings->model(), QStringLiteral("Custom"));
}

TEST_F(SettingsViewTest, KeySectionIsNotThereForTheLocalProviderAndTheLocalSectionOnlyThere)
{
    choose(ProviderID::ollama);
    EXPECT_EQ(named<QLineEdit>(QStringLiteral("Local (Ollama) API key")), nullptr);
    EXPECT_NE(named<QWidget>(QStringLiteral("Built-in Local Model")), nullptr);
    choose(ProviderID::zen);
    EXPECT_NE(named<QLineEdit>(QStringLiteral("OpenCode Zen API key")), nullptr);
    EXPECT_EQ(named<QWidget>(QStringLiteral("Built-in Local Model")), nullptr);
}

TEST_F(SettingsViewTest, KeyIsHiddenUntilItIsShown)
{
    choose(ProviderID::openai);
    auto *key = named<QLineEdit>(QStringLiteral("OpenAI API key"));
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
    named<QPushButton>(QStringLiteral("Show API key"))->click();
    EXPECT_EQ(key->echoMode(), QLineEdit::Normal);
    named<QPushButton>(QStringLiteral("Hide API key"))->click();
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
}

TEST_F(SettingsViewTest, StepsStayBetween8And200)
{
    auto *steps = named<QSpinBox>(QStringLiteral("Maximum steps per task"));
    ASSERT_NE(steps, nullptr);
    steps->setValue(1);
    EXPECT_EQ(settings->maxSteps(), 8);
    steps->setValue(1000);
    EXPECT_EQ(settings->maxSteps(), 200);
    settings->setUnlimitedSteps(true);
    EXPECT_EQ(named<QSpinBox>(QStringLiteral("Maximum steps per task")), nullptr);
}

TEST_F(SettingsViewTest, TemperatureMovesInTenths)
{
    auto *slider = named<QSlider>(QStringLiteral("Creativity temperature"));
    slider->setValue(3);
    EXPECT_DOUBLE_EQ(settings->temperature(), 0.3);
    EXPECT_EQ(slider->accessibleDescription(), QStringLiteral("Creativity temperature 0.3"));
    settings->setTemperature(0.9);
    EXPECT_EQ(slider->value(), 9);
}

TEST_F(SettingsViewTest, ServerBlockStandsForTheCustomProviderOnly)
{
    choose(ProviderID::custom);
    auto *url = named<QLineEdit>(QStringLiteral("API base URL"));
    ASSERT_NE(url, nullptr);
    retype(url, QStringLiteral("http://127.0.0.1:1234/v1"));
    EXPECT_EQ(settings->customBaseURL(), QStringLiteral("http://127.0.0.1:1234/v1"));
    EXPECT_NE(named<QComboBox>(QStringLiteral("Server preset")), nullptr);
    EXPECT_NE(named<QLineEdit>(QStringLiteral("Model name on your server")), nullptr);
    choose(ProviderID::groq);
    EXPECT_EQ(named<QLineEdit>(QStringLiteral("API base URL")), nullptr);
}

TEST_F(SettingsViewTest, RemovedToolAsksAgain)
{
    settings->setAlwaysAllowedTools({QStringLiteral("write_file"), QStringLiteral("edit_file")});
    const QString name = QStringLiteral("Stop always allowing write_file");
    ASSERT_TRUE(waitUntil([&] { return named<QPushButton>(name) != nullptr; }));
    named<QPushButton>(name)->click();
    EXPECT_EQ(settings->alwaysAllowedTools(), QSet<QString>{QStringLiteral("edit_file")});
}

TEST_F(SettingsViewTest, EveryFieldHasAName)
{
    for (const ProviderID provider : allProviders) {
        choose(provider);
        for (QWidget *widget : view->findChildren<QWidget *>()) {
            const bool isControl = qobject_cast<QLineEdit *>(widget) || qobject_cast<QComboBox *>(widget) ||
                                   qobject_cast<QSlider *>(widget);
            const bool ofSpinBox = qobject_cast<QSpinBox *>(widget->parentWidget());
            if (isControl && widget->isVisible() && !ofSpinBox) {
                EXPECT_FALSE(widget->accessibleName().isEmpty())
                    << widget->metaObject()->className() << " for " << rawValue(provider).toStdString();
            }
        }
    }
}

} // namespace
} // namespace morvane
