#include "ButtonLabel.h"
#include "MainWindowFixture.h"

#include "support/EventCount.h"
#include "support/ShownSymbol.h"
#include "ui/controls/HoverText.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/theme/AppMark.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/AttachmentChip.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"
#include "ui/window/ConversationPane.h"
#include "ui/window/FileDropFilter.h"
#include "ui/window/HeaderView.h"
#include "ui/window/StatusBarView.h"
#include "ui/window/UpdateAlertView.h"
#include "ui/window/WelcomeView.h"

#include <QAction>
#include <QDragLeaveEvent>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What the main window and its parts look like, and what their buttons do.
class WindowLooksTest : public MainWindowFixture {
protected:
    ThemeColors colors() const { return ThemeColors::fromPalette(window->palette()); }
    /// The pixels of a widget that have a colour.
    static QRect extentOf(QWidget &widget, const QColor &color)
    {
        const QImage picture = widget.grab().toImage();
        QRect extent;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) == color.rgb())
                    extent |= QRect(x, y, 1, 1);
        return extent;
    }
    void begin()
    {
        neverAnswer();
        ASSERT_TRUE(model->send(u"hello"_s, {}));
        settle();
    }
};

TEST_F(WindowLooksTest, TheWindowHasItsTitleAndItsSizes)
{
    EXPECT_EQ(window->windowTitle(), u"Morvane"_s);
    EXPECT_EQ(window->size(), QSize(760, 720));
    EXPECT_EQ(window->minimumSize(), QSize(600, 640));
}

TEST_F(WindowLooksTest, TheBrowserOpensByItsMenuEntryWhichIsNotThereWithoutOne)
{
    const auto entry = [this] {
        for (QAction *action : window->findChildren<QAction *>())
            if (action->text() == "Morvane Browser"_L1)
                return action;
        return static_cast<QAction *>(nullptr);
    };
    ASSERT_NE(entry(), nullptr);
    entry()->trigger();
    EXPECT_TRUE(browserWindow.visible);
    browserWindow.problemText = u"it is not installed."_s;
    restart();
    show();
    EXPECT_FALSE(entry()->isVisible());
    const auto *browser = button(part<HeaderView>(), u"Morvane Browser"_s);
    EXPECT_FALSE(browser->isEnabled());
    EXPECT_EQ(browser->accessibleDescription(), u"it is not installed."_s);
}

