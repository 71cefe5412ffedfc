#include "ui/window/WindowCommands.h"

#include "MainWindowFixture.h"

#include "support/AskForPermit.h"
#include "support/FakePasteSource.h"
#include "ui/controls/FieldPasting.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/sheets/PermissionView.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/ConversationList.h"

#include <QClipboard>
#include <QLineEdit>
#include <QMenuBar>

using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace morvane {
namespace {

QAccessibleInterface &element(QWidget *widget)
{
    return *QAccessible::queryAccessibleInterface(widget);
}

/// What assistive technology may change of the main window, below a sheet and without one.
class WindowCommandsTest : public MainWindowFixture {
protected:
    WindowCommandsTest()
    {
        // The screen that nobody sees takes whatever is on its clipboard for another program's.
        QApplication::clipboard()->setText(u"never asked for"_s);
    }

    ComposerEdit &draft() const { return *part<ComposerEdit>(); }

    FakePasteSource source;
    FieldPasting pasting{scheduler, source, announcer};
    WindowCommands commands{pasting};
};

TEST_F(WindowCommandsTest, WhatLiesBelowASheetIsReadAndNotChanged)
{
    save(u"A"_s, {message(Role::user, u"one"_s)});
    showNewest();
    QAccessibleInterface &row = *element(part<ChatScrollView>()).child(0);
    QAccessibleInterface &entry = *element(part<ConversationList>()).child(0);
    QList<QAccessibleInterface *> below{&element(&draft()), &entry};
    for (QAbstractButton *button : window->findChildren<QAbstractButton *>())
        below.append(&element(button));
    for (QAccessibleInterface *one : below)
        EXPECT_TRUE(commands.mayChange(*one));
    const auto answer = scheduler.spawn(askForPermit(&model->gate(), toolCall(u"write_file"_s)));
    settle();
    ASSERT_TRUE(part<PermissionView>()->isOpen());
    for (QAccessibleInterface *one : below)
        EXPECT_FALSE(commands.mayChange(*one)) << one->text(QAccessible::Name).toStdString();
    EXPECT_TRUE(commands.mayChange(row));
    EXPECT_TRUE(commands.mayChange(element(window->menuBar())));
    for (QAbstractButton *button : part<PermissionView>()->findChildren<QAbstractButton *>())
        EXPECT_TRUE(commands.mayChange(element(button)));
    model->gate().resolvePermission(false, false);
    settle();
    EXPECT_TRUE(commands.mayChange(entry));
}

TEST_F(WindowCommandsTest, AShortTextIsThereAtOnceAndCanBeUndone)
{
    show();
    draft().setPasting(pasting);
    EXPECT_TRUE(commands.replaceText(element(&draft()), 0, 0, u"hello"_s));
    EXPECT_TRUE(commands.replaceText(element(&draft()), 1, 4, u"a"_s));
    EXPECT_EQ(draft().draft(), u"hao"_s);
    EXPECT_TRUE(commands.replaceText(element(&draft()), 100, -5, u"bye"_s));
    EXPECT_EQ(draft().draft(), u"bye"_s);
    draft().undo();
    EXPECT_EQ(draft().draft(), u"hao"_s);
}

TEST_F(WindowCommandsTest, WhatIsDictatedIsNotFoldedWhereWhatIsPastedIs)
{
    show();
    const QString page = u"several words "_s.repeated(600);
    commands.replaceText(element(&draft()), 0, 0, page);
    EXPECT_TRUE(draft().folds().places().isEmpty());
    EXPECT_EQ(draft().draft(), page);
    draft().setDraft(page);
    EXPECT_FALSE(draft().folds().places().isEmpty());
}

TEST_F(WindowCommandsTest, ATextOfMegabytesComesWhenItHasBeenLookedAtAndGoesAlong)
{
    show();
    draft().setPasting(pasting);
    const QString text = u"several words "_s.repeated(100'000);
    commands.replaceText(element(&draft()), 0, 0, u"abc"_s);
    commands.replaceText(element(&draft()), 1, 2, text);
    EXPECT_TRUE(draft().isPasteAwaited());
    EXPECT_EQ(draft().toPlainText(), u"abc"_s);
    EXPECT_TRUE(waitUntil([this] { return !draft().isPasteAwaited(); }));
    EXPECT_EQ(draft().toPlainText(), u"a[Pasted text, 1.4 MB]c"_s);
    EXPECT_TRUE(draft().draft() == u'a' + text + u'c');
}

TEST_F(WindowCommandsTest, APasteAsksTheOtherProgramAndWaitsForNobody)
{
    show();
    draft().setPasting(pasting);
    commands.replaceText(element(&draft()), 0, 0, u"abc"_s);
    EXPECT_TRUE(commands.pasteText(element(&draft()), 1));
    settle();
    EXPECT_THAT(source.asked, ElementsAre(PasteSource::Selection::clipboard));
    EXPECT_EQ(draft().draft(), u"abc"_s);
    source.answerText(u"-"_s);
    settle();
    EXPECT_EQ(draft().draft(), u"a-bc"_s);

    QLineEdit line;
    line.setText(u"abc"_s);
    line.show();
    EXPECT_TRUE(commands.pasteText(element(&line), 2));
    source.answerText(u"+"_s, 1);
    settle();
    EXPECT_EQ(line.text(), u"ab+c"_s);
}

} // namespace
} // namespace morvane
