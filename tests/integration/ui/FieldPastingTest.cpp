#include "FieldPastingFixture.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QToolTip>

using namespace Qt::StringLiterals;

using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

const QString silentText = u"Nothing was pasted. The program that you copied from does not answer."_s;

class FieldPastingTest : public FieldPastingFixture {};

TEST_F(FieldPastingTest, WhatIsPastedComesWhenItIsThere)
{
    type(u"ab"_s);
    press(Qt::Key_Left);
    paste();
    EXPECT_EQ(edit->draft(), u"ab"_s);
    EXPECT_TRUE(edit->isPasteAwaited());
    answer(u"12"_s);
    EXPECT_FALSE(edit->isPasteAwaited());
    type(u"x"_s);
    EXPECT_EQ(edit->draft(), u"a12xb"_s);
    edit->undo();
    EXPECT_EQ(edit->draft(), u"ab"_s);
    EXPECT_THAT(source.asked, ElementsAre(PasteSource::Selection::clipboard));
}

TEST_F(FieldPastingTest, WhatIsTypedMeanwhileComesBehindIt)
{
    paste();
    type(u"typed"_s);
    EXPECT_EQ(edit->draft(), u"typed"_s);
    answer(u"pasted "_s);
    EXPECT_EQ(edit->draft(), u"pasted typed"_s);
    type(u"!"_s);
    EXPECT_EQ(edit->draft(), u"pasted typed!"_s);
}

TEST_F(FieldPastingTest, ItTakesThePlaceOfWhatWasSelected)
{
    type(u"abc"_s);
    press(Qt::Key_Left, Qt::ShiftModifier);
    paste();
    press(Qt::Key_Home);
    answer(u"12"_s);
    EXPECT_EQ(edit->draft(), u"ab12"_s);
    EXPECT_EQ(edit->textCursor().position(), 0);
}

TEST_F(FieldPastingTest, WhatIsTypedMeanwhileIsNeverReplaced)
{
    type(u"abc"_s);
    press(Qt::Key_Left, Qt::ShiftModifier);
    paste();
    type(u"typed"_s);
    answer(u"12"_s);
    EXPECT_EQ(edit->draft(), u"ab12typed"_s);
}

TEST_F(FieldPastingTest, TheSameWishTwiceIsOne)
{
    paste();
    paste();
    answer(u"once"_s);
    EXPECT_EQ(edit->draft(), u"once"_s);
    EXPECT_EQ(source.asked.size(), 1);
}

TEST_F(FieldPastingTest, WhatWasCopiedSinceIsAskedForAnew)
{
    paste();
    Q_EMIT QApplication::clipboard()->changed(QClipboard::Clipboard);
    paste();
    answer(u"new"_s, 1);
    answer(u"old"_s, 0);
    EXPECT_EQ(edit->draft(), u"new"_s);
    EXPECT_EQ(source.asked.size(), 2);
}

TEST_F(FieldPastingTest, AMessageThatIsSentMeanwhileTakesItAlong)
{
    service.willTurn(FakeAIService::answer(u"ok"_s));
    type(u"look: "_s);
    paste();
    press(Qt::Key_Return);
    EXPECT_THAT(sent(), IsEmpty());
    answer(u"pasted"_s);
    EXPECT_THAT(sent(), ElementsAre(u"look: pasted"_s));
    EXPECT_EQ(edit->draft(), QString());
    finishRun();
}

TEST_F(FieldPastingTest, ReturnDuringAnAnswerSendsNothingThenOrLater)
{
    neverAnswer();
    type(u"first"_s);
    press(Qt::Key_Return);
    ASSERT_TRUE(model->canCancel());
    type(u"look: "_s);
    paste();
    press(Qt::Key_Return);
    model->cancel();
    settle();
    ASSERT_FALSE(model->canCancel());
    answer(u"pasted"_s);
    EXPECT_THAT(sent(), ElementsAre(u"first"_s));
    EXPECT_EQ(edit->draft(), u"look: pasted"_s);
}

TEST_F(FieldPastingTest, AMessageWithoutWhatWasToBeInItIsNotSent)
{
    type(u"look: "_s);
    paste();
    press(Qt::Key_Return);
    fail();
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(edit->draft(), u"look: "_s);
}

TEST_F(FieldPastingTest, AMessageIsNotSentWhenNothingWasThereToBeInIt)
{
    type(u"look: "_s);
    paste();
    press(Qt::Key_Return);
    announcer.spoken.clear();
    source.answer(PasteContent());
    settle();
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(edit->draft(), u"look: "_s);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Nothing was pasted, so the message was not sent."_s));
    type(u"!"_s);
    paste();
    answer(u"late"_s, 1);
    EXPECT_THAT(sent(), IsEmpty()) << "Return is forgotten";
}

