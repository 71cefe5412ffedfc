#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "store/ConversationFile.h"
#include "support/AppFixture.h"

#include "ui/theme/Contrast.h"
#include "ui/theme/ThemeColors.h"
#include "ui/window/ConversationListModel.h"
#include "ui/window/ConversationListView.h"

#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ConversationListViewTest : public AppFixture {
protected:
    ConversationListViewTest()
    {
        for (const auto &title : {u"Oldest"_s, u"Older"_s, u"Newest"_s})
            save(QUuid::createUuid(), title);
        start();
        view = std::make_unique<ConversationListView>(*model);
        view->resize(300, 400);
        view->show();
        list = view->findChild<QListView *>();
        remove = view->findChild<QToolButton *>();
        settle();
    }
    ~ConversationListViewTest() override { view.reset(); }

    void save(QUuid id, const QString &title)
    {
        ChatMessage message;
        message.id = QUuid::createUuid();
        message.text = title;
        store->save(id, title, {message});
    }
    QStringList titles() const
    {
        QStringList result;
        for (int row = 0; row < list->model()->rowCount(); ++row)
            result.append(list->model()->index(row, 0).data().toString());
        return result;
    }
    QModelIndex row(const QString &title) const
    {
        return list->model()->index(int(titles().indexOf(title)), 0);
    }
    void click(const QString &title)
    {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(row(title)).center());
    }

    /// Gives the keyboard to a row of the list.
    void goTo(const QString &title)
    {
        list->setFocus(Qt::TabFocusReason);
        list->setCurrentIndex(row(title));
    }
    /// What a key does that is held down.
    void hold(Qt::Key key)
    {
        QTest::keyPress(list, key);
        for (int i = 0; i < 5; ++i) {
            settle();
            QKeyEvent repeated(QEvent::KeyPress, key, Qt::NoModifier, {}, true);
            QApplication::sendEvent(list, &repeated);
        }
        QTest::keyRelease(list, key);
        settle();
    }

    /// The greatest contrast with the pixel at `ground` along the middle half of a line of the picture.
    static double contrastAlong(const QImage &image, int y, const QPoint &ground)
    {
        double greatest = 1;
        for (int x = image.width() / 4; x < image.width() * 3 / 4; ++x)
            greatest = std::max(greatest, contrastRatio(image.pixelColor(x, y), image.pixelColor(ground)));
        return greatest;
    }
    static QImage pictureOf(QWidget *widget) { return widget->grab().toImage(); }

    std::unique_ptr<ConversationListView> view;
    QListView *list = nullptr;
    QToolButton *remove = nullptr;
};

TEST_F(ConversationListViewTest, TheModelKeepsTheToolkitsRules)
{
    ConversationListModel rows(model->conversations());
    const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::Fatal);
    int resets = 0;
    QObject::connect(&rows, &QAbstractItemModel::modelReset, &rows, [&resets] { ++resets; });
    const QUuid oldest = model->conversations().list().last().id;
    save(oldest, u"Oldest of all"_s);
    save(QUuid::createUuid(), u"Fourth"_s);
    store->remove(model->conversations().list().at(1).id);
    model->conversations().reload();
    settle();
    model->deleteConversation(oldest);
    settle();
    EXPECT_EQ(titles(), QStringList({u"Fourth"_s, u"Newest"_s}));
    EXPECT_EQ(rows.rowCount(), 2);
    EXPECT_EQ(resets, 0);
}

TEST_F(ConversationListViewTest, DeleteWithAnotherKeyIsAnotherCommand)
{
    goTo(u"Older"_s);
    for (const auto modifier : {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier})
        QTest::keyClick(list, Qt::Key_Delete, modifier);
    settle();
    EXPECT_EQ(titles().size(), 3);
}

TEST_F(ConversationListViewTest, AfterADeletionTheKeyboardIsStillInTheList)
{
    for (int left = 2; left > 0; --left) {
        goTo(titles().constFirst());
        remove->setFocus(Qt::TabFocusReason);
        ASSERT_TRUE(remove->hasFocus());
        remove->click();
        settle();
        EXPECT_EQ(titles().size(), left);
        EXPECT_TRUE(list->hasFocus());
        EXPECT_TRUE(list->currentIndex().isValid());
    }
}

TEST_F(ConversationListViewTest, AReaderIsToldWhichConversationIsOpen)
{
    click(u"Older"_s);
    settle();
    QAccessibleInterface *rows = QAccessible::queryAccessibleInterface(list);
    for (const auto &title : {u"Oldest"_s, u"Older"_s, u"Newest"_s})
        EXPECT_EQ(rows->child(row(title).row())->state().selected, title == u"Older"_s)
            << title.toStdString();
}

