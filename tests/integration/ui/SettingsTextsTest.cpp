#include "ButtonLabel.h"
#include "SettingsViewFixture.h"

#include "support/ShownSymbol.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/MenuPicker.h"
#include "ui/controls/NoteLabel.h"
#include "ui/controls/PickerChoices.h"
#include "ui/controls/WrappingLabel.h"
#include "ui/settings/SettingsHeader.h"
#include "ui/theme/ThemeColors.h"

#include <QAbstractButton>
#include <QEvent>
#include <QPushButton>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What the window of the settings says and shows beside its controls.
class SettingsTextsTest : public SettingsViewFixture {
protected:
    ThemeColors colors() const { return ThemeColors::fromPalette(view->palette()); }
    /// The labels of all switches and buttons in sight.
    QStringList buttonTexts() const
    {
        QStringList found;
        for (const auto *button : view->findChildren<QAbstractButton *>())
            if (button->isVisible() && !button->text().isEmpty())
                found.append(button->text());
        return found;
    }
    bool offers(const QString &text) const { return buttonTexts().contains(text); }
    NoteLabel *note(const QString &text) const
    {
        for (auto *label : view->findChildren<NoteLabel *>())
            if (label->isVisible() && label->text() == text)
                return label;
        return nullptr;
    }
    bool hasSymbol(const QString &text, Symbol symbol) const
    {
        NoteLabel *label = note(text);
        return label != nullptr && showsSymbol(*label, symbol, label->palette().color(QPalette::WindowText),
                                               label->fontMetrics().height());
    }
};

TEST_F(SettingsTextsTest, EachProviderHasItsShortName)
{
    QStringList names;
    for (const auto *button : named<SegmentedPicker>(u"Provider"_s)->findChildren<QAbstractButton *>())
        names.append(button->text());
    EXPECT_EQ(names, QStringList({u"Gemini"_s, u"OpenRouter"_s, u"Groq"_s, u"Ollama"_s, u"OpenAI"_s, u"Zen"_s,
                                  u"Custom"_s}));
}

TEST_F(SettingsTextsTest, EachSettingTellsWhatItDoes)
{
    settings->setUnlimitedSteps(false);
    for (const auto &text :
         {u"Each provider keeps its own API key and model."_s,
          u"Pick a model from the full list, or choose Custom and type one below."_s,
          u"When on, the assistant works until the task finishes instead of stopping at the step limit. It "
          "still stops if it repeats the same action without progress."_s,
          u"Maximum steps per task"_s,
          u"How many tool actions one task may take before the assistant stops and reports."_s,
          u"Higher lets the assistant work through longer jobs. If it ever repeats the same action without "
          "progress, it stops on its own."_s,
          u"Lets the assistant run commands, work with files, search the web, and delegate to subagents."_s,
          u"These actions run automatically without asking. Destructive commands always ask for approval "
          "first, and safe commands never ask. Remove anything you no longer want to auto-run."_s,
          u"Morvane is designed to be fully usable with VoiceOver and Full Keyboard Access. Every action and "
          "approval is announced."_s,
          u"Check for updates anytime from the Morvane menu, or press Command-U."_s})
        EXPECT_TRUE(shows(text)) << text.toStdString();
    for (const auto &text : {u"Keep going until the task is done"_s,
                             u"Allow the assistant to use tools (commands, files, web, subagents)"_s,
                             u"Speak responses aloud when they finish"_s})
        EXPECT_TRUE(offers(text)) << text.toStdString();
}

TEST_F(SettingsTextsTest, TheKeysButtonsSayWhatTheyDo)
{
    choose(ProviderID::groq);
    EXPECT_TRUE(offers(u"Show"_s));
    EXPECT_TRUE(showsLabel(*named<QPushButton>(u"Free API key"_s), u"Get a free API key for Groq"_s));
    named<QPushButton>(u"Show API key"_s)->click();
    EXPECT_TRUE(offers(u"Hide"_s));
    EXPECT_FALSE(offers(u"Show"_s));
}

