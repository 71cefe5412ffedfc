#include "BrowserWindowFixture.h"

#include "base/ReferenceDate.h"
#include "browser/window/HistoryListModel.h"
#include "browser/window/HistorySheet.h"

#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class HistorySheetTest : public BrowserWindowFixture {
protected:
    void visit(const QString &name, const QDateTime &when)
    {
        browser->now = referenceDateFromDateTime(when);
        browser->history.record(u"https://%1.test/"_s.arg(name.toLower()), name);
    }
    /// Three days with a page each, and opens the sheet.
    void open()
    {
        const QDateTime noon(QDate::currentDate(), QTime(12, 0));
        visit(u"Old"_s, noon.addDays(-5));
        visit(u"Second"_s, noon.addDays(-1));
        visit(u"First"_s, noon.addSecs(-60));
        press(Qt::Key_Y, Qt::ControlModifier);
        ASSERT_NE(sheet(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowActive(sheet()));
    }
    HistorySheet *sheet() const { return part<HistorySheet>(); }
    QListView *list() const { return sheet()->findChild<QListView *>(); }
    QLineEdit *query() const { return sheet()->findChild<QLineEdit *>(); }
    QStringList rows(int role = Qt::DisplayRole) const
    {
        QStringList found;
        for (int row = 0; row < list()->model()->rowCount(); ++row)
            found.append(list()->model()->index(row, 0).data(role).toString());
        return found;
    }
    void choose(int row) { list()->setCurrentIndex(list()->model()->index(row, 0)); }
    bool isClosed()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return sheet() == nullptr;
    }
    QString longDate(int daysAgo) const
    {
        return QLocale::system().toString(QDate::currentDate().addDays(-daysAgo), QLocale::LongFormat);
    }
};

TEST_F(HistorySheetTest, EntriesStandUnderTheirDays)
{
    open();
    EXPECT_EQ(sheet()->windowTitle(), u"History"_s);
    EXPECT_EQ(rows(),
              (QStringList{u"Today"_s, u"First"_s, u"Yesterday"_s, u"Second"_s, longDate(5), u"Old"_s}));
    EXPECT_EQ(sheet()->findChild<QLabel *>(u"results"_s)->text(), u"3 results"_s);
    EXPECT_EQ(list()->accessibleName(), u"Browsing history, 3 items"_s);
    EXPECT_EQ(sheet()->accessibleName(), u"Browsing history, 3 items"_s);
}

TEST_F(HistorySheetTest, ARowIsReadWithItsTimeAndWhatItDoes)
{
    open();
    const QString time = QLocale::system().toString(QTime(11, 59), QLocale::ShortFormat);
    EXPECT_EQ(rows(Qt::AccessibleTextRole).at(1), u"First, visited "_s + time);
    EXPECT_EQ(rows(Qt::AccessibleDescriptionRole).at(1), u"Open this page"_s);
    EXPECT_EQ(rows(HistoryListModel::detailRole).at(1), u"first.test · "_s + time);
    EXPECT_EQ(query()->accessibleName(), u"Search history"_s);
    EXPECT_EQ(query()->accessibleDescription(), u"Filter by title or address"_s);
}

TEST_F(HistorySheetTest, TypingFilters)
{
    open();
    EXPECT_TRUE(query()->hasFocus());
    QTest::keyClicks(query(), u"OLD"_s);
    EXPECT_EQ(rows(), (QStringList{longDate(5), u"Old"_s}));
    EXPECT_EQ(list()->accessibleName(), u"Browsing history, 1 items"_s);
    query()->setText(u"nothing like it"_s);
    EXPECT_EQ(rows(), QStringList());
}

TEST_F(HistorySheetTest, ReturnOpensThePageAndClosesTheSheet)
{
    open();
    QTest::keyClick(query(), Qt::Key_Down);
    EXPECT_TRUE(list()->hasFocus());
    QTest::keyClick(list(), Qt::Key_Return); // on the heading nothing happens
    QTest::keyClick(list(), Qt::Key_Down);
    QTest::keyClick(list(), Qt::Key_Return);
    settle();
    EXPECT_EQ(browser->page().log.last(), u"load https://first.test/"_s);
    EXPECT_TRUE(isClosed());
}

TEST_F(HistorySheetTest, FromTheFilterTheKeyGoesBackToTheRowThatWasLeft)
{
    open();
    choose(3);
    query()->setFocus();
    QTest::keyClick(query(), Qt::Key_Down);
    EXPECT_TRUE(list()->hasFocus());
    EXPECT_EQ(list()->currentIndex().row(), 3);
}

