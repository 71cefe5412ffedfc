#include "BrowserWindowFixture.h"

#include "browser/window/AgentPanel.h"
#include "ui/controls/HoverText.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/window/AttachmentChips.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ComposerView.h"

#include <QLabel>
#include <QPushButton>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::Contains;
using Service = FakeAIService;

class AgentPanelTest : public BrowserWindowFixture {
protected:
    AgentPanelTest() : panel(part<AgentPanel>()), field(panel->findChild<ComposerEdit *>()) {}

    QPushButton *shortcut(const QString &text) const
    {
        for (auto *found : panel->findChildren<QPushButton *>())
            if (found->text() == text)
                return found;
        return nullptr;
    }
    void say(const QString &text)
    {
        panel->takeFocus();
        QTest::keyClicks(field, text);
        press(Qt::Key_Return);
    }
    /// What the model was sent as the user's last message.
    QString received() const { return contextEntries<APIMessage::User>().constLast().text; }

    AgentPanel *panel;
    ComposerEdit *field;
};

TEST_F(AgentPanelTest, ItsPartsHaveTheirNamesAndHints)
{
    EXPECT_EQ(panel->accessibleName(), u"Agent panel at bottom of browser"_s);
    EXPECT_EQ(field->placeholderText(),
              u"Tell Morvane what to do… (try: type hello in field 1 and submit)"_s);
    EXPECT_EQ(field->accessibleName(), u"Tell Morvane what to do in the browser"_s);
    EXPECT_EQ(
        field->accessibleDescription(),
        u"Your message goes to the same conversation as the main window. The agent can use browser tools to "
        "click and type for you."_s);
    for (const QString &name :
         {u"Attach file"_s, u"Send the message to Morvane"_s, u"Expand the agent panel"_s})
        EXPECT_NE(button(name), nullptr) << qPrintable(name);
    EXPECT_NE(named(u"Agent status: Ready"_s), nullptr);
    EXPECT_NE(named(u"Conversation shortcuts"_s), nullptr);
    EXPECT_EQ(shortcut(u"Open conversation"_s)->accessibleDescription(),
              u"Open the full conversation in the main window"_s);
}

TEST_F(AgentPanelTest, NothingIsCutWhereThereIsLittleRoomAndTheKeyboardReachesEveryShortcut)
{
    window->resize(300, window->minimumSizeHint().height());
    settle();
    const auto isWhole = [this](const QWidget *control) {
        const QRegion seen = control->visibleRegion();
        return !seen.isEmpty() && seen.boundingRect().height() == control->height() &&
               panel->rect().contains(QRect(control->mapTo(panel, QPoint()), QSize(1, control->height())));
    };
    EXPECT_TRUE(isWhole(field));
    EXPECT_TRUE(isWhole(button(u"Attach file"_s)));
    for (const QString &text : {u"Open conversation"_s, u"Summarize this page"_s}) {
        QPushButton *wanted = shortcut(text);
        wanted->setFocus(Qt::BacktabFocusReason);
        settle();
        EXPECT_TRUE(isWhole(wanted)) << qPrintable(text);
        EXPECT_EQ(wanted->visibleRegion().boundingRect().width(), wanted->width()) << qPrintable(text);
    }
}

TEST_F(AgentPanelTest, AMessageGoesToTheSameConversationWithTheMarkerForTheModelOnly)
{
    service.willTurn(Service::answer(u"done"_s));
    say(u"read this page"_s);
    finishRun();
    EXPECT_EQ(model->messages().first().text, u"read this page"_s);
    EXPECT_EQ(received(), u"read this page [Browser window is open — you can use "
                          "browser_open/read/click/type/scroll/back. The user watches live.]"_s);
    EXPECT_EQ(field->draft(), QString());
}

TEST_F(AgentPanelTest, TheShortcutsSendTheirPrompts)
{
    service.willTurn(Service::answer(u"done"_s));
    shortcut(u"Summarize this page"_s)->click();
    finishRun();
    EXPECT_EQ(model->messages().first().text,
              u"Summarize the page currently open in the Morvane browser. Use browser_read if needed."_s);
    EXPECT_EQ(received(), model->messages().first().text + u" [Browser window is open]"_s);
    service.willTurn(Service::answer(u"done"_s));
    shortcut(u"List the main links"_s)->click();
    finishRun();
    EXPECT_EQ(received(),
              u"List the main links on the page currently open in the Morvane browser via browser_read. "
              "[Browser window is open]"_s);
}

TEST_F(AgentPanelTest, WhileTheAgentIsBusyItCanBeStopped)
{
    neverAnswer();
    say(u"hello"_s);
    EXPECT_EQ(button(u"Send the message to Morvane"_s), nullptr);
    EXPECT_FALSE(shortcut(u"Summarize this page"_s)->isEnabled());
    click(u"Stop the agent"_s);
    EXPECT_EQ(browserWindow.stops, 1);
    finishRun();
    EXPECT_FALSE(model->isBusy());
    EXPECT_TRUE(shortcut(u"Summarize this page"_s)->isEnabled());
    EXPECT_NE(button(u"Send the message to Morvane"_s), nullptr);
}

