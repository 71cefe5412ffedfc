#include "BrowserWindowFixture.h"

#include "browser/window/AgentPanel.h"
#include "browser/window/BrowserTabBar.h"
#include "browser/window/BrowserTabButton.h"
#include "browser/window/DownloadRow.h"
#include "browser/window/DownloadsBar.h"
#include "browser/window/PageArea.h"
#include "browser/window/URLField.h"
#include "support/FakePageDownload.h"
#include "support/FakePagePermission.h"
#include "ui/controls/ScreenRoom.h"
#include "ui/sheets/AnswerGuard.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/MainWindow.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

using testing::Contains;

class BrowserWindowViewTest : public BrowserWindowFixture {
protected:
    void close()
    {
        window->close();
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        window = nullptr;
    }
    std::shared_ptr<FakePageDownload> offerFile()
    {
        auto file = std::make_shared<FakePageDownload>(u"a file.txt"_s, u"files.test"_s);
        manager.downloads().add(file);
        settle();
        return file;
    }
    QMessageBox *question() const { return part<QMessageBox>(); }
};

TEST_F(BrowserWindowViewTest, ItIsNamedAndOfItsSize)
{
    EXPECT_EQ(window->windowTitle(), u"Morvane Browser"_s);
    EXPECT_EQ(window->size(), QSize(1150, 780).boundedTo(screenRoom(*window)));
    EXPECT_EQ(browser->raiser.raised, QStringList{u"activated Morvane Browser"_s});
}

TEST_F(BrowserWindowViewTest, ThePageOfTheActiveTabIsShownUnderItsTitle)
{
    QWidget *first = browser->page().view();
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(part<PageArea>()->accessibleName(), u"Browser content: Start Page"_s);
    browser->load(u"https://a.test/"_s, u"A\u202E"_s);
    EXPECT_EQ(part<PageArea>()->accessibleName(), u"Browser content: A\\u202E"_s);
    manager.newTab();
    EXPECT_FALSE(first->isVisible());
    EXPECT_TRUE(browser->page().view()->isVisible());
    manager.closeTab(manager.activeTabID());
    EXPECT_TRUE(first->isVisible());
}

TEST_F(BrowserWindowViewTest, ClosingLeavesTheTabsAliveAndTheyComeBack)
{
    browser->load(u"https://a.test/"_s, u"A"_s);
    manager.newTab();
    const QPointer<QWidget> view = browser->page().view();
    close();
    EXPECT_EQ(manager.window(), nullptr);
    EXPECT_EQ(manager.tabs().size(), 2U);
    ASSERT_NE(view, nullptr);
    EXPECT_FALSE(view->isVisible());
    openWindow();
    EXPECT_EQ(tabs(), (QStringList{u"A"_s, u"Start Page"_s}));
    EXPECT_TRUE(view->isVisible());
}

TEST_F(BrowserWindowViewTest, ATabThatClosesWithoutAWindowIsNoHarm)
{
    close();
    manager.closeTab(manager.activeTabID());
    openWindow();
    EXPECT_EQ(tabs().size(), 1);
}

TEST_F(BrowserWindowViewTest, EachWindowHasItsOwnMenuBarAndKeys)
{
    MainWindow mainWindow(*model,
                          {announcer, browserWindow, toolServerList.manager, *settingsServices, attachments});
    mainWindow.show();
    mainWindow.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(manager.tabs().size(), 1U);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    press(Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(manager.tabs().size(), 2U);
    close();
    mainWindow.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&mainWindow));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(manager.tabs().size(), 2U);
}

TEST_F(BrowserWindowViewTest, AnOperationBringsTheWindowForwardWithoutTheKeyboard)
{
    browser->raiser.raised.clear();
    scheduler.spawn(manager.operations().browserRead());
    settle();
    EXPECT_EQ(browser->raiser.raised, QStringList{u"raised Morvane Browser"_s});
}

TEST_F(BrowserWindowViewTest, F6GoesThroughTheRegionsAndBack)
{
    part<PageArea>()->focusPage();
    press(Qt::Key_F6);
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
    press(Qt::Key_F6);
    EXPECT_TRUE(part<BrowserTabButton>()->hasFocus());
    press(Qt::Key_F6);
    EXPECT_TRUE(part<URLField>()->hasFocus());
    press(Qt::Key_F6);
    EXPECT_TRUE(part<PageArea>()->hasPageFocus());
    press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_TRUE(part<URLField>()->hasFocus());
}

