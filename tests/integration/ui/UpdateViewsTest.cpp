#include "MainWindowFixture.h"

#include "net/TransportError.h"
#include "support/AskForPermit.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/settings/AboutSection.h"
#include "ui/settings/SettingsView.h"
#include "ui/sheets/PermissionView.h"
#include "ui/sheets/SheetCard.h"
#include "ui/window/ComposerEdit.h"
#include "ui/window/RequiredUpdateView.h"
#include "ui/window/UpdateAlertView.h"
#include "ui/window/UpdateBanner.h"

#include <QAccessible>
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace morvane {
namespace {

using Occasion = UpdateModel::Occasion;

const auto updateNow = u"Update Now"_s;
const auto updateRequired = u"Update Morvane to 1.3 build 7 now."_s;

class UpdateViewsTest : public MainWindowFixture {
protected:
    UpdateViewsTest() { show(); }

    UpdateModel &checker() { return model->updates(); }
    void check(Occasion occasion)
    {
        runTask(scheduler, checker().checkForUpdates(occasion));
        settle();
    }
    void offer(Occasion occasion = Occasion::programStart)
    {
        updates.manifest = sampleUpdate();
        check(occasion);
    }
    void require(Occasion occasion = Occasion::programStart)
    {
        updates.manifest = sampleUpdate();
        updates.manifest.required = true;
        check(occasion);
    }
    void closeAlert()
    {
        checker().closeAlert();
        settle();
    }

    UpdateBanner *banner() const { return part<UpdateBanner>(); }
    RequiredUpdateView *sheet() const { return part<RequiredUpdateView>(); }
    UpdateAlertView *alert() const { return part<UpdateAlertView>(); }

    /// The names of visible buttons, in their order.
    static QStringList buttons(const QWidget *within)
    {
        QStringList names;
        for (const QAbstractButton *button : within->findChildren<QAbstractButton *>())
            if (button->isVisible())
                names.append(button->accessibleName());
        return names;
    }
    void press(const QWidget *within, const QString &name)
    {
        QAbstractButton *pressed = button(within, name);
        ASSERT_NE(pressed, nullptr) << name.toStdString();
        pressed->click();
        settle();
    }
    QString details() const { return alert()->findChild<QPlainTextEdit *>()->toPlainText(); }
};

TEST_F(UpdateViewsTest, WithoutAnUpdateThereIsNothing)
{
    EXPECT_FALSE(banner()->isVisible());
    EXPECT_EQ(sheet(), nullptr);
    EXPECT_EQ(alert(), nullptr);
}

TEST_F(UpdateViewsTest, TheBannerOffersTheUpdateAndCanBeDismissed)
{
    offer();
    ASSERT_TRUE(banner()->isVisible());
    EXPECT_THAT(texts(banner()), ElementsAre(u"Update available: Morvane 1.3 build 7"_s));
    EXPECT_THAT(buttons(banner()), ElementsAre(updateNow, u"Dismiss the update banner for Morvane 1.3"_s));
    QAbstractButton *dismiss = button(banner(), u"Dismiss the update banner for Morvane 1.3"_s);
    EXPECT_EQ(dismiss->accessibleDescription(), u"Dismiss this reminder"_s);
    dismiss->setFocus();
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    dismiss->click();
    settle();
    EXPECT_FALSE(banner()->isVisible());
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
    EXPECT_EQ(moves.size(), 1) << "what has the keyboard for a moment is read out";
}

TEST_F(UpdateViewsTest, TheBannerTakesNoFocus)
{
    part<ComposerEdit>()->setFocus();
    offer();
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
}

TEST_F(UpdateViewsTest, TheBannerShowsHowFarTheDownloadIs)
{
    updates.downloadTime = 10s;
    offer();
    button(banner(), updateNow)->setFocus();
    const QSignalSpy moves(qApp, &QApplication::focusChanged);
    press(banner(), updateNow);
    EXPECT_THAT(texts(banner()), ElementsAre(u"Downloading…"_s));
    EXPECT_THAT(buttons(banner()), IsEmpty());
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
    EXPECT_EQ(moves.size(), 1);
    const auto *bar = banner()->findChild<DownloadProgressBar *>();
    EXPECT_EQ(bar->accessibleName(), u"Downloading the update, 0 percent done"_s);
    updates.progress(0.42);
    EXPECT_EQ(bar->accessibleName(), u"Downloading the update, 42 percent done"_s);
    EXPECT_EQ(bar->value(), 42);
    clock.advance(10s);
    settle();
    EXPECT_THAT(texts(banner()), ElementsAre(u"Installing… restarting soon"_s));
    EXPECT_FALSE(bar->isVisible());
}

TEST_F(UpdateViewsTest, TheBannerTellsAFailureAndTheWayAroundIt)
{
    updates.downloadFailure = u"Could not save the downloaded update."_s;
    offer();
    press(banner(), updateNow);
    EXPECT_THAT(texts(banner()), ElementsAre(u"Could not save the downloaded update."_s));
    EXPECT_THAT(buttons(banner()), ElementsAre(u"Retry"_s, u"Download from the website instead"_s));
    EXPECT_EQ(button(banner(), u"Retry"_s)->accessibleDescription(), u"Retry the update"_s);
    press(banner(), u"Retry"_s);
    EXPECT_EQ(updates.downloads.size(), 1);
    press(banner(), u"Download from the website instead"_s);
    EXPECT_THAT(urls.opened, ElementsAre(updates.manifest.url()));
}

TEST_F(UpdateViewsTest, ARequiredUpdateHoldsTheWindow)
{
    require();
    closeAlert();
    ASSERT_TRUE(sheet()->isOpen());
    EXPECT_EQ(sheet()->card()->accessibleName(), u"Required update sheet"_s);
    EXPECT_THAT(texts(sheet()),
                ElementsAre(u"Update required"_s, u"Required update: Morvane 1.3 build 7."_s,
                            u"The app is paused until you update — connect to the internet if offline."_s));
    EXPECT_EQ(sheet()->card()->accessibleDescription(),
              u"Required update: Morvane 1.3 build 7. The app is paused until you update — connect to the "
              "internet if offline."_s);
    EXPECT_THAT(buttons(sheet()), ElementsAre(u"Download the update from the website"_s, updateRequired));
    EXPECT_TRUE(button(sheet(), updateRequired)->hasFocus());
    EXPECT_THAT(texts(banner()),
                ElementsAre(u"Required update: Morvane 1.3 build 7. This update is required to "
                            "continue."_s));
    EXPECT_THAT(buttons(banner()), ElementsAre(updateNow));
}

TEST_F(UpdateViewsTest, NothingDismissesTheRequiredSheet)
{
    require();
    closeAlert();
    press(sheet(), u"Download the update from the website"_s);
    EXPECT_THAT(urls.opened, ElementsAre(updates.manifest.url()));
    EXPECT_TRUE(sheet()->isOpen());
    for (const QString &name : {u"New Conversation"_s, u"Settings…"_s, u"About Morvane"_s,
                                u"Keyboard Shortcuts"_s, u"Conversations"_s, u"Find in Conversation…"_s})
        EXPECT_FALSE(action(name)->isEnabled()) << name.toStdString();
    EXPECT_TRUE(action(u"Check for Updates…"_s)->isEnabled());
    EXPECT_TRUE(action(u"Quit Morvane"_s)->isEnabled());
}

TEST_F(UpdateViewsTest, WhatIsForTheConversationWaitsForAlertAndSheet)
{
    const QList<QAction *> actions{action(u"Stop Generating"_s), action(u"Find in Conversation…"_s)};
    const auto areEnabled = [&actions] {
        return QList{actions.at(0)->isEnabled(), actions.at(1)->isEnabled()};
    };
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    settle();
    EXPECT_THAT(areEnabled(), Each(true));
    offer(Occasion::user);
    EXPECT_THAT(areEnabled(), Each(false));
    closeAlert();
    EXPECT_THAT(areEnabled(), Each(true));
    require();
    closeAlert();
    EXPECT_THAT(areEnabled(), Each(false));
}

TEST_F(UpdateViewsTest, TheAboutSettingsTellOfAnUnusualHost)
{
    qApp->setProperty("unusualUpdateOrigin", u"http://127.0.0.1:1"_s);
    const AboutSection section;
    qApp->setProperty("unusualUpdateOrigin", {});
    QStringList told;
    for (const QLabel *label : section.findChildren<QLabel *>())
        told.append(label->text());
    EXPECT_THAT(told, Contains(u"Updates come from http://127.0.0.1:1."_s));
}

TEST_F(UpdateViewsTest, ThePausedWindowComesBackWhenTheManifestIsTakenBack)
{
    part<ComposerEdit>()->setFocus();
    require();
    closeAlert();
    updates.manifest = sampleUpdate(u"1.2"_s, 5);
    check(Occasion::programStart);
    EXPECT_FALSE(sheet()->isOpen());
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
    EXPECT_TRUE(action(u"New Conversation"_s)->isEnabled());
}

TEST_F(UpdateViewsTest, TheAlertStandsInFrontOfTheRequiredSheet)
{
    require();
    ASSERT_TRUE(alert()->isOpen());
    ASSERT_TRUE(sheet()->isOpen());
    EXPECT_TRUE(alert()->isOnTop());
    EXPECT_TRUE(alert()->isAncestorOf(window->focusWidget()));
    EXPECT_EQ(alert()->card()->accessibleName(), u"Update required: Morvane 1.3 (build 7)"_s);
    EXPECT_EQ(details(),
              u"This update is required to continue. Please update Morvane to 1.3 build 7 now.\n\nFaster.\n"
              "Safer."_s);
    EXPECT_THAT(buttons(alert()), ElementsAre(u"Download in Browser"_s, updateNow));
    press(alert(), u"Download in Browser"_s);
    EXPECT_FALSE(alert()->isOpen());
    EXPECT_TRUE(sheet()->isOnTop());
    EXPECT_TRUE(sheet()->isAncestorOf(window->focusWidget()));
}

TEST_F(UpdateViewsTest, WhatElseAsksStaysBelowTheRequiredSheet)
{
    require();
    closeAlert();
    AIToolCall call;
    call.name = u"write_file"_s;
    scheduler.spawn(askForPermit(&model->gate(), call));
    settle();
    ASSERT_TRUE(part<PermissionView>()->isOpen());
    EXPECT_FALSE(part<PermissionView>()->isOnTop());
    EXPECT_TRUE(sheet()->isOnTop());
    EXPECT_TRUE(sheet()->isAncestorOf(window->focusWidget()));
}

TEST_F(UpdateViewsTest, ARequiredUpdateClosesOtherWindows)
{
    action(u"Settings…"_s)->trigger();
    settle();
    ASSERT_TRUE(part<SettingsView>()->isVisible());
    require();
    EXPECT_TRUE(!part<SettingsView>() || !part<SettingsView>()->isVisible());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(UpdateViewsTest, TheRequiredSheetTellsHowFarItIs)
{
    updates.downloadTime = 10s;
    require();
    closeAlert();
    press(sheet(), updateRequired);
    EXPECT_THAT(texts(sheet()), Contains(u"Downloading…"_s));
    updates.downloadFailure = u"Could not save the downloaded update."_s;
    clock.advance(10s);
    settle();
    EXPECT_THAT(texts(sheet()), Contains(u"Could not save the downloaded update."_s));
    EXPECT_TRUE(sheet()->isOpen());
}

TEST_F(UpdateViewsTest, AnAvailableUpdateIsShownWithItsNotes)
{
    offer(Occasion::user);
    ASSERT_TRUE(alert()->isOpen());
    EXPECT_THAT(texts(alert()), Contains(u"Morvane 1.3 (build 7) is available"_s));
    EXPECT_EQ(details(), u"Faster.\nSafer."_s);
    EXPECT_THAT(buttons(alert()), ElementsAre(u"Later"_s, u"Download in Browser"_s, updateNow));
    press(alert(), u"Later"_s);
    EXPECT_FALSE(alert()->isOpen());
    offer(Occasion::user);
    press(alert(), updateNow);
    EXPECT_FALSE(alert()->isOpen());
    EXPECT_EQ(updates.downloads.size(), 1);
}

TEST_F(UpdateViewsTest, WithoutNotesTheButtonComesFirst)
{
    updates.manifest = sampleUpdate();
    updates.manifest.notes.clear();
    check(Occasion::user);
    EXPECT_FALSE(alert()->findChild<QPlainTextEdit *>()->isVisible());
    EXPECT_TRUE(button(alert(), updateNow)->hasFocus());
}

TEST_F(UpdateViewsTest, BeingUpToDateIsTold)
{
    check(Occasion::user);
    EXPECT_THAT(texts(alert()), Contains(u"You're up to date"_s));
    EXPECT_EQ(details(), u"Morvane 1.2 (build 5) is the latest version."_s);
    EXPECT_THAT(buttons(alert()), ElementsAre(u"OK"_s));
    press(alert(), u"OK"_s);
    EXPECT_FALSE(alert()->isOpen());
    EXPECT_TRUE(part<ComposerEdit>()->hasFocus());
}

TEST_F(UpdateViewsTest, AFailedCheckIsTold)
{
    updates.checkFailure = std::make_exception_ptr(TransportError(TransportError::Kind::unresolvedHost));
    check(Occasion::user);
    EXPECT_THAT(texts(alert()), Contains(u"Couldn't check for updates"_s));
    EXPECT_EQ(details(), u"No server with this name was found."_s);
    EXPECT_THAT(buttons(alert()), ElementsAre(u"Download from Website"_s, u"OK"_s));
    press(alert(), u"Download from Website"_s);
    EXPECT_FALSE(alert()->isOpen());
    EXPECT_THAT(urls.opened, IsEmpty());
}

TEST_F(UpdateViewsTest, AnotherCheckTakesTheAlertsPlace)
{
    offer(Occasion::user);
    updates.manifest = sampleUpdate(u"1.4"_s, 1);
    check(Occasion::user);
    EXPECT_THAT(texts(alert()), Contains(u"Morvane 1.4 (build 1) is available"_s));
    press(alert(), u"Later"_s);
    EXPECT_FALSE(alert()->isOpen());
}

TEST_F(UpdateViewsTest, TheMenuTellsThatACheckGoesOn)
{
    QAction *menuItem = action(u"Check for Updates…"_s);
    updates.checkTime = 10s;
    menuItem->trigger();
    settle();
    EXPECT_EQ(menuItem->text(), u"Checking for Updates…"_s);
    EXPECT_FALSE(menuItem->isEnabled());
    clock.advance(10s);
    settle();
    EXPECT_EQ(menuItem->text(), u"Check for Updates…"_s);
    EXPECT_TRUE(menuItem->isEnabled());
    EXPECT_TRUE(alert()->isOpen());
}

TEST_F(UpdateViewsTest, ControlAndUChecksWhateverIsTypedIn)
{
    part<ComposerEdit>()->setFocus();
    part<ComposerEdit>()->setPlainText(u"a draft"_s);
    QTest::keyClick(window->windowHandle(), Qt::Key_U, Qt::ControlModifier);
    settle();
    EXPECT_EQ(updates.checks, 1);
    EXPECT_EQ(part<ComposerEdit>()->toPlainText(), u"a draft"_s);
    closeAlert();
    auto *field = new QLineEdit(u"words"_s, window->centralWidget());
    field->show();
    field->setFocus();
    QTest::keyClick(window->windowHandle(), Qt::Key_U, Qt::ControlModifier);
    settle();
    EXPECT_EQ(updates.checks, 2);
    EXPECT_EQ(field->text(), u"words"_s);
}

TEST_F(UpdateViewsTest, NotesOfAnyLengthAreShown)
{
    updates.manifest = sampleUpdate();
    updates.manifest.notes = {QString(900'000, u'x')};
    check(Occasion::user);
    EXPECT_EQ(alert()->card()->accessibleName(), u"Morvane 1.3 (build 7) is available"_s);
    EXPECT_LE(alert()->card()->height(), window->height());
}

} // namespace
} // namespace morvane