TEST_F(WindowLooksTest, TheHeadersButtonsDoWhatTheySay)
{
    show();
    auto *browser = button(part<HeaderView>(), u"Morvane Browser"_s);
    ASSERT_NE(browser, nullptr);
    browser->click();
    EXPECT_TRUE(browserWindow.visible);
    auto *compose = button(part<HeaderView>(), u"New conversation"_s);
    ASSERT_NE(compose, nullptr);
    EXPECT_EQ(hoverText(compose), u"New conversation (⌘N)"_s);
    model->transcript().append(message(Role::user, u"one"_s));
    compose->click();
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(WindowLooksTest, TheChipShowsTheSubagentThatWorks)
{
    service.willTurn(FakeAIService::calls(
        {toolCall(u"task"_s, R"({"subagent":"researcher","description":"Look it up"})")}));
    show();
    begin();
    EXPECT_TRUE(texts(part<HeaderView>()).contains(u"Researcher is working…"_s));
}

TEST_F(WindowLooksTest, EachSuggestionTakesTheDraftsPlace)
{
    settings->setProviderID(ProviderID::groq);
    settings->setApiKey(u"key"_s);
    show();
    EXPECT_EQ(texts(part<WelcomeView>()), QStringList({u"Morvane"_s, u"Try asking:"_s}));
    for (const auto &prompt :
         {u"What can you do?"_s, u"Check my Mac's storage"_s, u"Find my Downloads folder and summarize it"_s,
          u"Search the web for the latest macOS version"_s}) {
        auto *suggestion = button(part<WelcomeView>(), u"Try asking: "_s + prompt);
        ASSERT_NE(suggestion, nullptr) << prompt.toStdString();
        EXPECT_TRUE(showsLabel(*suggestion, prompt)) << prompt.toStdString();
        suggestion->click();
        EXPECT_EQ(part<ComposerView>()->draft(), prompt);
        EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
        EXPECT_TRUE(model->messages().isEmpty());
    }
}

TEST_F(WindowLooksTest, ADotStandsForWorkAndACheckMarkForNone)
{
    show();
    auto &bar = *part<StatusBarView>();
    const int mark = std::min(bar.fontMetrics().height() * 5 / 8, 18);
    EXPECT_TRUE(showsSymbol(bar, Symbol::check, colors().secondaryText, mark));
    EXPECT_TRUE(extentOf(bar, colors().accent).isEmpty());
    begin();
    EXPECT_FALSE(showsSymbol(bar, Symbol::check, colors().secondaryText, mark));
    // Without its edge, which is mixed with the ground.
    const QRect dot = extentOf(bar, colors().accent);
    EXPECT_NEAR(dot.width(), mark * 2 / 3, 2);
    EXPECT_NEAR(dot.height(), mark * 2 / 3, 2);
}

TEST_F(WindowLooksTest, TheMarkFollowsTheWorkThoughTheWordsStay)
{
    EventCount paints(QEvent::Paint);
    show();
    part<StatusBarView>()->installEventFilter(&paints);
    Q_EMIT model->isBusyChanged();
    EXPECT_TRUE(QTest::qWaitFor([&paints] { return paints.count > 0; }));
}

TEST_F(WindowLooksTest, AStatusOfAnyLengthAndAnyLettersStaysALine)
{
    show();
    model->status().setStatusText(u"Running: <b>"_s + QString(2'000, u'x'));
    EXPECT_EQ(part<StatusBarView>()->minimumSizeHint().width(), 0);
    EXPECT_TRUE(hoverText(part<StatusBarView>()).startsWith("<qt>Running: &lt;b&gt;xxx"_L1));
    settle();
    EXPECT_EQ(window->width(), 760);
}

TEST_F(WindowLooksTest, ALongTitleIsCutInTheMenu)
{
    save(u"Words "_s.repeated(200), {message(Role::user, u"one"_s)});
    showNewest();
    for (QMenu *menu : window->findChildren<QMenu *>()) {
        if (menu->title() != "Conversations"_L1)
            continue;
        Q_EMIT menu->aboutToShow();
        EXPECT_LE(menu->fontMetrics().horizontalAdvance(menu->actions().constFirst()->text()), 380);
    }
}

TEST_F(WindowLooksTest, ALetterThatIsACommandIsNoMessage)
{
    show();
    auto *compose = button(part<HeaderView>(), u"New conversation"_s);
    compose->setFocus(Qt::TabFocusReason);
    for (const auto modifier : {Qt::AltModifier, Qt::MetaModifier})
        QTest::keyClick(compose, 'z', modifier);
    EXPECT_TRUE(compose->hasFocus());
    EXPECT_EQ(part<ComposerView>()->draft(), QString());
}

TEST_F(WindowLooksTest, ThePlaceIsKeptByLeavingTheWindowAndByClosingIt)
{
    show();
    const auto place = [this] { return settings->value(u"windowGeometry"_s).toString(); };
    ASSERT_TRUE(place().isEmpty());
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    const QString left = place();
    EXPECT_FALSE(left.isEmpty());
    window->resize(700, 650);
    QCloseEvent close;
    QApplication::sendEvent(window.get(), &close);
    EXPECT_NE(place(), left);
}

TEST_F(WindowLooksTest, AboutTellsTheVersionAndWhereUpdatesComeFromIfThatIsUnusual)
{
    show();
    const auto told = [this] {
        action(u"About Morvane"_s)->trigger();
        auto *box = window->findChild<QMessageBox *>();
        const QString text = box->text();
        delete box;
        return text;
    };
    EXPECT_TRUE(told().contains(u"Morvane %1"_s.arg(QApplication::applicationVersion())));
    EXPECT_FALSE(told().contains(u"Updates come from"_s));
    qApp->setProperty("unusualUpdateOrigin", u"http://127.0.0.1:1"_s);
    EXPECT_TRUE(told().contains(u"Updates come from http://127.0.0.1:1."_s));
    qApp->setProperty("unusualUpdateOrigin", {});
}

TEST_F(WindowLooksTest, AboutShowsTheProgramsIcon)
{
    QApplication::setWindowIcon(appIcon());
    show();
    action(u"About Morvane"_s)->trigger();
    const auto *box = window->findChild<QMessageBox *>();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->iconPixmap().toImage(), appIcon().pixmap(64, 64).toImage());
    EXPECT_FALSE(box->iconPixmap().isNull());
    QApplication::setWindowIcon({});
}

TEST_F(WindowLooksTest, TheTextGrowsNoFurtherThanToThreeTimesItsSize)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    for (int i = 0; i < 20; ++i)
        action(u"Larger Text"_s)->trigger();
    EXPECT_EQ(part<ConversationPane>()->view().zoom(), 300);
    EXPECT_FALSE(action(u"Larger Text"_s)->isEnabled());
}

TEST_F(WindowLooksTest, TheWayBackToTheLatestMessageLeavesTheKeyboardInTheConversation)
{
    QList<ChatMessage> messages;
    for (int i = 0; i < 60; ++i)
        messages += message(i % 2 ? Role::assistant : Role::user, u"Words. "_s.repeated(40));
    save(u"A"_s, messages);
    showNewest();
    part<ConversationPane>()->view().scrollPage(-1);
    auto *latest = button(part<ConversationPane>(), u"Jump to the latest message"_s);
    ASSERT_NE(latest, nullptr);
    latest->setFocus(Qt::TabFocusReason);
    latest->click();
    EXPECT_FALSE(latest->isVisible());
    EXPECT_TRUE(part<ConversationPane>()->view().hasFocus());
}

TEST_F(WindowLooksTest, AFileHasTheSymbolOfItsKindAndTheWarningItsOwn)
{
    show();
    part<ComposerView>()->handleFiles({QUrl::fromLocalFile(u"/a.jpg"_s), QUrl::fromLocalFile(u"/b.pdf"_s),
                                       QUrl::fromLocalFile(u"/c.txt"_s)});
    settle();
    const auto chips = window->findChildren<AttachmentChip *>();
    ASSERT_EQ(chips.size(), 3);
    const QList<Symbol> symbols{Symbol::photo, Symbol::document, Symbol::documentPlain};
    for (int chip = 0; chip < 3; ++chip)
        for (int symbol = 0; symbol < 3; ++symbol)
            EXPECT_EQ(showsSymbol(*chips.at(chip), symbols.at(symbol), colors().secondaryText,
                                  chips.at(chip)->fontMetrics().height()),
                      chip == symbol)
                << chip << ' ' << symbol;
    EXPECT_TRUE(showsSymbol(*part<ComposerView>(), Symbol::octagonExclamation, colors().warning,
                            part<ComposerView>()->fontMetrics().height()));
}

TEST_F(WindowLooksTest, FilesThatHangOverTheWindowAreSeenToBeWelcome)
{
    show();
    auto &composer = *part<ComposerView>();
    const auto isMarked = [&] { return !extentOf(composer, colors().focusRing).isEmpty(); };
    part<ComposerEdit>()->clearFocus();
    EXPECT_FALSE(isMarked());
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(u"/a.txt"_s)});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(composer.parentWidget(), &enter);
    EXPECT_TRUE(isMarked());
    QDragLeaveEvent leave;
    QApplication::sendEvent(composer.parentWidget(), &leave);
    EXPECT_FALSE(isMarked());
}

TEST_F(WindowLooksTest, NotesThatJustFitIntoALineHaveNoScrollBarAfterShortOnes)
{
    show();
    updates.manifest = sampleUpdate();
    const auto check = [this] {
        runTask(scheduler, model->updates().checkForUpdates(UpdateModel::Occasion::user));
        settle();
    };
    for (int letters = 60; letters < 110; ++letters) {
        SCOPED_TRACE(letters);
        updates.manifest.notes = {u"Short."_s};
        check();
        // For a moment there is room for that line only.
        updates.manifest.notes = {u"is "_s.repeated(letters).first(letters).trimmed(), {}, u"The end."_s};
        check();
        const auto *field = part<UpdateAlertView>()->findChild<QPlainTextEdit *>();
        EXPECT_TRUE(field->isVisible());
        EXPECT_FALSE(field->verticalScrollBar()->isVisible());
    }
}

} // namespace
} // namespace morvane
