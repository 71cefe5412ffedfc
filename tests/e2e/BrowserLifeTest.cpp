#include "BrowserTest.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <csignal>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::SizeIs;

/// What the browser leaves behind when the program ends, and what it finds again.
class BrowserLifeTest : public BrowserTest {
protected:
    /// The processes whose home is that of the session: the program, the engine's, and whatever they have
    /// started.
    static QStringList processes(const MorvaneSession &morvane)
    {
        const QByteArray home = "HOME=" + QFile::encodeName(morvane.home());
        QStringList found;
        for (const QString &entry : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
            QFile environment(u"/proc/"_s + entry + u"/environ"_s);
            if (environment.open(QIODevice::ReadOnly) && environment.readAll().split('\0').contains(home))
                found.append(entry);
        }
        return found;
    }
    static bool leavesNoProcess(const MorvaneSession &morvane)
    {
        return waitUntil([&] { return processes(morvane).isEmpty(); });
    }
    /// Opens the page of birds in ten tabs.
    void openTenTabs(MorvaneSession &morvane)
    {
        openWindow(morvane);
        openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
        for (int tab = 1; tab < 10; ++tab) {
            morvane.keyboard().press(u"Ctrl+T"_s);
            ASSERT_TRUE(showsPage(morvane, u"Start Page"_s));
            openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
        }
    }
};

TEST_F(BrowserLifeTest, WithTenTabsAndADownloadUnderWayTheProgramEndsAndLeavesNothingRunning)
{
    m_site.answer(u"/file"_s, "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                              "Content-Disposition: attachment; filename=\"birds.dat\"\r\n"
                              "Content-Length: 5000\r\n\r\n" +
                                  QByteArray(2000, 'x'));
    MorvaneSession &morvane = startBrowser({});
    openTenTabs(morvane);
    morvane.keyboard().press(u"Ctrl+L"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Address bar"_s));
    morvane.keyboard().type(m_site.url(u"/file"_s).toString());
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.program().shows(u"Save File from 127.0.0.1"_s));
    ASSERT_TRUE(pressUntil(morvane, u"Return"_s,
                           [&] { return morvane.ear().heard().contains(u"Download started: birds.dat"_s); }));
    ASSERT_TRUE(morvane.program().shows(u"Downloading birds.dat"_s));
    morvane.keyboard().press(u"Ctrl+Q"_s);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
    EXPECT_TRUE(leavesNoProcess(morvane)) << processes(morvane).join(u' ').toStdString();
    EXPECT_FALSE(QFileInfo::exists(morvane.home() + u"/birds.dat"_s)) << "half a file stands for the whole";
}

TEST_F(BrowserLifeTest, TheProgramEndsWhileAQuestionOfAPageWaits)
{
    m_site.page(u"/asking"_s,
                "<title>Asking</title><script>onload = () => setTimeout(() => alert('Well?'))</script>");
    MorvaneSession &morvane = startBrowser({});
    openWindow(morvane);
    openByKeyboard(morvane, u"/asking"_s, u"Asking"_s);
    ASSERT_TRUE(morvane.program().shows(u"127.0.0.1 says"_s));
    ::kill(pid_t(morvane.program().process().pid()), SIGTERM);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
    EXPECT_TRUE(leavesNoProcess(morvane));
}

TEST_F(BrowserLifeTest, KilledItComesBackWithHistoryAndBookmarks)
{
    MorvaneSession &morvane = prepareBrowser({});
    morvane.setVariable(u"QT_QUICK_BACKEND"_s, {}); // the engine's own choice
    morvane.start();
    openWindow(morvane);
    openByKeyboard(morvane, u"/birds"_s, u"Birds"_s);
    morvane.keyboard().press(u"Ctrl+D"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Bookmarked Birds"_s));
    openByKeyboard(morvane, u"/search"_s, u"Found"_s);
    const auto isWritten = [&](const QString &file, const QByteArray &what) {
        QFile stored(morvane.home() + u"/.local/share/Morvane/"_s + file);
        return stored.open(QIODevice::ReadOnly) && stored.readAll().contains(what);
    };
    ASSERT_TRUE(waitUntil([&] {
        return isWritten(u"browser-history.json"_s, "Found") &&
               isWritten(u"browser-bookmarks.json"_s, "Birds");
    }));
    ::kill(pid_t(morvane.program().process().pid()), SIGKILL);
    EXPECT_EQ(morvane.program().process().waitForExit(), std::nullopt);
    EXPECT_TRUE(leavesNoProcess(morvane)) << "the engine has outlived the program";

    morvane.start();
    openWindow(morvane);
    EXPECT_TRUE(morvane.program().shows(u"Bookmarks, 1 items"_s));
    morvane.keyboard().press(u"Ctrl+Y"_s);
    ASSERT_TRUE(morvane.program().shows(u"2 results"_s));
    morvane.keyboard().press(u"Escape"_s);
    ASSERT_TRUE(morvane.program().hides(u"2 results"_s));
    ASSERT_TRUE(moveTo(morvane, u"F6"_s, u"Address bar"_s));
    ASSERT_TRUE(moveTo(morvane, u"Tab"_s, u"Open bookmark Birds"_s));
    morvane.keyboard().press(u"Space"_s);
    EXPECT_TRUE(showsPage(morvane, u"Birds"_s));
}

TEST_F(BrowserLifeTest, TabsOutliveTheirWindow)
{
    MorvaneSession &morvane = startWithBirds();
    morvane.keyboard().press(u"Ctrl+Shift+W"_s);
    ASSERT_TRUE(morvane.program().hides(u"Browser content: Birds"_s));
    morvane.program().find(u"Morvane Browser"_s, AccessibleRole::pushButton).press();
    ASSERT_TRUE(isInFront(morvane));
    EXPECT_TRUE(showsPage(morvane, u"Birds"_s));
    EXPECT_THAT(m_site.requests(u"/birds"_s), SizeIs(1));
}

} // namespace
} // namespace morvane
