#include "EngineFixture.h"

#include "support/SmallVolume.h"
#include "support/TemporaryHome.h"
#include "support/TestCertificate.h"
#include "support/TlsServer.h"
#include "ui/sheets/AnswerGuard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <atomic>

namespace morvane {
namespace {

/// What pages want of the user and of the computer.
class SafetyTest : public EngineFixture {
protected:
    QString title() { return value("document.title").toString(); }
    /// Waits for a question of the window's; where a file is to go is answered until then.
    bool isAsked(const QString &question)
    {
        return waitUntil([&] {
            for (const auto &answer : std::exchange(window.destinations, {}))
                answer({});
            return window.asked.contains(question);
        });
    }
};

TEST_F(SafetyTest, WhatAPageAsksIsAnsweredInASheetThatNamesTheSite)
{
    show("<p>x");
    speak("alert('Careful')", [](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "127.0.0.1 says");
        EXPECT_EQ(dialog.accessibleDescription(), "Careful");
        EXPECT_EQ(dialog.windowModality(), Qt::WindowModal);
        dialog.accept();
    });
    speak("document.title = confirm('Sure?')", [](QDialog &dialog) { dialog.accept(); });
    EXPECT_EQ(title(), "true");
    speak("document.title = confirm('Sure?')", [](QDialog &dialog) { dialog.reject(); });
    EXPECT_EQ(title(), "false");
    speak("document.title = prompt('Name?', 'Ann')", [](QDialog &dialog) {
        auto *const field = dialog.findChild<QLineEdit *>();
        EXPECT_EQ(field->text(), "Ann");
        field->setText("Bob");
        dialog.accept();
    });
    EXPECT_EQ(title(), "Bob");
    speak("document.title = prompt('Name?', 'Ann')", [](QDialog &dialog) { dialog.reject(); });
    EXPECT_EQ(title(), "null");
}

TEST_F(SafetyTest, NothingThatAPageAsksIsHiddenOrTurnsTheWordsAround)
{
    show("<p>x");
    speak("alert('pay \\u202Eme\\u0007\\\\nnow')", [](QDialog &dialog) {
        EXPECT_EQ(dialog.accessibleDescription(), "pay \\u202Eme\\u0007\nnow");
        dialog.accept();
    });
    speak("prompt('your \\u202Ename\\u0007\\\\nplease', 'Ann')", [](QDialog &dialog) {
        EXPECT_EQ(dialog.findChild<QLineEdit *>()->accessibleName(), "your \\u202Ename\\u0007 please");
        dialog.accept();
    });
    speak("prompt('x'.repeat(1024 * 1024), 'y'.repeat(1024 * 1024))", [](QDialog &dialog) {
        constexpr qsizetype most = 10'001;
        EXPECT_LT(dialog.accessibleDescription().size(), most);
        EXPECT_LT(dialog.findChild<QLineEdit *>()->accessibleName().size(), most);
        EXPECT_LT(dialog.findChild<QLineEdit *>()->text().size(), most);
        dialog.accept();
    });
}

TEST_F(SafetyTest, WhatTheUserIsWritingDoesNotAnswerAPage)
{
    show("<p>x");
    const auto type = [](QDialog &dialog) {
        QTest::keyClick(&dialog, Qt::Key_Return);
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QTest::mouseClick(dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
        return dialog.isVisible();
    };
    speak("document.title = confirm('Sure?')", [&](QDialog &dialog) {
        EXPECT_TRUE(type(dialog));
        pass(AnswerGuard::quietTime - std::chrono::milliseconds(1));
        EXPECT_TRUE(type(dialog)) << "it goes on";
        pass(AnswerGuard::quietTime);
        EXPECT_FALSE(type(dialog));
    });
    EXPECT_EQ(title(), "true");
}

TEST_F(SafetyTest, APageThatGoesOnAskingCanBeSilenced)
{
    show("<p>x");
    speak("alert(1)", [](QDialog &dialog) {
        EXPECT_FALSE(dialog.findChild<QAbstractButton *>("silence"));
        dialog.accept();
    });
    speak("alert(2)", [](QDialog &dialog) {
        auto *const silence = dialog.findChild<QAbstractButton *>("silence");
        ASSERT_TRUE(silence);
        silence->setChecked(true);
        dialog.accept();
    });
    runInPage("document.title = confirm('again?')");
    EXPECT_EQ(title(), "false");
    show("<p>x");
    speak("alert(3)", [](QDialog &dialog) { dialog.accept(); });
}

TEST_F(SafetyTest, AQuestionIsFilledInAndAnsweredInTheOrderInWhichItIsSeen)
{
    show("<p>x");
    speak("alert(1)", [](QDialog &dialog) { dialog.accept(); });
    speak("document.title = prompt('Your name?', 'Ann')", [](QDialog &dialog) {
        const auto *const field = dialog.findChild<QLineEdit *>();
        EXPECT_EQ(field->accessibleName(), "Your name?");
        QStringList stops;
        for (const QWidget *next = field->nextInFocusChain(); next != field; next = next->nextInFocusChain())
            if (const auto *const button = qobject_cast<const QAbstractButton *>(next))
                stops.append(button->text().remove('&'));
        EXPECT_EQ(stops, (QStringList{"Do not let this page ask again", "OK", "Cancel"}));
        dialog.accept();
    });
}

TEST_F(SafetyTest, APageThatNobodySeesIsRefusedWithoutASheet)
{
    show("<p>x");
    page().view()->hide();
    runInPage("document.title = confirm('unseen?') + ' ' + prompt('unseen?')");
    EXPECT_EQ(title(), "false null");
}

TEST_F(SafetyTest, ATabThatClosesUnderItsSheetAnswersIt)
{
    show("<p>x");
    manager->newTab();
    manager->switchTab(manager->tabs().front()->id());
    speak("confirm('Sure?')", [this](QDialog &) { manager->closeTab(manager->activeTabID()); });
    EXPECT_EQ(manager->tabs().size(), 1U);
}

TEST_F(SafetyTest, AnOperationThatMeetsASheetEndsByItsLimit)
{
    show("<button onclick='confirm(1)'>ask</button>");
    clock.longest = std::chrono::seconds(1);
    auto handle = scheduler.spawn(manager->operations().browserClick(1));
    underSheet([&] { return handle.done(); }, [this](QDialog &) { page().stop(); });
    ASSERT_TRUE(handle.done());
    EXPECT_EQ(handle.result(), "Error: the click did not work.");
}

TEST_F(SafetyTest, ADownloadGoesWhereTheUserSaysAndNowhereElse)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    headers.set("Content-Disposition", "attachment; filename=\"../../../.bashrc\"");
    server.answer("/file", rawHttpResponse(200, QByteArray(5000, 'x'), headers));
    const TemporaryHome home;
    open("/file");
    ASSERT_EQ(window.destinations.size(), 1);
    EXPECT_TRUE(window.asked.last() == "where to write bashrc of 127.0.0.1" ||
                window.asked.last() == "where to write _bashrc of 127.0.0.1")
        << window.asked.last().toStdString();
    window.destinations.last()(home.path("chosen.bin"));
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.contains("Download complete."); }));
    QFile file(home.path("chosen.bin"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray(5000, 'x'));
    EXPECT_FALSE(announcer.spoken.join(' ').contains("Failed to load"));
}

