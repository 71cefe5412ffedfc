#include "EngineFixture.h"

#include "support/TestCertificate.h"
#include "support/TlsServer.h"
#include "ui/sheets/AnswerGuard.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWidget>

namespace morvane {
namespace {

/// What pages want of the user and of the computer.
class SafetyTest : public EngineFixture {
protected:
    QString title() { return value("document.title").toString(); }
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
        QTest::keyClick(&dialog, Qt::Key_Return);
        EXPECT_FALSE(dialog.isVisible());
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(title(), "true") << "the first answer stands";
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
        const auto *const words = dialog.findChild<QPlainTextEdit *>();
        QStringList stops;
        for (const QWidget *next = words->nextInFocusChain(); next != words; next = next->nextInFocusChain())
            if (const auto *const button = qobject_cast<const QAbstractButton *>(next))
                stops.append(button->text().remove('&'));
            else if (next == field)
                stops.append("the field");
        EXPECT_EQ(stops, (QStringList{"the field", "Do not let this page ask again", "OK", "Cancel"}));
        dialog.accept();
    });
}

TEST_F(SafetyTest, APageThatNobodySeesIsRefusedWithoutASheet)
{
    show("<p>x");
    page().view()->hide();
    runInPage("document.title = confirm('unseen?') + ' ' + prompt('unseen?')");
    EXPECT_EQ(title(), "false null");
    page().view()->showMinimized();
    runInPage("document.title = confirm('unseen?') + ', minimized'");
    EXPECT_EQ(title(), "false, minimized");
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

TEST_F(SafetyTest, TheMenuOfAPageLeadsToNothingButTheWeb)
{
    show("<p>x");
    awaitInput();
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
