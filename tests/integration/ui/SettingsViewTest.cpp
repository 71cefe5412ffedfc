#include "SettingsViewFixture.h"

#include "providers/ProviderCatalog.h"
#include "ui/controls/MenuPicker.h"
#include "ui/settings/SettingsSection.h"

#include <QAccessible>
#include <QCheckBox>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QWheelEvent>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Provider, server and model.
class SettingsViewTest : public SettingsViewFixture {
protected:
    MenuPicker *models(const QString &provider) const
    {
        return named<MenuPicker>(u"Model for "_s + provider);
    }

    static QStringList rows(const MenuPicker &picker)
    {
        QStringList texts;
        for (int row = 0; row < picker.count(); ++row)
            texts.append(picker.itemText(row));
        return texts;
    }

    static void wheelOver(QWidget *widget)
    {
        QWheelEvent event(QPointF(5, 5), widget->mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(widget, &event);
    }
};

TEST_F(SettingsViewTest, WindowHasItsTitleAndItsTabs)
{
    EXPECT_EQ(view->windowTitle(), "Morvane Settings");
    const auto *tabs = view->findChild<QTabWidget *>();
    ASSERT_EQ(tabs->count(), 3);
    EXPECT_EQ(tabs->tabText(0), "General");
    EXPECT_EQ(tabs->tabText(1), "Permissions");
    EXPECT_EQ(tabs->tabText(2), "Tool Servers");
    for (int tab = 0; tab < tabs->count(); ++tab)
        EXPECT_FALSE(tabs->tabIcon(tab).isNull());
}

TEST_F(SettingsViewTest, SectionsStandInOrderAndAreGroups)
{
    const auto visibleSections = [this] {
        QList<QWidget *> sections;
        for (auto *section : view->findChildren<SettingsSection *>())
            if (section->isVisible())
                sections.append(section);
        std::sort(sections.begin(), sections.end(), [this](QWidget *first, QWidget *second) {
            return first->mapTo(view.get(), QPoint()).y() < second->mapTo(view.get(), QPoint()).y();
        });
        QStringList names;
        for (QWidget *section : sections) {
            names.append(section->accessibleName());
            EXPECT_EQ(QAccessible::queryAccessibleInterface(section)->role(), QAccessible::Grouping);
        }
        return names;
    };
    const QStringList rest{"Behaviour", "Always Allow", "Accessibility", "Privacy", "About"};
    EXPECT_EQ(visibleSections(), QStringList({"AI Provider", "API Key (optional)"}) + rest);
    choose(ProviderID::groq);
    EXPECT_EQ(visibleSections(), QStringList({"AI Provider", "API Key"}) + rest);
    choose(ProviderID::ollama);
    EXPECT_EQ(visibleSections(), QStringList({"AI Provider", "Built-in Local Model"}) + rest);
}

TEST_F(SettingsViewTest, ChangingTheProviderSetsItsDefaultModel)
{
    settings->setModel(u"my favourite"_s);
    choose(ProviderID::openai);
    EXPECT_EQ(settings->providerID(), ProviderID::openai);
    EXPECT_EQ(settings->model(), u"gpt-5-mini"_s);
    choose(ProviderID::custom);
    EXPECT_EQ(settings->model(), QString());
}

TEST_F(SettingsViewTest, ProvidersAreAGroupOfRadioButtons)
{
    auto *picker = named<SegmentedPicker>("Provider");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(view.get())->role(), QAccessible::Window);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(picker)->role(), QAccessible::Grouping);
    const auto segments = picker->findChildren<QAbstractButton *>();
    ASSERT_EQ(segments.size(), 7);
    for (QAbstractButton *segment : segments) {
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(segment);
        EXPECT_EQ(interface->role(), QAccessible::RadioButton);
        EXPECT_EQ(interface->state().checked, segment->text() == "Custom");
    }
    segments[2]->click();
    EXPECT_EQ(settings->providerID(), ProviderID::groq);
    EXPECT_FALSE(segments[6]->isChecked());
    QAccessible::queryAccessibleInterface(segments[4])
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(settings->providerID(), ProviderID::openai);
    settings->setProviderID(ProviderID::gemini);
    EXPECT_TRUE(segments[0]->isChecked());
    EXPECT_FALSE(segments[2]->isChecked());
}

