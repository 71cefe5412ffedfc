#include "BrowserWindowFixture.h"

#include "browser/window/PageArea.h"
#include "browser/window/URLField.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class BrowserFocusTest : public BrowserWindowFixture {
protected:
    /// What shows the page, in place of what showed it before.
    QWidget *showPageInNewWidget()
    {
        QWidget &view = *browser->page().view();
        const QPointer<QWidget> before = view.focusProxy();
        auto *shown = new QWidget(&view);
        shown->setAccessibleName(u"page"_s);
        shown->setFocusPolicy(Qt::StrongFocus);
        shown->show();
        view.setFocusProxy(shown);
        delete before;
        settle();
        return shown;
    }
    /// The names of what has the focus, until it comes round.
    QStringList onceRound(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QStringList names;
        const QWidget *first = QApplication::focusWidget();
        do {
            names.append(QApplication::focusWidget()->accessibleName());
            QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        } while (QApplication::focusWidget() != first && names.size() < 100);
        return names;
    }
};

TEST_F(BrowserFocusTest, ThePageKeepsTheKeyboardWhenAnotherProcessShowsIt)
{
    showPageInNewWidget();
    part<PageArea>()->focusPage();
    const QWidget *after = showPageInNewWidget();
    EXPECT_TRUE(after->hasFocus());
}

TEST_F(BrowserFocusTest, AnotherProcessDoesNotTakeTheKeyboardFromTheAddress)
{
    showPageInNewWidget();
    part<URLField>()->setFocus();
    showPageInNewWidget();
    EXPECT_TRUE(part<URLField>()->hasFocus());
}

TEST_F(BrowserFocusTest, TabGoesThroughThePartsAsTheyAreSeen)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    browser->records.addBookmarkForActiveTab(manager);
    manager.newTab();
    browser->load(u"https://b.test/"_s, u"B"_s);
    browser->records.addBookmarkForActiveTab(manager);
    showPageInNewWidget();
    part<URLField>()->setFocus();
    const QStringList order{u"Address bar"_s,
                            u"Bookmark this page"_s,
                            u"Share this page"_s,
                            u"Show history"_s,
                            u"Open bookmark A"_s,
                            u"Open bookmark B"_s,
                            u"page"_s,
                            u"Expand the agent panel"_s,
                            QString(),
                            QString(),
                            QString(),
                            u"Attach file"_s,
                            u"Tell Morvane what to do in the browser"_s,
                            u"B"_s,
                            u"New browser tab"_s,
                            u"Reload this page"_s};
    EXPECT_EQ(onceRound(Qt::Key_Tab).join(u", "_s).toStdString(), order.join(u", "_s).toStdString());
    QStringList backwards(order.crbegin(), order.crend());
    backwards.move(backwards.size() - 1, 0);
    EXPECT_EQ(onceRound(Qt::Key_Backtab, Qt::ShiftModifier).join(u", "_s).toStdString(),
              backwards.join(u", "_s).toStdString());
}

} // namespace
} // namespace morvane
