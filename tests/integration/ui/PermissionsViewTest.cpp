#include "SettingsViewFixture.h"

#include "ui/settings/PermissionRow.h"
#include "ui/settings/PermissionsView.h"

#include <QGuiApplication>
#include <QPushButton>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class PermissionsViewTest : public SettingsViewFixture {
protected:
    PermissionsViewTest()
    {
        view->findChild<QTabWidget *>()->setCurrentIndex(1);
        settle();
    }

    PermissionRow *row(const QString &title) const { return named<PermissionRow>(title); }

    static bool says(const QWidget *row, const QString &text)
    {
        const auto labels = row->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(), [&text](const QLabel *label) {
            return label->isVisible() && label->text() == text;
        });
    }
};

TEST_F(PermissionsViewTest, TheTabHasItsTitleAndIcon)
{
    const auto *tabs = view->findChild<QTabWidget *>();
    EXPECT_EQ(tabs->tabText(1), "Permissions");
    EXPECT_FALSE(tabs->tabIcon(1).isNull());
    EXPECT_TRUE(
        shows(u"Give Morvane the permissions it needs here, once, so it can use your Mac without asking "
              "mid-task. You can also request each one from the button next to it."_s));
}

TEST_F(PermissionsViewTest, TheFiveRowsStandInOrder)
{
    QStringList titles;
    for (const PermissionRow *found : view->findChildren<PermissionRow *>())
        titles.append(found->accessibleName());
    EXPECT_EQ(titles, QStringList({u"Screen Recording"_s, u"Accessibility"_s, u"Notifications"_s,
                                   u"Files and Folders"_s, u"Full Disk Access"_s}));
}

TEST_F(PermissionsViewTest, EachRowTellsWhatItIsFor)
{
    const std::pair<QString, QString> texts[] = {
        {u"Screen Recording"_s,
         u"Lets the assistant see what is on your screen and read it, using the capture_screen tool."_s},
        {u"Accessibility"_s, u"Lets the assistant click, type, and press keys for you, using the click_at, "
                             "type_text, and press_key tools."_s},
        {u"Notifications"_s,
         u"Lets the app play its custom sound and show a banner when a response is ready or "
         "a reminder fires. If it stays off, the sound alone still plays."_s},
        {u"Files and Folders"_s, u"macOS grants access automatically the first time the assistant reads or "
                                 "writes in Desktop, Documents, or Downloads. No setup needed."_s},
        {u"Full Disk Access"_s,
         u"Only needed to read protected locations, like other apps' data or some system "
         "files. This can only be enabled in System Settings."_s}};
    for (const auto &[title, text] : texts)
        EXPECT_TRUE(says(row(title), text)) << title.toStdString();
}

TEST_F(PermissionsViewTest, WhatIsGrantedElsewhereShowsWhenTheProgramComesToTheFront)
{
    desktop.input->trusted = false;
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
    settle();
    EXPECT_TRUE(says(row(u"Accessibility"_s), u"Configured"_s));
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    settle();
    EXPECT_TRUE(says(row(u"Accessibility"_s), u"Not configured"_s));
    desktop.input->trusted = true;
    Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    settle();
    EXPECT_TRUE(says(row(u"Accessibility"_s), u"Configured"_s));
}

TEST_F(PermissionsViewTest, TheStatesAreLookedAtWhenTheTabComesIntoView)
{
    auto *tabs = view->findChild<QTabWidget *>();
    tabs->setCurrentIndex(0);
    desktop.screen->granted = false;
    tabs->setCurrentIndex(1);
    settle();
    EXPECT_TRUE(says(row(u"Screen Recording"_s), u"Not configured"_s));
}

TEST_F(PermissionsViewTest, AStateThatChangesElsewhereShowsWhenItIsCheckedAgain)
{
    EXPECT_TRUE(says(row(u"Accessibility"_s), u"Configured"_s));
    desktop.input->trusted = false;
    QTest::mouseClick(named<QPushButton>(u"Check permission status again"_s), Qt::LeftButton);
    settle();
    EXPECT_TRUE(says(row(u"Accessibility"_s), u"Not configured"_s));
    EXPECT_FALSE(says(row(u"Accessibility"_s), u"Configured"_s));
}

TEST_F(PermissionsViewTest, RequestButtonsAskAndSettingsButtonsOpenTheirPane)
{
    QTest::mouseClick(named<QPushButton>(u"Request Screen Recording"_s), Qt::LeftButton);
    QTest::mouseClick(named<QPushButton>(u"Request Accessibility"_s), Qt::LeftButton);
    EXPECT_EQ(desktop.log.events(), QStringList({u"request screen access"_s, u"request trust"_s}));
    ASSERT_NE(named<QPushButton>(u"Request Notifications"_s), nullptr);
    for (const QString &name : {u"Settings for Screen Recording"_s, u"Settings for Accessibility"_s,
                                u"Settings for Notifications"_s, u"Open System Settings"_s}) {
        ASSERT_NE(named<QPushButton>(name), nullptr) << name.toStdString();
        QTest::mouseClick(named<QPushButton>(name), Qt::LeftButton);
    }
    using Pane = DesktopSettings::Pane;
    EXPECT_EQ(desktopSettings.opened,
              QList<Pane>({Pane::screenCapture, Pane::accessibility, Pane::notifications, Pane::allFiles}));
}

TEST_F(PermissionsViewTest, FilesAndFoldersHasNeitherStateNorButton)
{
    const PermissionRow *files = row(u"Files and Folders"_s);
    EXPECT_TRUE(files->findChildren<QPushButton *>().isEmpty());
    EXPECT_FALSE(says(files, u"Configured"_s));
    EXPECT_FALSE(says(files, u"Not configured"_s));
}

TEST_F(PermissionsViewTest, ADesktopWithoutSuchSettingsSaysSo)
{
    desktopSettings.knowsPanes = false;
    QTest::mouseClick(named<QPushButton>(u"Open System Settings"_s), Qt::LeftButton);
    EXPECT_TRUE(shows(u"This desktop has no settings for this that Morvane knows."_s));
}

} // namespace
} // namespace morvane