TEST_F(SettingsViewTest, PassingOverAProviderChangesNothing)
{
    view->activateWindow();
    auto *picker = named<SegmentedPicker>("Provider");
    const auto segments = picker->findChildren<QAbstractButton *>();
    segments[6]->setFocus();
    QTest::keyClick(segments[6], Qt::Key_Left);
    EXPECT_EQ(view->focusWidget(), segments[5]);
    EXPECT_EQ(settings->providerID(), ProviderID::custom);
    QTest::keyClick(segments[5], Qt::Key_Return);
    EXPECT_EQ(settings->providerID(), ProviderID::zen);
}

TEST_F(SettingsViewTest, TheProvidersNoteIsShownAndReadOutWithItsPrefix)
{
    choose(ProviderID::zen);
    EXPECT_TRUE(shows(providerNote(ProviderID::zen)));
    EXPECT_NE(named<QLabel>("Provider info. " + providerNote(ProviderID::zen)), nullptr);
    EXPECT_TRUE(shows("Each provider keeps its own API key and model."));
}

TEST_F(SettingsViewTest, ChangingTheProviderLeavesTheKeysAlone)
{
    choose(ProviderID::openai);
    retype(named<QLineEdit>(u"OpenAI API key"_s), u"sk-one"_s);
    choose(ProviderID::groq);
    EXPECT_EQ(named<QLineEdit>(u"Groq API key"_s)->text(), QString());
    choose(ProviderID::openai);
    EXPECT_EQ(named<QLineEdit>(u"OpenAI API key"_s)->text(), u"sk-one"_s);
    EXPECT_EQ(settings->apiKey(), u"sk-one"_s);
}

TEST_F(SettingsViewTest, TheListIsLoadedWhenTheWindowOpens)
{
    EXPECT_EQ(modelCatalog.questions.size(), 1);
    modelCatalog.lists.insert(ProviderID::custom, QList<CatalogModel>{{"served", std::nullopt}});
    settings->setCustomBaseURL("http://127.0.0.1:1/v1");
    view.reset();
    open();
    EXPECT_EQ(rows(*models("Custom")), QStringList({"served", "Custom"}));
    EXPECT_TRUE(shows("1 models from your server, free ones first."));
}

TEST_F(SettingsViewTest, TheStateOfTheListIsTold)
{
    modelCatalog.held = true;
    choose(ProviderID::openrouter);
    EXPECT_TRUE(shows("Loading the full model list…"));
    EXPECT_EQ(models("OpenRouter")->count(), curatedModels(ProviderID::openrouter).size() + 1);
    modelCatalog.answer(0, QList<CatalogModel>{{"a", true}, {"b", false}});
    settle();
    EXPECT_TRUE(shows("2 models from OpenRouter, free ones first."));
    EXPECT_EQ(rows(*models("OpenRouter")), QStringList({"a", "b", "Custom"}));
    modelCatalog.held = false;
    choose(ProviderID::zen);
    EXPECT_TRUE(shows("Showing popular picks — the full list could not be loaded right now."));
    EXPECT_TRUE(shows("Pick a model from the full list, or choose Custom and type one below."));
}

TEST_F(SettingsViewTest, UnlistedModelShowsAsCustomWithItsNameInTheField)
{
    choose(ProviderID::openai);
    settings->setModel(u"gpt-next"_s);
    EXPECT_EQ(models("OpenAI")->currentText(), u"Custom"_s);
    auto *name = named<QLineEdit>(u"Custom model name"_s);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->text(), u"gpt-next"_s);
    EXPECT_EQ(name->placeholderText(), "Or type a custom model name");
    named<QPushButton>(u"Reset model to default"_s)->click();
    EXPECT_EQ(settings->model(), u"gpt-5-mini"_s);
    EXPECT_EQ(named<QLineEdit>(u"Custom model name"_s), nullptr);
    EXPECT_EQ(models("OpenAI")->currentText(), "gpt-5-mini");
}