TEST_F(ConversationListViewTest, AnEmptyListSaysThatConversationsAreSaved)
{
    for (const QString &title : titles()) {
        model->deleteConversation(model->conversations().list().at(row(title).row()).id);
        settle();
    }
    EXPECT_FALSE(list->isVisible());
    for (const QLabel *label : view->findChildren<QLabel *>())
        if (label->text() == "No saved conversations yet."_L1) {
            EXPECT_TRUE(label->isVisible());
            EXPECT_EQ(label->accessibleName(),
                      u"No saved conversations yet. They are saved automatically."_s);
        }
}

TEST_F(ConversationListViewTest, DatesAreShortAndWithoutZeros)
{
    const QUuid id = model->conversations().list().constFirst().id;
    QString path;
    QDirIterator files(home.path(u"data/Conversations"_s), QDir::Files);
    while (files.hasNext())
        if (const QString file = files.next(); file.contains(uuidText(id)))
            path = file;
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    auto saved = decodeConversation(file.readAll());
    ASSERT_TRUE(saved);
    const QDateTime fifth(QDate(2026, 3, 5), QTime(14, 7));
    saved->updatedAt = referenceDateFromDateTime(fifth);
    file.resize(0);
    file.write(encodeConversation(*saved));
    file.close();
    model->conversations().reload();
    settle();
    const QModelIndex entry = row(u"Newest"_s);
    EXPECT_EQ(entry.data(Qt::AccessibleTextRole).toString(),
              u"Open Newest, updated Mar 5, 2:07 PM, 1 messages"_s);
}

TEST_F(ConversationListViewTest, FocusIsSeenOnTheOpenRowToo)
{
    click(u"Older"_s);
    settle();
    for (const QPalette &palette : {lightPalette(), darkPalette()}) {
        view->setPalette(palette);
        for (const auto &title : {u"Older"_s, u"Newest"_s}) {
            goTo(title);
            const QRect place = list->visualRect(row(title));
            const QImage picture = pictureOf(list->viewport());
            const QPoint ground(place.right() - 10, place.center().y());
            double greatest = 1;
            for (int y = place.top() + 3; y < place.top() + 6; ++y)
                greatest = std::max(greatest, contrastAlong(picture, y, ground));
            EXPECT_GE(greatest, graphicsContrast) << title.toStdString();
        }
    }
}

TEST_F(ConversationListViewTest, TheButtonOnTheOpenRowAndItsFocusAreSeen)
{
    click(u"Older"_s);
    settle();
    for (const QPalette &palette : {lightPalette(), darkPalette()}) {
        QApplication::setPalette(palette);
        settle();
        list->setFocus(Qt::TabFocusReason);
        const QPoint ground(remove->width() / 2, 1);
        const QImage calm = pictureOf(remove);
        EXPECT_GE(contrastAlong(calm, remove->height() / 2, ground), textContrast);
        remove->setFocus(Qt::TabFocusReason);
        const QImage focused = pictureOf(remove);
        const auto ring = [&](const QImage &picture) {
            double greatest = 1;
            for (int y = 2; y < 6; ++y)
                greatest = std::max(greatest, contrastAlong(picture, y, ground));
            return greatest;
        };
        EXPECT_LT(ring(calm), graphicsContrast);
        EXPECT_GE(ring(focused), graphicsContrast);
    }
    QApplication::setPalette(lightPalette());
}

TEST_F(ConversationListViewTest, TheListComesBeforeItsButtonWhateverStandsBeside)
{
    click(u"Older"_s);
    settle();
    QWidget window;
    auto *before = new QToolButton(&window);
    view->setParent(&window);
    window.show();
    view->show();
    const QWidget *stop = before->nextInFocusChain();
    while (stop != list && stop != remove)
        stop = stop->nextInFocusChain();
    EXPECT_EQ(stop, list);
    view->setParent(nullptr);
}

