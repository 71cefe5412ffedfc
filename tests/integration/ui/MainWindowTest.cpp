#include "MainWindowFixture.h"

#include "support/AskForPermit.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/sheets/PermissionView.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ConversationListView.h"
#include "ui/window/ConversationPane.h"
#include "ui/window/EditMenu.h"
#include "ui/window/HeaderView.h"
#include "ui/window/ShortcutList.h"

#include <QAbstractButton>
#include <QLabel>
#include <QListView>
#include <QListWidget>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSplitter>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class MainWindowTest : public MainWindowFixture {
protected:
    QListView *list() const { return part<ConversationListView>()->findChild<QListView *>(); }
    ComposerEdit *draft() const { return part<ComposerEdit>(); }
    QAbstractButton *button(const QString &name) const
    {
        for (QAbstractButton *button : window->findChildren<QAbstractButton *>())
            if (button->accessibleName() == name)
                return button;
        return nullptr;
    }
};

TEST_F(MainWindowTest, AConversationChosenWithTheMouseIsGoneOnWithInTheComposer)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    save(u"B"_s, {message(Role::user, u"two"_s)});
    restart();
    show();
    list()->setFocus(Qt::TabFocusReason);
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {},
                      list()->visualRect(list()->model()->index(1, 0)).center());
    settle();
    EXPECT_EQ(model->messages().first().text, u"one"_s);
    EXPECT_TRUE(draft()->hasFocus());
    list()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list(), Qt::Key_Up);
    QTest::keyClick(list(), Qt::Key_Return);
    settle();
    EXPECT_EQ(model->messages().first().text, u"two"_s);
    EXPECT_TRUE(list()->hasFocus());
}

TEST_F(MainWindowTest, WhatIsTypedAnywhereGoesToTheComposer)
{
    save(u"A"_s, {message(Role::user, u"one"_s), message(Role::assistant, u"two"_s)});
    showNewest();
    for (QWidget *place : {static_cast<QWidget *>(list()), static_cast<QWidget *>(part<ChatScrollView>()),
                           static_cast<QWidget *>(button(u"New conversation"_s))}) {
        place->setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(place->hasFocus());
        QTest::keyClick(place, Qt::Key_H);
        EXPECT_TRUE(draft()->hasFocus());
        QTest::keyClick(place, Qt::Key_C, Qt::ControlModifier);
    }
    EXPECT_EQ(draft()->toPlainText(), u"hhh"_s);
    part<ChatScrollView>()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(part<ChatScrollView>(), Qt::Key_Down);
    EXPECT_FALSE(draft()->hasFocus());
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    QTest::keyClick(part<ChatScrollView>(), Qt::Key_N, Qt::ControlModifier);
    EXPECT_TRUE(draft()->hasFocus());
    EXPECT_EQ(moves.size(), 1) << "what has the keyboard for a moment is read out";
}

TEST_F(MainWindowTest, PageKeysScrollTheConversationFromTheComposer)
{
    QList<ChatMessage> messages;
    for (int i = 0; i < 60; ++i)
        messages += message(i % 2 ? Role::assistant : Role::user, u"Words. "_s.repeated(40));
    save(u"A"_s, messages);
    showNewest();
    auto *view = part<ChatScrollView>();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->isSettled(); }));
    const int end = view->verticalScrollBar()->value();
    draft()->setFocus();
    QTest::keyClick(draft(), Qt::Key_PageUp);
    const int above = view->verticalScrollBar()->value();
    EXPECT_LT(above, end - view->viewport()->height() / 2);
    QTest::keyClick(draft(), Qt::Key_PageUp);
    QTest::keyClick(draft(), Qt::Key_PageDown);
    EXPECT_NEAR(view->verticalScrollBar()->value(), above, view->viewport()->height() / 4);
    EXPECT_TRUE(draft()->hasFocus());

    auto *latest = button(u"Jump to the latest message"_s);
    EXPECT_TRUE(latest->isVisible());
    latest->click();
    EXPECT_EQ(view->verticalScrollBar()->value(), view->verticalScrollBar()->maximum());
    EXPECT_FALSE(latest->isVisible());
}