TEST_F(SafetyTest, ALargeDownloadWaitsForItsPlaceAndIsWhole)
{
    const QByteArray half = QByteArray("0123456789abcdef").repeated(800'000);
    std::atomic<bool> goesOn = false;
    RawHttpServer slow([&](RawHttpConnection &connection) {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        headers.set("Content-Length", QByteArray::number(2 * half.size()));
        if (connection.readRequest() && connection.send(rawHttpHead(200, headers) + half) &&
            connection.waitUntil([&goesOn] { return goesOn.load(); }) && connection.send(half))
            connection.waitUntilClosedByPeer();
    });
    std::shared_ptr<PageDownload> download;
    QObject::connect(&page(), &WebPage::downloadRequested, [&](const auto &offered) { download = offered; });
    const TemporaryHome home;
    page().load(slow.url("/large"));
    ASSERT_TRUE(waitUntil([&] { return download && download->receivedBytes() == half.size(); }));
    settle(); // it is paused by now
    goesOn = true;
    window.destinations.last()(home.path("large.bin"));
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.contains("Download complete."); }));
    QFile file(home.path("large.bin"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), half + half);
}

TEST_F(SafetyTest, ATruncatedDownloadIsAFailure)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    headers.set("Content-Length", "100000");
    PageServer cut;
    cut.answer("/file", rawHttpHead(200, headers) + QByteArray(5000, 'x'));
    cut.closeAfter("/file");
    const TemporaryHome home;
    page().load(cut.url("/file"));
    ASSERT_TRUE(waitUntil([this] { return window.destinations.size() == 1; }));
    window.destinations.last()(home.path("cut.bin"));
    ASSERT_TRUE(waitUntil([this] { return announcer.spoken.join('|').contains("Download failed: "); }))
        << announcer.spoken.join('|').toStdString();
    EXPECT_FALSE(announcer.spoken.contains("Download complete."));
}