TEST_F(HistorySheetTest, AClickOpensThePage)
{
    open();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {},
                      list()->visualRect(list()->model()->index(5, 0)).center());
    settle();
    EXPECT_EQ(browser->page().log.last(), u"load https://old.test/"_s);
    EXPECT_TRUE(isClosed());
}

TEST_F(HistorySheetTest, DeleteRemovesTheEntryAndKeepsThePlace)
{
    open();
    list()->setFocus();
    choose(3);
    QTest::keyClick(list(), Qt::Key_Delete);
    EXPECT_EQ(browser->history.entries().size(), 2);
    EXPECT_EQ(rows(), (QStringList{u"Today"_s, u"First"_s, longDate(5), u"Old"_s}));
    EXPECT_EQ(list()->currentIndex().row(), 3);
}

TEST_F(HistorySheetTest, TheMenuCopiesAndDeletes)
{
    open();
    list()->setFocus();
    choose(1);
    QTest::keyClick(list(), Qt::Key_Menu);
    ASSERT_NE(openMenu(), nullptr);
    const QList<QAction *> offers = openMenu()->actions();
    ASSERT_EQ(offers.size(), 2);
    EXPECT_EQ(offers[0]->text(), u"Copy Link"_s);
    EXPECT_EQ(offers[1]->text(), u"Delete"_s);
    offers[0]->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"https://first.test/"_s);
    offers[1]->trigger();
    EXPECT_EQ(browser->history.entries().first().title, u"Second"_s);
    openMenu()->close();
}

TEST_F(HistorySheetTest, ShiftF10OpensTheMenuToo)
{
    open();
    list()->setFocus();
    choose(1);
    QTest::keyClick(list(), Qt::Key_F10, Qt::ShiftModifier);
    ASSERT_NE(openMenu(), nullptr);
    EXPECT_EQ(openMenu()->activeAction()->text(), u"Copy Link"_s);
    openMenu()->close();
}

TEST_F(HistorySheetTest, APageWithoutATitleIsCalledByItsHost)
{
    visit(u"First"_s, QDateTime(QDate::currentDate(), QTime(11, 0)));
    browser->history.record(u"https://first.test/"_s, {});
    ASSERT_EQ(browser->history.entries().first().title, QString());
    press(Qt::Key_Y, Qt::ControlModifier);
    ASSERT_NE(sheet(), nullptr);
    EXPECT_EQ(rows().at(1), u"first.test"_s);
    EXPECT_TRUE(rows(Qt::AccessibleTextRole).at(1).startsWith(u"first.test, visited "_s));
    Q_EMIT menu(u"History"_s)->aboutToShow();
    EXPECT_EQ(menu(u"History"_s)->actions().last()->text(), u"first.test"_s);
}

TEST_F(HistorySheetTest, TheClearMenuHasBothWays)
{
    open();
    auto *clear = static_cast<QPushButton *>(button(u"Clear browsing options"_s));
    ASSERT_NE(clear, nullptr);
    EXPECT_EQ(clear->text(), u"Clear"_s);
    QStringList offers;
    for (const QAction *action : clear->menu()->actions())
        offers.append(action->text());
    EXPECT_EQ(offers, (QStringList{u"Clear History…"_s, u"Clear Browsing Data…"_s}));
}

TEST_F(HistorySheetTest, ClearingAsksInFrontOfIt)
{
    open();
    static_cast<QPushButton *>(button(u"Clear browsing options"_s))->menu()->actions().first()->trigger();
    settle();
    auto *alert = sheet()->findChild<QMessageBox *>();
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text(), u"Clear History?"_s);
    alert->reject();
}

TEST_F(HistorySheetTest, WhatIsVisitedMeanwhileIsShown)
{
    open();
    choose(1);
    visit(u"New"_s, QDateTime(QDate::currentDate(), QTime(12, 5)));
    EXPECT_EQ(rows().at(1), u"New"_s);
    EXPECT_EQ(list()->currentIndex().row(), 2);
    browser->records.clearHistory();
    EXPECT_EQ(rows(), QStringList());
}

TEST_F(HistorySheetTest, EscapeClosesIt)
{
    open();
    QTest::keyClick(query(), Qt::Key_Escape);
    EXPECT_TRUE(isClosed());
}

} // namespace
} // namespace morvane