TEST_F(MainWindowTest, TheTextsSizeIsSetByKeysAndRemembered)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    announcer.spoken.clear();
    action(u"Larger Text"_s)->trigger();
    action(u"Larger Text"_s)->trigger();
    EXPECT_EQ(announcer.spoken, QStringList({u"Text size 110 percent."_s, u"Text size 125 percent."_s}));
    EXPECT_EQ(part<ChatScrollView>()->zoom(), 125);
    EXPECT_TRUE(action(u"Larger Text"_s)->shortcuts().contains(QKeySequence(Qt::CTRL | Qt::Key_Plus)));
    restart();
    show();
    EXPECT_EQ(part<ChatScrollView>()->zoom(), 125);
    const int large = part<ChatScrollView>()->rows().style().lineHeight;
    action(u"Usual Text Size"_s)->trigger();
    EXPECT_EQ(part<ChatScrollView>()->zoom(), 100);
    EXPECT_LT(part<ChatScrollView>()->rows().style().lineHeight, large);
    for (int i = 0; i < 20; ++i)
        action(u"Smaller Text"_s)->trigger();
    EXPECT_EQ(part<ChatScrollView>()->zoom(), 50);
    EXPECT_FALSE(action(u"Smaller Text"_s)->isEnabled());
}

TEST_F(MainWindowTest, EscapeTakesBackAMessageThatWaitsForTheLocalModel)
{
    show();
    settings->setProviderID(ProviderID::ollama);
    localModel.installationTime = std::chrono::hours(1);
    QAction *stop = action(u"Stop Generating"_s);
    ASSERT_NE(stop, nullptr);
    EXPECT_FALSE(stop->isEnabled());
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    EXPECT_TRUE(stop->isEnabled());
    draft()->setFocus();
    QTest::keyClick(draft(), Qt::Key_Escape);
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_FALSE(stop->isEnabled());
}

TEST_F(MainWindowTest, WhileASheetAsksTheKeysOfTheConversationDoNothing)
{
    save(u"A"_s, {message(Role::user, u"one"_s), message(Role::assistant, u"two"_s)});
    showNewest();
    const auto pressAll = [this] {
        QTest::keyClick(window->windowHandle(), Qt::Key_Equal, Qt::ControlModifier);
        QTest::keyClick(window->windowHandle(), Qt::Key_F, Qt::ControlModifier);
        settle();
    };
    const auto answer = scheduler.spawn(askForPermit(&model->gate(), toolCall(u"write_file"_s)));
    settle();
    ASSERT_TRUE(part<PermissionView>()->isOpen());
    pressAll();
    EXPECT_EQ(part<ChatScrollView>()->zoom(), 100);
    EXPECT_FALSE(part<ConversationPane>()->isFinding());
    model->gate().resolvePermission(false, false);
    settle();
    pressAll();
    EXPECT_EQ(part<ChatScrollView>()->zoom(), 110);
    EXPECT_TRUE(part<ConversationPane>()->isFinding());
}

TEST_F(MainWindowTest, OnASmallScreenAtScaleTwoEveryButtonIsInTheWindow)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    window->setMinimumSize(0, 0);
    window->resize(392, 260);
    settle();
    for (const QToolButton *button : window->findChildren<QToolButton *>()) {
        if (!button->isVisible())
            continue;
        const QRect place(button->mapTo(window.get(), QPoint()), button->size());
        EXPECT_TRUE(window->rect().contains(place)) << button->accessibleName().toStdString();
    }
}

TEST_F(MainWindowTest, SizeAndSplitAreRemembered)
{
    show();
    window->resize(900, 700);
    part<QSplitter>()->setSizes({300, 600});
    const int sidebar = part<QSplitter>()->sizes().first();
    window->close();
    restart();
    show();
    EXPECT_EQ(window->size(), QSize(900, 700));
    EXPECT_EQ(part<QSplitter>()->sizes().first(), sidebar);
}

TEST_F(MainWindowTest, ADamagedPlaceIsNone)
{
    settings->setValue(u"windowGeometry"_s, u"%%%"_s);
    settings->setValue(u"sidebarWidth"_s, u"99999999999"_s);
    restart();
    show();
    EXPECT_GE(window->width(), 600);
    EXPECT_GT(part<QSplitter>()->sizes().last(), 300);
}