TEST_F(BrowserWindowViewTest, ThePageOfAnotherTabTakesTheKeyboardOver)
{
    part<PageArea>()->focusPage();
    press(Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(browser->page().view()->hasFocus());
    part<URLField>()->setFocus();
    manager.switchTab(manager.tabs().front()->id());
    EXPECT_TRUE(part<URLField>()->hasFocus());
}

TEST_F(BrowserWindowViewTest, ItStandsInTheMiddleOfTheScreen)
{
    // What the desktop puts around it is on the screen, too.
    const QRect room(window->screen()->availableGeometry().topLeft(), screenRoom(*window));
    EXPECT_LT(room.height(), window->screen()->availableSize().height());
    EXPECT_EQ(window->pos(), room.center() - window->rect().center());
}

TEST_F(BrowserWindowViewTest, FilesAreOfferedTheFolderOfDownloads)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    QDir(folder).removeRecursively();
    offerFile();
    EXPECT_EQ(part<QFileDialog>()->directory().path(), QDir::homePath());
    part<QFileDialog>()->reject();
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QDir().mkpath(folder);
    offerFile();
    EXPECT_EQ(part<QFileDialog>()->directory().path(), QDir(folder).path());
}

TEST_F(BrowserWindowViewTest, FilesAreTakenOnThePanel)
{
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(u"/files/a.txt"_s)});
    const auto *panel = part<AgentPanel>();
    const QPoint at = panel->mapTo(window, QPoint(panel->width() / 2, 5));
    QDragEnterEvent enter(at, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window->windowHandle(), &enter);
    QDropEvent drop(at, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window->windowHandle(), &drop);
    settle();
    EXPECT_EQ(attachments.processed, QStringList{u"a.txt"_s});
}

TEST_F(BrowserWindowViewTest, TheSavePanelNamesTheSiteAndTheFile)
{
    const auto file = offerFile();
    auto *dialog = part<QFileDialog>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), u"Save File from files.test"_s);
    EXPECT_EQ(dialog->selectedFiles().value(0).section(u'/', -1), u"a file.txt"_s);
    EXPECT_TRUE(dialog->isModal());
    dialog->reject();
    settle();
    EXPECT_EQ(file->log, QStringList{u"cancel"_s});
    EXPECT_THAT(announcer.spoken, Contains(u"Download cancelled."_s));
}

TEST_F(BrowserWindowViewTest, AFileThatIsWrittenIsShownWithItsProgress)
{
    auto *bar = part<DownloadsBar>();
    EXPECT_FALSE(bar->isVisible());
    const auto file = offerFile();
    part<QFileDialog>()->setDirectory(home.path());
    part<QFileDialog>()->findChild<QLineEdit *>()->setText(u"kept.txt"_s);
    static_cast<QDialog *>(part<QFileDialog>())->accept();
    settle();
    EXPECT_EQ(file->log, QStringList{u"to "_s + home.path(u"kept.txt"_s)});
    EXPECT_TRUE(bar->isVisible());
    auto *progress = bar->findChild<QProgressBar *>();
    EXPECT_EQ(progress->accessibleName(), u"Downloading a file.txt"_s);
    EXPECT_EQ(progress->maximum(), 0);
    file->progress(3'000'000'000, 4'000'000'000);
    EXPECT_EQ(progress->value(), 75);
    file->progress(5'000'000'000, 4'000'000'000);
    EXPECT_EQ(progress->value(), 100) << "servers say of their files what they like";
    EXPECT_EQ(bar->findChild<DownloadRow *>()->findChild<QLabel *>()->text(),
              u"a file.txt from files.test"_s);
    Q_EMIT file->finished();
    settle();
    EXPECT_FALSE(bar->isVisible());
    EXPECT_THAT(announcer.spoken, Contains(u"Download complete."_s));
}

TEST_F(BrowserWindowViewTest, ARunningDownloadCanBeCancelled)
{
    const auto file = offerFile();
    part<QFileDialog>()->setDirectory(home.path());
    static_cast<QDialog *>(part<QFileDialog>())->accept();
    settle();
    click(u"Cancel the download of a file.txt"_s);
    EXPECT_EQ(file->log.last(), u"cancel"_s);
    EXPECT_FALSE(part<DownloadsBar>()->isVisible());
}

TEST_F(BrowserWindowViewTest, APagesWishNamesItsSiteAndIsRefusedByReturn)
{
    const auto wish = std::make_shared<FakePagePermission>(PagePermission::Kind::location, u"maps.test"_s);
    Q_EMIT browser->page().permissionRequested(wish);
    ASSERT_NE(question(), nullptr);
    EXPECT_EQ(question()->text(), u"maps.test would like to know where you are."_s);
    EXPECT_TRUE(announcer.spoken.isEmpty());
    clock.advance(AnswerGuard::quietTime);
    QTest::keyClick(question(), Qt::Key_Return);
    settle();
    EXPECT_EQ(wish->answers, QStringList{u"refused"_s});
}

TEST_F(BrowserWindowViewTest, APagesWishIsNotAnsweredByWhatTheUserIsWriting)
{
    const auto wish = std::make_shared<FakePagePermission>(PagePermission::Kind::location, u"maps.test"_s);
    Q_EMIT browser->page().permissionRequested(wish);
    QPushButton *allow = nullptr;
    for (QAbstractButton *choice : question()->buttons())
        if (choice->text() == "Allow"_L1)
            allow = static_cast<QPushButton *>(choice);
    ASSERT_NE(allow, nullptr);
    const auto type = [&] {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QTest::keyClick(question(), Qt::Key_Escape);
        QTest::mouseClick(allow, Qt::LeftButton);
        settle();
    };
    type();
    clock.advance(AnswerGuard::quietTime - 1ms);
    type();
    EXPECT_TRUE(wish->answers.isEmpty());
    clock.advance(AnswerGuard::quietTime);
    QTest::mouseClick(allow, Qt::LeftButton);
    settle();
    EXPECT_EQ(wish->answers, QStringList{u"granted"_s});
}