TEST_F(SafetyTest, AFileForAnotherDiskTouchesNothingBesideItsPlace)
{
    const TemporaryHome home;
    ASSERT_TRUE(QDir(home.path()).mkpath("disk"));
    const SmallVolume disk(home.path("disk"), 1'000'000);
    ASSERT_TRUE(disk.isMounted());
    home.write("disk/file.part", "the user's own");
    const auto take = [&](const QString &name, qsizetype size) {
        HttpHeaders headers;
        headers.set("Content-Type", "application/octet-stream");
        server.answer("/" + name.toLatin1(), rawHttpResponse(200, QByteArray(size, 'x'), headers));
        page().load(server.url("/" + name));
        EXPECT_TRUE(
            waitUntil([&] { return window.asked.contains("where to write " + name + " of 127.0.0.1"); }));
        announcer.spoken.clear();
        window.destinations.last()(home.path("disk/" + name));
        EXPECT_TRUE(waitUntil([this] { return manager->downloads().running().isEmpty(); }));
        return announcer.spoken.last();
    };
    EXPECT_EQ(take("file", 5000), "Download complete.");
    EXPECT_EQ(home.read("disk/file"), QByteArray(5000, 'x'));
    EXPECT_EQ(home.read("disk/file.part"), "the user's own");
    EXPECT_EQ(take("large", 2'000'000), "Download failed: The file could not be written there.");
    EXPECT_EQ(QDir(home.path("disk")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList({"file", "file.part"}));
}

TEST_F(SafetyTest, AFileWhosePageIsGoneIsOfferedAllTheSame)
{
    HttpHeaders headers;
    headers.set("Content-Type", "application/octet-stream");
    server.keepWaiting("/file");
    show("<a download='late.txt' href=/file>save</a>");
    EXPECT_EQ(click(1), "Clicked 'save'.");
    ASSERT_TRUE(waitUntil([this] { return !server.requests("/file").isEmpty(); }));
    manager->closeTab(manager->activeTabID());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    server.answer("/file", rawHttpResponse(200, "x", headers));
    EXPECT_TRUE(isAsked("where to write late.txt of 127.0.0.1"));
}

TEST_F(SafetyTest, AFileThatAPageHasMadeNamesItsSite)
{
    show("<a download='made.txt'>save</a><script>document.querySelector('a').href = URL.createObjectURL(new "
         "Blob(['words']))</script>");
    EXPECT_EQ(click(1), "Clicked 'save'.");
    EXPECT_TRUE(isAsked("where to write made.txt of 127.0.0.1"));
}

TEST_F(SafetyTest, TheMenuOfAPageLeadsToNothingButTheWeb)
{
    show("<p>x");
    QTest::mouseClick(page().view()->focusProxy(), Qt::RightButton, {}, QPoint(50, 50));
    QMenu *menu = nullptr;
    ASSERT_TRUE(waitUntil(
        [&] { return (menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) != nullptr; }));
    QStringList entries;
    for (const QAction *entry : menu->actions())
        if (entry->isVisible())
            entries.append(entry->text());
    menu->close();
    EXPECT_TRUE(entries.contains("Reload"));
    EXPECT_FALSE(entries.contains("View page source"));
}

TEST_F(SafetyTest, AServerThatCannotProveItselfIsNotShown)
{
    show("<p>x");
    const TestCertificate certificate("IP:127.0.0.1");
    ASSERT_TRUE(certificate.isMade());
    TlsServer stranger(TlsServer::Protocol::http1, certificate);
    stranger.addFile("secret", rawHttpResponse(200, "believe me"));
    announcer.spoken.clear();
    run(manager->operations().browserOpen(stranger.url("secret").toString()));
    EXPECT_TRUE(announcer.spoken.contains(
        "Failed to load: The server could not prove that it is what it says, so the page was not loaded."))
        << announcer.spoken.join('|').toStdString();
    EXPECT_EQ(tab().title(), "Page");
}

TEST_F(SafetyTest, PlacesAndDevicesAreRefusedUnlessTheUserSaysYes)
{
    show("<p>x");
    runInPage("navigator.geolocation.getCurrentPosition(() => document.title = 'found', e => document.title "
              "= 'code ' + e.code)");
    ASSERT_TRUE(waitUntil([this] { return window.permissions.size() == 1; }));
    EXPECT_EQ(window.permissions.last()->kind(), PagePermission::Kind::location);
    EXPECT_EQ(window.permissions.last()->site(), "127.0.0.1");
    window.permissionAnswers.last()(false);
    EXPECT_TRUE(waitUntil([this] { return title() == "code 1"; }));
    window.visible = false;
    runInPage("Notification.requestPermission().then(p => document.title = p)");
    EXPECT_TRUE(waitUntil([this] { return title() == "denied"; }));
}

TEST_F(SafetyTest, NoNameAndPasswordAreSentUnasked)
{
    HttpHeaders headers;
    headers.set("WWW-Authenticate", "Basic realm=\"Inner\"");
    headers.set("Content-Type", "text/html");
    server.answer("/private", rawHttpResponse(401, "<title>No</title>keep out", headers));
    page().view()->hide();
    EXPECT_TRUE(open("/private").contains("keep out"));
    for (const RawHttpRequest &request : server.requests("/private"))
        EXPECT_TRUE(request.headers.value("Authorization").value_or("").isEmpty());
    page().view()->show();
    page().load(server.url("/private"));
    underSheet([] { return true; },
               [this](QDialog &dialog) {
                   const QList<QLineEdit *> fields = dialog.findChildren<QLineEdit *>();
                   ASSERT_EQ(fields.size(), 2);
                   fields[0]->setText("ann");
                   fields[1]->setText("secret");
                   server.page("/private", "<title>In</title>welcome");
                   dialog.accept();
               });
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "In"; }));
    EXPECT_EQ(server.requests("/private").last().headers.value("Authorization"),
              "Basic " + QByteArray("ann:secret").toBase64());
}