TEST_F(AgentPanelTest, TheStatusFollowsTheAgent)
{
    model->status().setStatusText(u"Running:\nls"_s);
    EXPECT_NE(named(u"Agent status: Running: ls"_s), nullptr);
    model->status().setStatusText(QString(1'000'000, u'x'));
    EXPECT_LT(window->minimumSizeHint().width(), 700);
}

TEST_F(AgentPanelTest, ExpandedItShowsTheConversationAndTheActivity)
{
    EXPECT_EQ(panel->findChild<ChatScrollView *>(), nullptr);
    click(u"Expand the agent panel"_s);
    auto *messages = panel->findChild<ChatScrollView *>();
    ASSERT_NE(messages, nullptr);
    EXPECT_TRUE(messages->isVisible());
    service.willTurn(Service::answer(u"done"_s));
    say(u"hello"_s);
    finishRun();
    EXPECT_EQ(messages->content().count() > 0, true);
    const auto &steps = model->activity().steps();
    EXPECT_NE(named(u"Activity, %1 steps, latest %2"_s.arg(steps.size()).arg(steps.last().text)), nullptr);
    click(u"Collapse the agent panel"_s);
    EXPECT_FALSE(messages->isVisible());
    EXPECT_FALSE(panel->isExpanded());
}

TEST_F(AgentPanelTest, AShortcutThatIsPressedKeepsTheKeyboardAndIsOffOnceThatHasGoneOn)
{
    neverAnswer();
    shortcut(u"Summarize this page"_s)->setFocus();
    press(Qt::Key_Space);
    EXPECT_TRUE(shortcut(u"Summarize this page"_s)->hasFocus());
    press(Qt::Key_Space);
    EXPECT_EQ(model->messages().size(), 2);
    press(Qt::Key_Tab);
    EXPECT_FALSE(shortcut(u"Summarize this page"_s)->isEnabled());
    EXPECT_TRUE(shortcut(u"Open conversation"_s)->hasFocus());
}

TEST_F(AgentPanelTest, TheKeyboardGoesThroughItAsItIsSeen)
{
    click(u"Expand the agent panel"_s);
    QAbstractButton *chevron = button(u"Collapse the agent panel"_s);
    ASSERT_NE(chevron, nullptr);
    EXPECT_EQ(hoverText(chevron), u"Collapse the agent panel"_s);
    chevron->setFocus();
    press(Qt::Key_Tab);
    EXPECT_TRUE(panel->findChild<ChatScrollView *>()->hasFocus());
    press(Qt::Key_Tab);
    EXPECT_TRUE(shortcut(u"Summarize this page"_s)->hasFocus());
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_TRUE(button(u"Attach file"_s)->hasFocus());
    press(Qt::Key_Tab);
    EXPECT_TRUE(field->hasFocus());
}

TEST_F(AgentPanelTest, InANarrowWindowTheFieldHasRoomForWhatItSaysOfItself)
{
    const int usual = field->height();
    window->resize(380, 700);
    settle();
    EXPECT_GT(field->height(), usual);
    QTest::keyClicks(field, u"x"_s);
    EXPECT_EQ(field->height(), usual);
}

TEST_F(AgentPanelTest, ExpandedInALowWindowNothingLiesUponAnother)
{
    click(u"Expand the agent panel"_s);
    model->activity().log(u"a step"_s, ActivityStep::Kind::info);
    window->resize(500, 420);
    settle();
    const auto *messages = panel->findChild<ChatScrollView *>();
    const QWidget *activity = named(u"Activity, 1 steps, latest a step"_s);
    ASSERT_NE(activity, nullptr);
    EXPECT_GE(activity->y(), messages->geometry().bottom());
}

TEST_F(AgentPanelTest, OpenConversationShowsTheMainWindow)
{
    shortcut(u"Open conversation"_s)->click();
    EXPECT_EQ(browser->mainWindowShown, 1);
}

TEST_F(AgentPanelTest, FilesArePreparedAndGoWithTheMessage)
{
    panel->findChild<ComposerView *>()->handleFiles({QUrl::fromLocalFile(u"/a/report.pdf"_s)});
    settle();
    EXPECT_TRUE(panel->findChild<AttachmentChips *>()->isVisible());
    service.willTurn(Service::answer(u"done"_s));
    say(u"read it"_s);
    finishRun();
    ASSERT_EQ(model->messages().first().attachments.size(), 1);
    EXPECT_EQ(model->messages().first().attachments.first().filename, u"report.pdf"_s);
    EXPECT_FALSE(panel->findChild<AttachmentChips *>()->isVisible());
}

TEST_F(AgentPanelTest, TheDraftStaysWhileTheConversationIsChanged)
{
    QTest::keyClicks(field, u"half a"_s);
    model->newConversation();
    settle();
    EXPECT_EQ(field->draft(), u"half a"_s);
}

} // namespace
} // namespace morvane