TEST_F(SettingsViewTest, ListedModelIsChosenInThePicker)
{
    choose(ProviderID::groq);
    MenuPicker *picker = models("Groq");
    ASSERT_NE(picker, nullptr);
    Q_EMIT picker->activated(1);
    EXPECT_EQ(settings->model(), picker->itemText(1));
    EXPECT_NE(settings->model(), u"Custom"_s);
    EXPECT_EQ(picker->currentIndex(), 1);
}

TEST_F(SettingsViewTest, ChoosingCustomLeadsToTheFieldAndChangesNothing)
{
    choose(ProviderID::groq);
    view->activateWindow();
    MenuPicker *picker = models("Groq");
    Q_EMIT picker->activated(picker->count() - 1);
    EXPECT_EQ(settings->model(), defaultModel(ProviderID::groq));
    auto *name = named<QLineEdit>("Custom model name");
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(view->focusWidget(), name);
    retype(name, "own/model");
    EXPECT_EQ(settings->model(), "own/model");
    EXPECT_EQ(picker->currentText(), "Custom");
}

TEST_F(SettingsViewTest, TypingANameStaysInTheFieldThoughItIsListedForAMoment)
{
    choose(ProviderID::openai);
    settings->setModel("x");
    auto *name = named<QLineEdit>("Custom model name");
    retype(name, "gpt-5");
    ASSERT_TRUE(name->isVisible());
    QTest::keyClicks(name, "-turbo");
    EXPECT_EQ(settings->model(), "gpt-5-turbo");
}

TEST_F(SettingsViewTest, ResettingTheModelLeadsBackToThePicker)
{
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
    choose(ProviderID::groq);
    EXPECT_EQ(named<QPushButton>("Reset model to default"), nullptr) << "a listed one is chosen";
    settings->setModel("mine");
    auto *reset = named<QPushButton>("Reset model to default");
    ASSERT_NE(reset, nullptr);
    reset->click();
    EXPECT_EQ(settings->model(), defaultModel(ProviderID::groq));
    EXPECT_EQ(view->focusWidget()->accessibleName(), "Model for Groq");
}

TEST_F(SettingsViewTest, ServerBlockStandsForTheCustomProviderOnly)
{
    auto *url = named<QLineEdit>(u"API base URL"_s);
    ASSERT_NE(url, nullptr);
    EXPECT_EQ(url->placeholderText(), "https://api.example.com/v1");
    retype(url, u"http://127.0.0.1:1234/v1"_s);
    EXPECT_EQ(settings->customBaseURL(), u"http://127.0.0.1:1234/v1"_s);
    EXPECT_NE(named<MenuPicker>(u"Server preset"_s), nullptr);
    EXPECT_TRUE(shows("Server"));
    EXPECT_TRUE(shows("Fills in the base URL of a known OpenAI-compatible service."));
    EXPECT_TRUE(shows("The root of your provider's OpenAI-compatible API. /chat/completions is added "
                      "automatically."));
    choose(ProviderID::groq);
    EXPECT_EQ(named<QLineEdit>(u"API base URL"_s), nullptr);
    EXPECT_FALSE(shows("Server"));
}

TEST_F(SettingsViewTest, CustomWithAnEmptyBaseURLShowsTheHintAndNoList)
{
    EXPECT_TRUE(shows("Choose a preset or enter a base URL below to load its models."));
    EXPECT_EQ(models("Custom"), nullptr);
    auto *name = named<QLineEdit>("Model name on your server");
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->text(), "scripted");
    EXPECT_EQ(named<QPushButton>("Reset model to default"), nullptr);
}

TEST_F(SettingsViewTest, AnAddressThatIsNoneGetsAWarning)
{
    const QString warning = "That does not look like a valid http(s) URL yet.";
    EXPECT_FALSE(shows(warning));
    auto *url = named<QLineEdit>("API base URL");
    retype(url, "127.0.0.1");
    EXPECT_TRUE(shows(warning));
    retype(url, "http://127.0.0.1");
    EXPECT_FALSE(shows(warning));
}