TEST_F(FieldPastingTest, AMessageThatWaitsForItsConversationDoesNotLeaveWithoutIt)
{
    const QUuid saved = QUuid::createUuid();
    ChatMessage message;
    message.id = QUuid::createUuid();
    message.text = u"saved"_s;
    store->save(saved, u"Saved"_s, {message});
    model->openConversation(saved);
    type(u"look: "_s);
    press(Qt::Key_Return);
    paste();
    settle();
    ASSERT_TRUE(model->isReady());
    EXPECT_EQ(model->messages().size(), 1);
    answer(u"pasted"_s);
    EXPECT_EQ(edit->draft(), u"look: pasted"_s);
    EXPECT_EQ(model->messages().size(), 1) << "it was changed since Return";
}

TEST_F(FieldPastingTest, AMessageThatIsChangedOnceItWasSentWaitsForReturn)
{
    paste();
    press(Qt::Key_Return);
    type(u"more"_s);
    answer(u"pasted "_s);
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(edit->draft(), u"pasted more"_s);
}

TEST_F(FieldPastingTest, AnotherConversationGetsTheDraftAndSendsNothing)
{
    paste();
    press(Qt::Key_Return);
    model->newConversation();
    answer(u"pasted"_s);
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_EQ(edit->draft(), u"pasted"_s);
}

TEST_F(FieldPastingTest, EscapeTakesItBack)
{
    paste();
    press(Qt::Key_Escape);
    EXPECT_FALSE(edit->isPasteAwaited());
    answer(u"late"_s);
    EXPECT_EQ(edit->draft(), QString());
    paste();
    answer(u"again"_s, 1);
    EXPECT_EQ(edit->draft(), u"again"_s);
}

TEST_F(FieldPastingTest, AnotherDraftDoesNotGetIt)
{
    paste();
    view.takeSuggestion(u"What can you do?"_s);
    answer(u"late"_s);
    EXPECT_EQ(edit->draft(), u"What can you do?"_s);
}

TEST_F(FieldPastingTest, AProgramThatDoesNotAnswerIsToldOf)
{
    paste();
    fail();
    EXPECT_THAT(announcer.spoken, ElementsAre(silentText));
    EXPECT_EQ(QToolTip::text(), silentText);
    EXPECT_EQ(edit->draft(), QString());
    EXPECT_FALSE(edit->isPasteAwaited());
}

TEST_F(FieldPastingTest, AFoldedTextIsSpokenOf)
{
    paste();
    answer(QString(70'000, u'x'));
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Pasted text, 70,000 characters"_s));
    EXPECT_EQ(edit->toPlainText(), u"[Pasted text, 70,000 characters]"_s);
    paste();
    answer(u"short"_s, 1);
    EXPECT_EQ(announcer.spoken.size(), 1);
}

TEST_F(FieldPastingTest, NothingCopiedIsNothingPasted)
{
    type(u"a"_s);
    press(Qt::Key_A, Qt::ControlModifier);
    paste();
    answer({});
    EXPECT_EQ(edit->draft(), u"a"_s);
    EXPECT_THAT(announcer.spoken, IsEmpty());
}

TEST_F(FieldPastingTest, FilesAndPicturesAreAttached)
{
    paste();
    PasteContent content;
    content.uriList = "file:///tmp/one.txt\r\n";
    content.text = u"/tmp/one.txt"_s;
    source.answer(content);
    settle();
    EXPECT_EQ(edit->draft(), QString());
    EXPECT_THAT(announcer.spoken, testing::Contains(u"Attaching one.txt…"_s));
    paste();
    content = {};
    content.picture = "bytes";
    content.pictureFormat = u"png"_s;
    source.answer(content, 1);
    settle();
    EXPECT_THAT(announcer.spoken, testing::Contains(u"Attaching Pasted image.png…"_s));
}

TEST_F(FieldPastingTest, MenusOpenWithoutAQuestion)
{
    press(Qt::Key_F10, Qt::ShiftModifier);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    settle();
    EXPECT_THAT(source.asked, IsEmpty());
    menu->close();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(5, 5), line.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&line, &event);
    menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    settle();
    EXPECT_THAT(source.asked, IsEmpty());
    for (QAction *action : menu->actions())
        if (action->text() == "&Paste"_L1)
            action->trigger();
    menu->close();
    answer(u"from the menu"_s);
    EXPECT_EQ(line.text(), u"from the menu"_s);
}

TEST_F(FieldPastingTest, ALaterWishElsewhereTakesThePlaceOfTheFirst)
{
    paste();
    press(Qt::Key_Return);
    pasteInLine();
    EXPECT_FALSE(edit->isPasteAwaited());
    answer(u"for the line"_s, 1);
    answer(u"for the draft"_s, 0);
    EXPECT_EQ(line.text(), u"for the line"_s);
    EXPECT_EQ(edit->draft(), QString());
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(FieldPastingTest, WhereNobodyCanBeAskedTheToolkitPastes)
{
    source.reachable = false;
    QApplication::clipboard()->setText(u"direct"_s);
    paste();
    pasteInLine();
    EXPECT_EQ(edit->draft(), u"direct"_s);
    EXPECT_EQ(line.text(), u"direct"_s);
    settle();
    EXPECT_THAT(source.asked, IsEmpty());
}

} // namespace
} // namespace morvane
