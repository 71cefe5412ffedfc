#include "MainWindowFixture.h"

#include "ui/window/ComposerEdit.h"
#include "ui/window/ConversationListView.h"

#include <QListView>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class MainWindowTest : public MainWindowFixture {
protected:
    QListView *list() const { return part<ConversationListView>()->findChild<QListView *>(); }
    ComposerEdit *draft() const { return part<ComposerEdit>(); }
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

} // namespace
} // namespace morvane