TEST_F(SafetyTest, TheProfileIsForTheUserAlone)
{
    HttpHeaders headers;
    headers.set("Set-Cookie", "kept=yes; Max-Age=9999");
    headers.set("Content-Type", "text/html");
    server.answer("/cookie", rawHttpResponse(200, "x", headers));
    open("/cookie");
    EXPECT_EQ(QFile::permissions(folder()) & ~QFile::Permissions(0x7700), QFile::Permissions());
    EXPECT_TRUE(QFileInfo::exists(folder() + "/Profile"));
    open("/cookie");
    EXPECT_EQ(server.requests("/cookie").last().headers.value("Cookie"), "kept=yes");
    value("localStorage.setItem('kept', 'yes'); sessionStorage.setItem('kept', 'yes'); 1");
    runInPage("indexedDB.open('kept').onsuccess = event => { event.target.result.close(); document.title = "
              "'stored'; }");
    ASSERT_TRUE(waitUntil([this] { return title() == "stored"; }));
    server.page("/cookie", "x"); // a visit before the removal has ended would bring a new one
    engine().removeAllSiteData();
    EXPECT_EQ(value("String(localStorage.getItem('kept')) + sessionStorage.getItem('kept')").toString(),
              "nullnull");
    EXPECT_TRUE(waitUntil([this] {
        runInPage("indexedDB.databases().then(all => document.title = all.length)");
        return title() == "0";
    }));
    open("/cookie");
    EXPECT_FALSE(server.requests("/cookie").last().headers.contains("Cookie"));
}

} // namespace
} // namespace morvane
