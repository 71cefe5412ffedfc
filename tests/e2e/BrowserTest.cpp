#include "BrowserTest.h"

#include <QDeadlineTimer>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

BrowserTest::BrowserTest()
{
    m_site.page(
        u"/birds"_s,
        "<title>Birds</title><h1>Kingfishers</h1><p>A kingfisher eats fish.</p>"
        "<form action=\"/search\"><input name=\"q\" aria-label=\"Search\"><button>Go</button></form>");
    m_site.page(u"/files"_s,
                "<title>Files</title><a href=\"/file\">birds.dat</a> <a href=\"/birds\">Birds</a>");
    m_site.page(u"/search"_s, "<title>Found</title><p>One kingfisher was found.</p>");
    m_site.answer(u"/file"_s, "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                              "Content-Disposition: attachment; filename=\"birds.dat\"\r\n"
                              "Content-Length: 5\r\n\r\nbirds");
}

MorvaneSession &BrowserTest::prepareBrowser(std::vector<ScriptedTurn> turns, Hearing hearing)
{
    MorvaneSession &session = prepare(std::move(turns), hearing);
    // The engine refuses to run as root inside its own sandbox, and so do many containers.
    if (geteuid() == 0)
        session.setVariable(u"QTWEBENGINE_DISABLE_SANDBOX"_s, u"1"_s);
    // OpenGL, which a processor does here, is twice the work.
    session.setVariable(u"QT_QUICK_BACKEND"_s, u"software"_s);
    return session;
}

MorvaneSession &BrowserTest::startBrowser(std::vector<ScriptedTurn> turns)
{
    MorvaneSession &session = prepareBrowser(std::move(turns));
    session.start();
    return session;
}

MorvaneSession &BrowserTest::startWithBirds()
{
    MorvaneSession &session = startBrowser({});
    openWindow(session);
    openByKeyboard(session, u"/birds"_s, u"Birds"_s);
    return session;
}

void BrowserTest::openWindow(MorvaneSession &morvane)
{
    morvane.program().find(u"Morvane Browser"_s, AccessibleRole::pushButton).press();
    ASSERT_TRUE(isInFront(morvane));
    ASSERT_TRUE(showsPage(morvane, u"Start Page"_s));
}

bool BrowserTest::isInFront(MorvaneSession &morvane)
{
    return morvane.program().shows([](const AccessibleNode &node) {
        return node.role == AccessibleRole::frame && node.name == "Morvane Browser"_L1 &&
               node.has(AccessibleState::active);
    });
}

bool BrowserTest::showsPage(MorvaneSession &morvane, const QString &title)
{
    return morvane.program().shows(u"Browser content: "_s + title);
}

void BrowserTest::openByKeyboard(MorvaneSession &morvane, const QString &path, const QString &title)
{
    morvane.keyboard().press(u"Ctrl+L"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Address bar"_s));
    morvane.keyboard().type(m_site.url(path).toString());
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(showsPage(morvane, title));
}

bool BrowserTest::moveTo(MorvaneSession &morvane, const QString &key, const QString &name)
{
    // A field of the page says that it has the focus even while the window's own have it. Every press is
    // answered before the next, but for those that nothing answers.
    QStringList before;
    QDeadlineTimer pause(0);
    return morvane.program().becomes([&] {
        QStringList focused;
        bool isThere = false;
        morvane.program().tree().visit([&](const AccessibleNode &node) {
            if (!node.has(AccessibleState::focused))
                return;
            focused.append(node.element.path());
            isThere = isThere || node.name == name;
        });
        if (!isThere && (pause.hasExpired() || (!focused.isEmpty() && focused != before))) {
            before = focused;
            morvane.keyboard().press(key);
            pause.setRemainingTime(1'500);
        }
        return isThere;
    });
}

void BrowserTest::sendFromPanel(MorvaneSession &morvane, const QString &text)
{
    ASSERT_TRUE(moveTo(morvane, u"F6"_s, u"Tell Morvane what to do in the browser"_s));
    morvane.keyboard().type(text);
    morvane.keyboard().press(u"Return"_s);
}

} // namespace morvane