TEST_F(ConversationListViewTest, DeleteRightAfterAClickDeletesWhatWasClicked)
{
    click(u"Newest"_s);
    settle();
    click(u"Oldest"_s);
    QTest::keyClick(list, Qt::Key_Delete);
    settle();
    EXPECT_EQ(titles(), QStringList({u"Newest"_s, u"Older"_s}));
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(ConversationListViewTest, TheClickedRowIsSelectedAtOnceAndStaysSo)
{
    click(u"Newest"_s);
    settle();
    click(u"Older"_s);
    EXPECT_EQ(list->selectionModel()->selectedIndexes().value(0), row(u"Older"_s));
    settle();
    EXPECT_EQ(list->selectionModel()->selectedIndexes().value(0), row(u"Older"_s));
    EXPECT_EQ(list->currentIndex(), row(u"Older"_s));
}

TEST_F(ConversationListViewTest, TheDeleteButtonGoesWithItsRow)
{
    // Leaving a conversation saves it, and the next reading of the list puts it first.
    click(u"Oldest"_s);
    settle();
    ASSERT_EQ(titles(), QStringList({u"Newest"_s, u"Older"_s, u"Oldest"_s}));
    click(u"Newest"_s);
    ASSERT_EQ(remove->accessibleName(), u"Delete Newest"_s);
    settle();
    ASSERT_EQ(titles(), QStringList({u"Oldest"_s, u"Newest"_s, u"Older"_s}));
    EXPECT_EQ(remove->accessibleName(), u"Delete Newest"_s);
    EXPECT_TRUE(list->visualRect(row(u"Newest"_s))
                    .contains(list->viewport()->mapFrom(view.get(), remove->geometry().center())));
    remove->click();
    settle();
    EXPECT_EQ(titles(), QStringList({u"Oldest"_s, u"Older"_s}));
}

TEST_F(ConversationListViewTest, BackspaceDeletesNothing)
{
    goTo(u"Older"_s);
    hold(Qt::Key_Backspace);
    EXPECT_EQ(titles(), QStringList({u"Newest"_s, u"Older"_s, u"Oldest"_s}));
}

TEST_F(ConversationListViewTest, DeleteThatIsHeldDownDeletesOneConversation)
{
    goTo(u"Newest"_s);
    hold(Qt::Key_Delete);
    EXPECT_EQ(titles(), QStringList({u"Older"_s, u"Oldest"_s}));
}

TEST_F(ConversationListViewTest, TheOpenConversationStaysMarkedWhileTheKeyboardGoesThroughTheList)
{
    click(u"Newest"_s);
    settle();
    goTo(u"Newest"_s);
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(list->currentIndex(), row(u"Older"_s));
    EXPECT_EQ(list->selectionModel()->selectedIndexes(), QModelIndexList{row(u"Newest"_s)});
    EXPECT_EQ(remove->accessibleName(), u"Delete Older"_s);
    QTest::mouseClick(list->viewport(), Qt::RightButton, {}, list->visualRect(row(u"Oldest"_s)).center());
    EXPECT_EQ(list->selectionModel()->selectedIndexes(), QModelIndexList{row(u"Newest"_s)});
}

TEST_F(ConversationListViewTest, TheListComesBeforeItsDeleteButton)
{
    goTo(u"Older"_s);
    QTest::keyClick(list, Qt::Key_Tab);
    EXPECT_TRUE(remove->hasFocus());
    EXPECT_EQ(remove->accessibleName(), u"Delete Older"_s);
    EXPECT_EQ(list->currentIndex(), row(u"Older"_s));
}

TEST_F(ConversationListViewTest, ThePointerDoesNotMoveAButtonThatTheKeyboardIsOn)
{
    goTo(u"Older"_s);
    remove->setFocus(Qt::TabFocusReason);
    QTest::mouseMove(list->viewport(), list->visualRect(row(u"Oldest"_s)).center());
    Q_EMIT list->entered(row(u"Oldest"_s));
    EXPECT_EQ(remove->accessibleName(), u"Delete Older"_s);
    QTest::keyClick(remove, Qt::Key_Space);
    settle();
    EXPECT_EQ(titles(), QStringList({u"Newest"_s, u"Oldest"_s}));
}

TEST_F(ConversationListViewTest, TheMenuDeletesTheRowThatItWasOpenedOn)
{
    goTo(u"Older"_s);
    const QPoint place = list->visualRect(row(u"Oldest"_s)).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, list->viewport()->mapToGlobal(place));
    QApplication::sendEvent(list->viewport(), &event);
    auto *menu = view->findChild<QMenu *>();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(list->currentIndex(), row(u"Older"_s));
    menu->actions().last()->trigger();
    menu->close();
    settle();
    EXPECT_EQ(titles(), QStringList({u"Newest"_s, u"Older"_s}));
}

TEST_F(ConversationListViewTest, TheKeyboardStaysInTheListWhenARowGoes)
{
    list->setFocus();
    list->setCurrentIndex(row(u"Older"_s));
    QTest::keyClick(list, Qt::Key_Delete);
    settle();
    EXPECT_EQ(titles(), QStringList({u"Newest"_s, u"Oldest"_s}));
    EXPECT_TRUE(list->currentIndex().isValid());
}

TEST_F(ConversationListViewTest, DateAndCountAreWholeInAListOfAnyWidth)
{
    view->resize(600, 400);
    settle();
    const int wide = list->visualRect(row(u"Older"_s)).height();
    view->resize(view->minimumSizeHint().width(), 400);
    settle();
    EXPECT_GT(list->visualRect(row(u"Older"_s)).height(), wide);
    QFont detail = list->font();
    detail.setPointSizeF(detail.pointSizeF() * 0.85);
    const QStringList lines =
        row(u"Older"_s).data(ConversationListModel::detailRole).toString().split(u" · "_s);
    for (const QString &line : lines)
        EXPECT_LE(QFontMetrics(detail).horizontalAdvance(line), list->viewport()->width() - 20);
}

} // namespace
} // namespace morvane
