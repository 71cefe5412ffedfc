#include "MainWindowFixture.h"

#include "ui/conversation/ChatScrollView.h"
#include "ui/find/FindBar.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ConversationPane.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class FindTest : public MainWindowFixture {
protected:
    void open(const QList<ChatMessage> &messages)
    {
        save(u"A"_s, messages);
        showNewest();
    }
    void open(const QStringList &texts)
    {
        QList<ChatMessage> messages;
        for (const QString &text : texts)
            messages += message(messages.size() % 2 ? Role::assistant : Role::user, text);
        open(messages);
    }
    QLineEdit *words() const { return part<FindBar>()->findChild<QLineEdit *>(); }
    QString summary() const { return part<FindBar>()->findChild<QLabel *>()->text(); }
    QString selected() const { return part<ChatScrollView>()->selectedText(); }
    void find(const QString &text)
    {
        part<ConversationPane>()->find();
        words()->setText(text);
        settle();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(words(), key, modifiers);
        settle();
    }
};

TEST_F(FindTest, TheFirstMatchIsShownAndToldWithTheCount)
{
    open({u"A sparrow."_s, u"No, **two** Sparrows sat\n\non a roof."_s});
    find(u"sparrow"_s);
    EXPECT_EQ(summary(), u"1 of 2"_s);
    EXPECT_EQ(selected(), u"sparrow"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"1 of 2. You: A sparrow."_s});
    press(Qt::Key_Return);
    EXPECT_EQ(selected(), u"Sparrow"_s);
    EXPECT_EQ(announcer.spoken.last(), u"2 of 2. Morvane: No, two Sparrows sat"_s);
    EXPECT_TRUE(words()->hasFocus());
}

TEST_F(FindTest, OpenedAgainItLooksForItsWordsAgain)
{
    open({u"one"_s, u"two"_s});
    find(u"two"_s);
    press(Qt::Key_Escape);
    announcer.spoken.clear();
    part<ConversationPane>()->find();
    settle();
    EXPECT_EQ(announcer.spoken, QStringList{u"1 of 1. Morvane: two"_s});
}

TEST_F(FindTest, ItGoesRoundInBothDirections)
{
    open({u"x1"_s, u"x2"_s, u"x3"_s});
    find(u"x"_s);
    press(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(summary(), u"3 of 3"_s);
    press(Qt::Key_Return);
    EXPECT_EQ(summary(), u"1 of 3"_s);
    part<ConversationPane>()->findNext();
    EXPECT_EQ(summary(), u"2 of 3"_s);
    part<ConversationPane>()->findPrevious();
    EXPECT_EQ(summary(), u"1 of 3"_s);
}

TEST_F(FindTest, EscapeLeadsBackToTheComposerAndStopsNothing)
{
    open({u"one"_s, u"two"_s});
    neverAnswer();
    model->send(u"three"_s, {});
    settle();
    find(u"one"_s);
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    press(Qt::Key_Escape);
    EXPECT_FALSE(part<FindBar>()->isVisible());
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
    EXPECT_EQ(moves.size(), 1) << "what has the keyboard for a moment is read out";
    EXPECT_TRUE(model->isBusy());
    model->cancel();
    settle();
}

TEST_F(FindTest, WhatStandsNowhereIsTold)
{
    open({u"one"_s, u"two"_s});
    find(u"three"_s);
    EXPECT_EQ(summary(), u"No matches"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"No matches."_s});
    words()->clear();
    settle();
    EXPECT_EQ(summary(), QString());
}

TEST_F(FindTest, AMatchFarAboveIsBroughtIntoSight)
{
    QStringList texts{u"The needle is here."_s};
    for (int i = 0; i < 400; ++i)
        texts += u"Hay. "_s.repeated(60);
    open(texts);
    find(u"needle"_s);
    auto *view = part<ChatScrollView>();
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->isSettled(); }));
    EXPECT_TRUE(view->rowRect(0).intersects(view->viewport()->rect()));
    EXPECT_EQ(selected(), u"needle"_s);
}

TEST_F(FindTest, TheSearchStartsWithWhatIsInSight)
{
    QStringList texts;
    for (int i = 0; i < 100; ++i)
        texts += u"Message %1. "_s.arg(i) + u"Words. "_s.repeated(60);
    open(texts);
    ASSERT_TRUE(QTest::qWaitFor([this] { return part<ChatScrollView>()->isSettled(); }));
    find(u"Message"_s);
    EXPECT_GT(summary().section(u' ', 0, 0).toInt(), 90);
}

TEST_F(FindTest, EveryMatchSelectsTheWordsThatWereFound)
{
    const QString table = u"| head | cell |\n|---|---|\n| cell one | *cell* two |\n"_s;
    const QString list = u"1. cell\n2. other\n   - deep cell\n\n"_s;
    const QString code = u"```sh\ncell=1\necho $cell\n```\n\n> quoted cell\n\n"_s;
    open({u"plain cell\nand a cell"_s, (u"# A cell\n\n"_s + list + table + u"\n"_s + code).repeated(30)});
    find(u"cell"_s);
    const QString first = summary();
    const int count = first.section(u' ', 2).toInt();
    EXPECT_EQ(count, 2 + 30 * 9);
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(selected().toLower(), u"cell"_s) << "match " << i << ": " << summary().toStdString();
        part<ConversationPane>()->findNext();
    }
    EXPECT_EQ(summary(), first);
}

TEST_F(FindTest, NewMessagesAreCountedWithoutAWord)
{
    open({u"one"_s, u"two"_s});
    find(u"one"_s);
    announcer.spoken.clear();
    service.willTurn(FakeAIService::answer(u"one more one"_s));
    settings->setAnnounceResponses(false);
    sendAndFinish(u"and one"_s);
    EXPECT_EQ(summary(), u"1 of 4"_s);
    EXPECT_EQ(announcer.spoken.filter(u" of "_s), QStringList());
}

TEST_F(FindTest, TheButtonThatTheKeyboardIsOnStaysWhileTheWordsAreLookedForAgain)
{
    open({u"one"_s, u"two one"_s});
    find(u"one"_s);
    auto *next = button(part<FindBar>(), u"Next match"_s);
    next->setFocus(Qt::TabFocusReason);
    model->transcript().append(message(Role::user, u"one more"_s));
    EXPECT_TRUE(next->hasFocus());
    settle();
    EXPECT_TRUE(next->hasFocus());
    EXPECT_EQ(summary(), u"1 of 3"_s);
    QTest::keyClick(next, Qt::Key_Space);
    EXPECT_EQ(summary(), u"2 of 3"_s);
}

TEST_F(FindTest, AnotherConversationIsSearchedInItsTurn)
{
    save(u"B"_s, {message(Role::user, u"one one one"_s)});
    open({u"one"_s, u"two"_s});
    find(u"one"_s);
    ASSERT_EQ(summary(), u"1 of 1"_s);
    model->openConversation(model->conversations().list().last().id);
    settle();
    EXPECT_EQ(summary(), u"1 of 3"_s);
    model->newConversation();
    settle();
    EXPECT_EQ(summary(), u"No matches"_s);
}

} // namespace
} // namespace morvane