TEST_F(SettingsViewTest, PresetsAreOfferedWithTheirNotes)
{
    auto *preset = named<MenuPicker>("Server preset");
    const QStringList expected{"None — enter a URL myself",
                               "GitHub Models — free tier with a GitHub personal access token",
                               "LM Studio — local models running on this Mac",
                               "NVIDIA NIM — free trial credits",
                               "DeepSeek — pay per token",
                               "Mistral — has a free tier"};
    EXPECT_EQ(rows(*preset), expected);
    EXPECT_EQ(preset->currentIndex(), 0);
    Q_EMIT preset->activated(2);
    EXPECT_EQ(settings->customBaseURL(), "http://localhost:1234/v1");
    EXPECT_EQ(named<QLineEdit>("API base URL")->text(), "http://localhost:1234/v1");
    EXPECT_EQ(preset->currentIndex(), 2);
}

TEST_F(SettingsViewTest, TypingQuicklyInTheBaseURLLoadsOnceAfterThePause)
{
    modelCatalog.questions.clear();
    retype(named<QLineEdit>("API base URL"), "http://127.0.0.1:1/v1");
    settle();
    EXPECT_TRUE(modelCatalog.questions.isEmpty());
    clock.advance(std::chrono::milliseconds(799));
    settle();
    EXPECT_TRUE(modelCatalog.questions.isEmpty());
    clock.advance(std::chrono::milliseconds(1));
    settle();
    ASSERT_EQ(modelCatalog.questions.size(), 1);
    EXPECT_EQ(modelCatalog.questions[0].baseURL, "http://127.0.0.1:1/v1");
}

TEST_F(SettingsViewTest, BlanksAroundAnAddressStayInTheFieldWhileTyping)
{
    auto *url = named<QLineEdit>("API base URL");
    retype(url, " http://a ");
    EXPECT_EQ(url->text(), " http://a ");
    EXPECT_EQ(settings->customBaseURL(), "http://a");
}

TEST_F(SettingsViewTest, TheWheelChangesNothingWithoutTheFocus)
{
    choose(ProviderID::groq);
    view->setFocus();
    for (QWidget *control :
         std::initializer_list<QWidget *>{models("Groq"), named<QSlider>("Creativity temperature"),
                                          named<QSpinBox>("Maximum steps per task")}) {
        ASSERT_NE(control, nullptr);
        ASSERT_FALSE(control->hasFocus());
        wheelOver(control);
    }
    EXPECT_EQ(settings->model(), defaultModel(ProviderID::groq));
    EXPECT_EQ(settings->temperature(), 0.7);
    EXPECT_EQ(settings->maxSteps(), 25);
}

TEST_F(SettingsViewTest, EveryControlHasAName)
{
    for (const ProviderID provider : allProviders) {
        choose(provider);
        for (QWidget *widget : view->findChildren<QWidget *>()) {
            const bool isControl = qobject_cast<QLineEdit *>(widget) || qobject_cast<QComboBox *>(widget) ||
                                   qobject_cast<QSlider *>(widget) || qobject_cast<QSpinBox *>(widget);
            const bool ofSpinBox = qobject_cast<QSpinBox *>(widget->parentWidget());
            if (isControl && widget->isVisible() && !ofSpinBox) {
                EXPECT_FALSE(widget->accessibleName().isEmpty())
                    << widget->metaObject()->className() << " for " << rawValue(provider).toStdString();
            }
        }
    }
}

TEST_F(SettingsViewTest, AChoiceElsewhereShowsAtOnce)
{
    settings->setProviderID(ProviderID::gemini);
    settings->setModel("gemini-3.6-pro");
    EXPECT_EQ(models("Google Gemini")->currentText(), "gemini-3.6-pro");
    EXPECT_EQ(named<SegmentedPicker>("Provider")->currentIndex(), 0);
}

TEST_F(SettingsViewTest, ClosingDuringALoadIsHarmless)
{
    modelCatalog.held = true;
    choose(ProviderID::openai);
    view.reset();
    modelCatalog.answer(0, QList<CatalogModel>{{"late", true}});
    settle();
    open();
    modelCatalog.answer(1, std::nullopt);
    settle();
    EXPECT_EQ(models("OpenAI")->count(), curatedModels(ProviderID::openai).size() + 1);
}

} // namespace
} // namespace morvane