TEST_F(MainWindowTest, TheFirstWindowFitsTheScreen)
{
    const QSize room = window->screen()->availableSize();
    EXPECT_LE(window->width(), room.width());
    EXPECT_LT(window->height(), room.height());
    EXPECT_LE(window->minimumHeight(), room.height());
}

TEST_F(MainWindowTest, TheHeaderCutsNothingInLargeType)
{
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSize(20);
    QApplication::setFont(large);
    settings->setProviderID(ProviderID::ollama); // the one with the longest name
    restart();
    window->resize(760, 720);
    show();
    const auto expectWhole = [this](qsizetype count) {
        qsizetype visible = 0;
        for (const QLabel *label : part<HeaderView>()->findChildren<QLabel *>()) {
            if (!label->isVisible())
                continue;
            ++visible;
            EXPECT_GE(label->width(), label->minimumSizeHint().width()) << label->text().toStdString();
            EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
        }
        EXPECT_EQ(visible, count);
        EXPECT_EQ(window->width(), 760);
    };
    expectWhole(1);
    settings->setProviderID(ProviderID::custom);
    settings->setCustomBaseURL(u"http://127.0.0.1:1"_s);
    service.willTurn(FakeAIService::calls(
        {toolCall(u"task"_s, R"({"subagent":"researcher","description":"Look it up"})")}));
    neverAnswer();
    model->send(u"Hello"_s, {});
    settle();
    ASSERT_EQ(model->subagents().label(), u"Researcher is working…"_s);
    expectWhole(2);
    QApplication::setFont(usual);
}

TEST_F(MainWindowTest, TheEditMenuOffersWhatCanBeDone)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    const auto offered = [this] {
        auto *menu = part<EditMenu>();
        Q_EMIT menu->aboutToShow();
        QStringList texts;
        for (const QAction *entry : menu->actions())
            if (entry->isEnabled() && !entry->isSeparator())
                texts += entry->text();
        return texts;
    };
    const QStringList find{u"Find in Conversation…"_s, u"Find Next"_s, u"Find Previous"_s};
    draft()->setFocus();
    EXPECT_EQ(offered(), QStringList{u"Paste"_s} + find);
    QTest::keyClicks(draft(), u"word"_s);
    EXPECT_EQ(offered(), QStringList({u"Undo"_s, u"Paste"_s, u"Select All"_s}) + find);
    draft()->selectAll();
    EXPECT_EQ(offered(), QStringList({u"Undo"_s, u"Cut"_s, u"Copy"_s, u"Paste"_s, u"Select All"_s}) + find);
    part<ChatScrollView>()->setFocus();
    EXPECT_EQ(offered(), QStringList({u"Copy"_s, u"Select All"_s}) + find);
    list()->setFocus();
    model->newConversation();
    EXPECT_EQ(offered(), QStringList());
}

TEST_F(MainWindowTest, TheListOfShortcutsIsReadLineByLine)
{
    show();
    action(u"Keyboard Shortcuts"_s)->trigger();
    auto *shortcuts = part<ShortcutList>();
    ASSERT_NE(shortcuts, nullptr);
    EXPECT_TRUE(shortcuts->isVisible());
    const auto *lines = shortcuts->findChild<QListWidget *>();
    QStringList spoken;
    for (int row = 0; row < lines->count(); ++row)
        spoken += lines->item(row)->data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(spoken.contains(u"Find in the conversation: Ctrl+F"_s));
    EXPECT_TRUE(spoken.contains(u"Delete the conversation: Delete"_s));
    // What the list says of the menus is what they do.
    for (const QAction *entry : window->findChildren<QAction *>()) {
        const QString keys = entry->shortcut().toString(QKeySequence::PortableText);
        const bool isOfWindow = entry->shortcutContext() == Qt::WindowShortcut;
        if (!keys.isEmpty() && entry->isEnabled() && isOfWindow)
            EXPECT_TRUE(spoken.join(u'\n').contains(keys)) << keys.toStdString();
    }
}

} // namespace
} // namespace morvane