TEST_F(SettingsTextsTest, AWindowThatIsOnlyMinimisedKeepsTheKeyInSight)
{
    choose(ProviderID::groq);
    named<QPushButton>(u"Show API key"_s)->click();
    auto *key = named<QLineEdit>(u"Groq API key"_s);
    QWidget *section = key->parentWidget();
    // As the window system tells it.
    QHideEvent minimised;
    QSpontaneKeyEvent::setSpontaneous(&minimised);
    qApp->notify(section, &minimised); // which keeps where it comes from
    EXPECT_EQ(key->echoMode(), QLineEdit::Normal);
    QHideEvent hidden;
    QApplication::sendEvent(section, &hidden);
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
}

TEST_F(SettingsTextsTest, HeadingsAreBoldAndTheWindowsOwnStandsApart)
{
    const auto headings = view->findChildren<HeadingLabel *>();
    ASSERT_FALSE(headings.isEmpty());
    for (const HeadingLabel *heading : headings)
        EXPECT_TRUE(heading->font().bold()) << heading->text().toStdString();
    const auto *header = view->findChild<SettingsHeader *>();
    const auto *title = header->findChild<HeadingLabel *>();
    EXPECT_EQ(title->text(), u"Morvane Settings"_s);
    EXPECT_EQ(title->geometry().top(), 20);
    EXPECT_EQ(header->height() - title->geometry().bottom() - 1, 20);
    EXPECT_EQ(header->width() - title->geometry().right() - 1, 20);
}

TEST_F(SettingsTextsTest, TabsAndLinesHaveTheirSymbols)
{
    const auto *tabs = view->findChild<QTabWidget *>();
    const QList<Symbol> symbols{Symbol::gear, Symbol::shieldLock, Symbol::server};
    for (int tab = 0; tab < 3; ++tab)
        EXPECT_EQ(tabs->tabIcon(tab).pixmap(16).toImage(), symbolIcon(symbols.at(tab)).pixmap(16).toImage())
            << tab;
    localModel.serverRunning = true;
    localModel.models = QStringList(u"qwen2.5"_s);
    choose(ProviderID::ollama);
    EXPECT_TRUE(hasSymbol(u"Test machine."_s, Symbol::laptop));
    EXPECT_TRUE(hasSymbol(u"The local model is ready. No limits, nothing leaves this Mac."_s,
                          Symbol::arrowRightCircle));
}

TEST_F(SettingsTextsTest, AnActionThatIsAllowedHasACheckMark)
{
    settings->setAlwaysAllowedTools({u"write_file"_s});
    const auto labels = view->findChildren<WrappingLabel *>();
    const auto shown = std::find_if(labels.begin(), labels.end(),
                                    [](const WrappingLabel *label) { return label->isVisible(); });
    ASSERT_NE(shown, labels.end());
    EXPECT_TRUE(showsSymbol(**shown, Symbol::checkCircle, (*shown)->palette().color(QPalette::WindowText),
                            (*shown)->fontMetrics().height()));
}

TEST_F(SettingsTextsTest, AModelThatCostsNothingIsToldToBeFree)
{
    modelCatalog.lists[ProviderID::openrouter] = QList<CatalogModel>{{u"costly"_s, false}, {u"gift"_s, true}};
    choose(ProviderID::openrouter);
    const auto *picker = named<MenuPicker>(u"Model for OpenRouter"_s);
    ASSERT_NE(picker, nullptr);
    QStringList rows;
    for (int row = 0; row < picker->count(); ++row)
        rows.append(picker->itemText(row) + u'|' +
                    picker->itemData(row, PickerChoices::detailRole).toString());
    EXPECT_EQ(rows, QStringList({u"costly|"_s, u"gift|free"_s, u"Custom|"_s}));
}

} // namespace
} // namespace morvane
