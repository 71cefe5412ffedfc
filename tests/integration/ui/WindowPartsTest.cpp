#include "MainWindowFixture.h"

#include "ui/conversation/ChatScrollView.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ConversationListView.h"
#include "ui/window/HeaderView.h"
#include "ui/window/StatusBarView.h"

#include <QAbstractButton>
#include <QLabel>
#include <QListView>
#include <QMenu>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What the parts of the main window tell of the model, and what becomes of the focus between them.
class WindowPartsTest : public MainWindowFixture {
protected:
    QStringList headerLabels() const
    {
        QStringList names;
        for (const QLabel *label : part<HeaderView>()->findChildren<QLabel *>())
            if (label->isVisible())
                names.append(label->accessibleName());
        return names;
    }
    /// The submenu of the saved conversations, as it is when it opens.
    QList<QAction *> savedConversations() const
    {
        for (QMenu *menu : window->findChildren<QMenu *>()) {
            if (menu->title() != "Conversations"_L1)
                continue;
            Q_EMIT menu->aboutToShow();
            return menu->actions();
        }
        return {};
    }
};

TEST_F(WindowPartsTest, TheHeaderTellsTheProviderAndItsButtons)
{
    show();
    EXPECT_EQ(headerLabels(), QStringList(u"Morvane. AI provider: Custom"_s)) << "and no subagent";
    settings->setProviderID(ProviderID::groq);
    EXPECT_EQ(headerLabels(), QStringList(u"Morvane. AI provider: Groq"_s));
    QStringList buttons;
    for (const auto *button : part<HeaderView>()->findChildren<QAbstractButton *>())
        buttons.append(button->accessibleName());
    EXPECT_EQ(buttons, QStringList({u"Morvane Browser"_s, u"New conversation"_s, u"Settings"_s}));
}

TEST_F(WindowPartsTest, TheStatusLineSaysWhatItShows)
{
    show();
    EXPECT_EQ(part<StatusBarView>()->accessibleName(), u"Status. Ready"_s);
    model->status().setStatusText(u"Connecting to Groq…"_s);
    EXPECT_EQ(part<StatusBarView>()->accessibleName(), u"Status. Connecting to Groq…"_s);
    EXPECT_EQ(part<StatusBarView>()->text(), u"Connecting to Groq…"_s);
    model->status().setStatusText(u"Running: open \u202Efdp.exe"_s);
    EXPECT_EQ(part<StatusBarView>()->text(), u"Running: open \uFFFDfdp.exe"_s) << "in its order";
}

TEST_F(WindowPartsTest, EscapeBelongsToTheSheet)
{
    show();
    neverAnswer();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    QAction *stop = action(u"Stop Generating"_s);
    EXPECT_TRUE(stop->isEnabled());
    auto answer = scheduler.spawn(model->questions().askUserQuestion(u"Which?"_s, {}));
    settle();
    EXPECT_FALSE(stop->isEnabled());
    EXPECT_FALSE(action(u"Find in Conversation…"_s)->isEnabled());
    model->questions().resolveQuestion(u"That"_s);
    settle();
    EXPECT_TRUE(stop->isEnabled());
    EXPECT_TRUE(action(u"Find in Conversation…"_s)->isEnabled());
}

TEST_F(WindowPartsTest, TheMenusOfTheConversationWaitForTheGreetingsEnd)
{
    settings->setValue(u"hasCompletedOnboarding"_s, false);
    restart();
    show();
    EXPECT_FALSE(action(u"Larger Text"_s)->isEnabled());
    model->skipOnboarding();
    EXPECT_TRUE(action(u"Larger Text"_s)->isEnabled());
}

TEST_F(WindowPartsTest, SavedConversationsStandInTheMenuAsTheyAreCalled)
{
    show();
    ASSERT_EQ(savedConversations().size(), 1);
    EXPECT_EQ(savedConversations().constFirst()->text(), u"No saved conversations"_s);
    EXPECT_FALSE(savedConversations().constFirst()->isEnabled());
    save(u"Questions & answers"_s, {message(Role::user, u"one"_s)});
    model->conversations().reload();
    settle();
    ASSERT_EQ(savedConversations().size(), 1);
    EXPECT_EQ(savedConversations().constFirst()->text(), u"Questions && answers"_s) << "shown with one";
    savedConversations().constFirst()->trigger();
    settle();
    EXPECT_EQ(model->messages().size(), 1);
}

TEST_F(WindowPartsTest, WhoeverLeavesTheWindowFindsTheConversationSaved)
{
    show();
    model->transcript().append(message(Role::user, u"half an hour's work"_s));
    settle();
    ASSERT_TRUE(listed().isEmpty());
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    settle();
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(WindowPartsTest, TheFocusGoesToTheDraftWhereItsPlaceIsGone)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    part<ChatScrollView>()->setFocus();
    model->newConversation();
    settle();
    EXPECT_EQ(window->focusWidget(), part<ComposerEdit>());
}

TEST_F(WindowPartsTest, NoRowOfTheListIsTheCurrentOneWithoutTheFocus)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    auto *list = part<ConversationListView>()->findChild<QListView *>();
    list->setFocus(Qt::TabFocusReason);
    EXPECT_TRUE(list->currentIndex().isValid());
    part<ComposerEdit>()->setFocus(Qt::TabFocusReason);
    EXPECT_FALSE(list->currentIndex().isValid());
}

} // namespace
} // namespace morvane
