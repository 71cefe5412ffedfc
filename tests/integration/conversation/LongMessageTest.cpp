#include "ConversationFixture.h"

#include <QSemaphore>
#include <QTest>
#include <QThreadPool>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const ConversationItem first{.kind = ConversationItem::Kind::message, .index = 0};
const ConversationItem second{.kind = ConversationItem::Kind::message, .index = 1};

/// Messages of which each is cut off the main thread. Where no thread is free they wait.
class LongMessageTest : public ConversationFixture {
protected:
    ~LongMessageTest() override
    {
        letGo();
        QThreadPool::globalInstance()->waitForDone();
    }

    static QString longText(const QString &word) { return (word + u'\n').repeated(100'000); }

    /// Nothing is cut from here on until letGo is called.
    void holdBack()
    {
        QThreadPool *pool = QThreadPool::globalInstance();
        for (int i = 0; i < pool->maxThreadCount(); ++i)
            pool->start([this] { hold.acquire(); });
    }
    void letGo() { hold.release(QThreadPool::globalInstance()->maxThreadCount()); }

    /// Shows the view and draws once, whatever is still missing.
    void draw()
    {
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
        view.grab();
    }

    bool isCut(const ConversationItem &item) const { return view.rows().peek(item).isSplit(); }
    /// What its last line says; empty where not all of the message is cut.
    QString lastLine(const ConversationItem &item) const
    {
        const RowLayout &row = view.rows().peek(item);
        const QString text = view.content().text(item);
        if (!row.isSplit() || row.segments.last().segment.end() < text.trimmed().size())
            return {};
        return view.rows().plainText(item, row.segments.size() - 1).trimmed().split(u'\n').last();
    }

    QSemaphore hold;
};

TEST_F(LongMessageTest, ItIsCutWithoutHoldingTheWindowAndThenShownAtItsEnd)
{
    holdBack();
    say(Role::user, longText(u"words"_s));
    draw();
    EXPECT_FALSE(isCut(first));
    EXPECT_FALSE(view.isSettled());
    letGo();
    settle();
    EXPECT_TRUE(isCut(first));
    EXPECT_EQ(lastLine(first), u"words"_s);
    EXPECT_EQ(remaining(), 0);
}

TEST_F(LongMessageTest, AShortOneBesideItDoesNotWait)
{
    holdBack();
    say(Role::assistant, longText(u"words"_s));
    say(Role::user, u"Short."_s);
    draw();
    EXPECT_FALSE(isCut(first));
    EXPECT_EQ(lastLine(second), u"Short."_s);
    EXPECT_NE(view.rows().laidOut(second, 0), nullptr);
    letGo();
    settle();
    EXPECT_TRUE(isCut(first));
    EXPECT_EQ(remaining(), 0);
}

TEST_F(LongMessageTest, WhatTakesItsPlaceMeanwhileIsShownInstead)
{
    holdBack();
    transcript.reset({message(Role::user, longText(u"older"_s))});
    draw();
    transcript.reset({message(Role::user, longText(u"a newer"_s))});
    view.grab();
    letGo();
    settle();
    EXPECT_EQ(lastLine(first), u"a newer"_s);
}

TEST_F(LongMessageTest, OneThatIsChangedMeanwhileIsShownAsItIsThen)
{
    holdBack();
    transcript.reset({message(Role::assistant, longText(u"older"_s))});
    draw();
    transcript.setText(0, longText(u"a newer"_s));
    view.grab();
    letGo();
    settle();
    EXPECT_EQ(lastLine(first), u"a newer"_s);
}

TEST_F(LongMessageTest, SeveralFollowOneAnother)
{
    transcript.reset({message(Role::user, longText(u"words"_s)), message(Role::user, longText(u"other"_s))});
    show();
    EXPECT_EQ(lastLine(second), u"other"_s);
    view.setCurrentRow(0);
    settle();
    EXPECT_EQ(lastLine(first), u"words"_s);
}

TEST_F(LongMessageTest, WhoAsksForItsPartsNeedNotWait)
{
    holdBack();
    say(Role::user, longText(u"words"_s));
    draw();
    view.selectAll();
    EXPECT_TRUE(view.selectedText().endsWith(u"words"_s));
    letGo();
    settle();
    EXPECT_EQ(lastLine(first), u"words"_s);
}

TEST_F(LongMessageTest, AnAnswerThatWasReadWhileItGrewDoesNotVanishAtItsEnd)
{
    startAnswer(longText(u"words"_s));
    show();
    ASSERT_TRUE(isCut(first));
    holdBack();
    endAnswer();
    view.grab();
    EXPECT_TRUE(isCut(first));
    letGo();
    settle();
}

TEST_F(LongMessageTest, TheViewMayGoWhileOneIsCut)
{
    auto other = std::make_unique<ChatScrollView>(transcript, activity, announcer);
    holdBack();
    say(Role::user, longText(u"words"_s));
    other->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(other.get()));
    other->grab();
    EXPECT_TRUE(other->rows().splitter().isBusy());
    other.reset();
    letGo();
    QThreadPool::globalInstance()->waitForDone();
}

} // namespace
} // namespace morvane