TEST_F(BrowserWindowViewTest, WhatIsAskedWhileTheUserIsElsewhereIsSpokenAndLeavesTheKeyboard)
{
    QLineEdit elsewhere;
    elsewhere.show();
    elsewhere.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&elsewhere));
    const auto wish = std::make_shared<FakePagePermission>(PagePermission::Kind::location, u"maps.test"_s);
    Q_EMIT browser->page().permissionRequested(wish);
    EXPECT_EQ(announcer.spoken, QStringList{u"maps.test would like to know where you are."_s});
    EXPECT_TRUE(question()->testAttribute(Qt::WA_ShowWithoutActivating));
    QTest::keyClick(part<URLField>(), Qt::Key_T, Qt::ControlModifier);
    QTest::mouseClick(button(u"New browser tab"_s), Qt::LeftButton);
    settle();
    EXPECT_EQ(manager.tabs().size(), 1U) << "the window is held";
    window->activateWindow();
    EXPECT_TRUE(waitUntil([this] { return question()->isActiveWindow(); }));
    Q_EMIT wish->withdrawn();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    elsewhere.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&elsewhere));
    announcer.spoken.clear();
    offerFile();
    EXPECT_EQ(announcer.spoken, QStringList{u"Save File from files.test: a file.txt"_s});
    EXPECT_TRUE(part<QFileDialog>()->testAttribute(Qt::WA_ShowWithoutActivating));
    announcer.spoken.clear();
    Q_EMIT browser->page().askedElsewhere(u"a.test says: Careful"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"a.test says: Careful"_s});
}

TEST_F(BrowserWindowViewTest, APagesWishIsGrantedByItsButtonOnly)
{
    const auto wish = std::make_shared<FakePagePermission>(PagePermission::Kind::camera, u"<b>\u202E"_s);
    Q_EMIT browser->page().permissionRequested(wish);
    EXPECT_EQ(question()->text(), u"<b>\\u202E would like to use your camera."_s);
    for (QAbstractButton *choice : question()->buttons())
        if (choice->text() == "Allow"_L1)
            choice->click();
    settle();
    EXPECT_EQ(wish->answers, QStringList{u"granted"_s});
}

TEST_F(BrowserWindowViewTest, EveryWishIsToldInWords)
{
    const QList<std::pair<PagePermission::Kind, QString>> wishes{
        {PagePermission::Kind::location, u"know where you are"_s},
        {PagePermission::Kind::microphone, u"use your microphone"_s},
        {PagePermission::Kind::camera, u"use your camera"_s},
        {PagePermission::Kind::microphoneAndCamera, u"use your microphone and your camera"_s},
        {PagePermission::Kind::notifications, u"show notifications"_s},
        {PagePermission::Kind::screen, u"see your screen"_s}};
    for (const auto &[kind, words] : wishes) {
        const auto wish = std::make_shared<FakePagePermission>(kind, QString());
        Q_EMIT browser->page().permissionRequested(wish);
        ASSERT_NE(question(), nullptr);
        EXPECT_EQ(question()->text(), u"This page would like to "_s + words + u'.');
        Q_EMIT wish->withdrawn();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(BrowserWindowViewTest, AWishThatIsWithdrawnIsNotAskedAnyMore)
{
    const auto wish = std::make_shared<FakePagePermission>(PagePermission::Kind::screen, u"maps.test"_s);
    Q_EMIT browser->page().permissionRequested(wish);
    Q_EMIT wish->withdrawn();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(question(), nullptr);
    EXPECT_TRUE(wish->answers.isEmpty());
}

TEST_F(BrowserWindowViewTest, ClosingTheWindowTakesItsQuestionsAlong)
{
    const auto file = offerFile();
    const auto wish = std::make_shared<FakePagePermission>(PagePermission::Kind::screen, u"maps.test"_s);
    Q_EMIT browser->page().permissionRequested(wish);
    close();
    EXPECT_EQ(wish->answers, QStringList{u"refused"_s});
    EXPECT_EQ(file->log, QStringList{u"cancel"_s});
    EXPECT_EQ(announcer.spoken.count(u"Download cancelled."_s), 1);
}

TEST_F(BrowserWindowViewTest, ItFitsASmallScreenWithLargeType)
{
    EXPECT_LE(window->minimumSizeHint().width(), 400);
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSizeF(usual.pointSizeF() * 2);
    QApplication::setFont(large);
    settle();
    EXPECT_LE(window->minimumSizeHint().width(), 700);
    EXPECT_LE(window->minimumSizeHint().height(), 700);
    QApplication::setFont(usual);
}

} // namespace
} // namespace morvane
