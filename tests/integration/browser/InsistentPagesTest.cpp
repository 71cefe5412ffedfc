#include "EngineFixture.h"

#include "support/TemporaryHome.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QPointer>
#include <QSignalSpy>
#include <QTimer>
#include <QWidget>

namespace morvane {
namespace {

/// Pages that go on asking, and what the user has said to them.
class InsistentPagesTest : public EngineFixture {
protected:
    InsistentPagesTest()
    {
        QObject::connect(&m_looking, &QTimer::timeout, &m_looking, [this] { look(); });
        m_looking.start(5);
    }

    QString title() { return value("document.title").toString(); }

    /// What the user does with each sheet; sheets come one after the other, each within the loop of its own.
    std::function<void(QDialog &)> answer = [](QDialog &sheet) { sheet.accept(); };
    int sheets = 0;

private:
    void look()
    {
        for (QWidget *const widget : QApplication::topLevelWidgets()) {
            auto *const dialog = qobject_cast<QDialog *>(widget);
            if (!dialog || !dialog->isVisible() || dialog == m_answered)
                continue;
            m_answered = dialog;
            ++sheets;
            answer(*dialog);
        }
    }

    QTimer m_looking;
    QPointer<QDialog> m_answered;
};

/// The user wants to hear no more as soon as that is offered.
void silence(QDialog &sheet)
{
    if (auto *const choice = sheet.findChild<QAbstractButton *>("silence"))
        choice->setChecked(true);
    sheet.accept();
}

TEST_F(InsistentPagesTest, ASiteThatLoadsItselfAnewToAskAgainCanBeSilenced)
{
    answer = silence;
    const auto asking = [](const QByteArray &next) {
        return "<title>Loop</title><script>onload = () => { alert('Again'); location.href = '" + next +
               "'; }</script>";
    };
    server.page("/loop", asking("/pool"));
    server.page("/pool", asking("/loop"));
    server.page("/other", "<title>Other</title><script>onload = () => alert('Hello')</script>");
    page().load(server.url("/loop"));
    EXPECT_TRUE(waitUntil([this] { return server.requests("/loop").size() > 6; }));
    EXPECT_EQ(sheets, 2);
    // Whom the user turns to may speak, as for the first time.
    answer = [](QDialog &sheet) {
        EXPECT_FALSE(sheet.findChild<QAbstractButton *>("silence"));
        sheet.accept();
    };
    page().load(server.url("/other"));
    EXPECT_TRUE(waitUntil([this] { return sheets == 3; }));
}

TEST_F(InsistentPagesTest, APageIsSilencedWithItsFramesOfWhateverSites)
{
    answer = silence;
    QByteArray frames;
    for (const char *site : {"one", "two", "three", "four", "five"}) {
        const QByteArray address = QByteArray("http://") + site + ".frames.test/";
        proxy().page(address, "<script>alert('Again'); parent.postMessage('done', '*')</script>");
        frames += "<iframe src='" + address + "'></iframe>";
    }
    server.page("/framed",
                "<script>let done = 0; onmessage = () => document.title = ++done</script>" + frames);
    page().load(server.url("/framed"));
    EXPECT_TRUE(waitUntil([this] { return page().title() == "5"; }));
    EXPECT_EQ(sheets, 2);
}

TEST_F(InsistentPagesTest, APageThatGoesFromSiteToSiteToAskAgainIsSilencedInTheEnd)
{
    answer = silence;
    const int last = 8;
    const auto address = [](int place) {
        return "http://place" + QByteArray::number(place) + ".chain.test/";
    };
    for (int place = 0; place < last; ++place)
        proxy().page(address(place), "<script>onload = () => { alert('Again'); location.href = '" +
                                         address(place + 1) + "'; }</script>");
    proxy().page(address(last), "<title>End</title>");
    page().load(QUrl(address(0)));
    EXPECT_TRUE(waitUntil([this] { return page().title() == "End"; }));
    EXPECT_EQ(sheets, 4);
    show("<p>x");
    runInPage("alert('Hello')");
    EXPECT_EQ(sheets, 5);
}

TEST_F(InsistentPagesTest, AHundredDialogsInARowAreTwo)
{
    answer = silence;
    show("<p>x");
    runInPage("for (let i = 0; i < 100; ++i) alert(i); document.title = 'done'");
    EXPECT_EQ(title(), "done");
    EXPECT_EQ(sheets, 2);
}

TEST_F(InsistentPagesTest, ASilencedPageDoesNotHoldTheUser)
{
    answer = silence;
    show("<p>x<input autofocus>");
    server.page("/other", "<title>Other</title>");
    page().view()->setFocus();
    // The page takes a key once it knows that it has the keyboard.
    ASSERT_TRUE(waitUntil([this] {
        value("document.querySelector('input').focus()");
        press("a");
        return value("document.querySelector('input').value").toString().startsWith("a");
    }));
    runInPage("addEventListener('beforeunload', e => { e.preventDefault(); e.returnValue = 'stay'; });"
              "alert(1)");
    runInPage("alert(2)");
    ASSERT_EQ(sheets, 2);
    runInPage("location.href = '/other'");
    EXPECT_TRUE(waitUntil([this] { return page().title() == "Other"; }));
    EXPECT_EQ(sheets, 2);
}

TEST_F(InsistentPagesTest, FilesAreChosenInASheetThatNamesTheSite)
{
    const TemporaryHome home;
    const QString file = home.write("letter.txt", "Dear reader");
    answer = [&](QDialog &sheet) {
        auto *const dialog = qobject_cast<QFileDialog *>(&sheet);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->windowTitle(), "Choose File for 127.0.0.1");
        EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
        dialog->setDirectory(home.path());
        dialog->selectFile(file);
        static_cast<QDialog *>(dialog)->accept();
    };
    show("<input type=file autofocus>");
    page().view()->setFocus();
    press(" ");
    EXPECT_TRUE(waitUntil([this] { return sheets == 1; }));
    EXPECT_TRUE(
        waitUntil([this] { return value("document.querySelector('input').files.length").toInt() == 1; }));
    EXPECT_EQ(value("document.querySelector('input').files[0].name").toString(), "letter.txt");
}

TEST_F(InsistentPagesTest, ATabThatClosesUnderItsFileSheetIsNoHarm)
{
    answer = [this](QDialog &) { manager->closeTab(manager->tabs().front()->id()); };
    show("<input type=file autofocus>");
    manager->newTab();
    manager->switchTab(manager->tabs().front()->id());
    page().view()->show();
    page().view()->setFocus();
    press(" ");
    EXPECT_TRUE(waitUntil([this] { return sheets == 1; }));
    EXPECT_EQ(manager->tabs().size(), 1U);
}

TEST_F(InsistentPagesTest, APageThatMayNotifyIsShown)
{
    show("<p>x");
    runInPage("Notification.requestPermission().then(p => document.title = p)");
    ASSERT_TRUE(waitUntil([this] { return window.permissions.size() == 1; }));
    EXPECT_EQ(window.permissions.last()->kind(), PagePermission::Kind::notifications);
    window.permissionAnswers.last()(true);
    ASSERT_TRUE(waitUntil([this] { return title() == "granted"; }));
    notifications().clear();
    runInPage("new Notification('One', {body: 'two'})");
    ASSERT_TRUE(waitUntil([] { return notifications().size() == 1; }));
    EXPECT_TRUE((notifications().last() == PageNotification{"127.0.0.1", "One", "two"}));
    manager->newTab();
    manager->closeTab(manager->tabs().front()->id());
    show("<p>y");
    runInPage("new Notification('Two', {body: 'x'.repeat(1024 * 1024)})");
    ASSERT_TRUE(waitUntil([] { return notifications().size() == 2; })) << "its site goes on in another tab";
    EXPECT_EQ(notifications().last().title, "Two");
}

TEST_F(InsistentPagesTest, AWishGoesWithItsPage)
{
    show("<p>x");
    runInPage("navigator.geolocation.getCurrentPosition(() => {})");
    ASSERT_TRUE(waitUntil([this] { return window.permissions.size() == 1; }));
    const QSignalSpy withdrawn(window.permissions.last().get(), &PagePermission::withdrawn);
    manager->newTab();
    manager->closeTab(manager->tabs().front()->id());
    EXPECT_TRUE(waitUntil([&] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return withdrawn.size() == 1;
    }));
}

TEST_F(InsistentPagesTest, APageThatAsksTenTimesIsHeardThreeTimesAtMost)
{
    show("<p>x");
    runInPage("let asked = 0; const ask = () => navigator.geolocation.getCurrentPosition(() => {}, () => {"
              "  if (++asked < 10) ask(); else document.title = 'tired' }); ask()");
    EXPECT_TRUE(waitUntil([this] {
        for (const auto &refuse : std::exchange(window.permissionAnswers, {}))
            refuse(false);
        return title() == "tired";
    }));
    EXPECT_GE(window.permissions.size(), 1);
    EXPECT_LE(window.permissions.size(), 3);
}

} // namespace
} // namespace morvane
