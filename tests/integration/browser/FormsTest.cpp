#include "EngineFixture.h"

#include <QFileDialog>
#include <QWidget>

namespace morvane {
namespace {

/// Forms of every kind and documents of odd shapes, as the agent reads and works them.
class FormsTest : public EngineFixture {
protected:
    FormsTest() { server.page("/sent", "<title>Sent</title>"); }

    /// The same place of the test's site under another name.
    QString named(const QString &host, const QString &path) const
    {
        QUrl address = server.url(path);
        address.setHost(host);
        return address.toString();
    }
    /// Opens a page of which this is the only element, such as "button 'plain'".
    void showOnly(const QString &element, const QByteArray &body)
    {
        const QString text = show(body);
        EXPECT_TRUE(text.endsWith(":\n[1] " + element + '\n')) << text.toStdString();
    }
    QByteArray lastSent() const
    {
        const auto requests = server.requests("/sent");
        return requests.isEmpty() ? QByteArray() : requests.last().target;
    }
};

TEST_F(FormsTest, EveryKindOfFieldIsFilledAndArrives)
{
    QByteArray form = "<form action=/sent>";
    const QList<std::pair<QByteArray, QString>> kinds{
        {"text", "words"},      {"search", "birds"},
        {"email", "a@b.test"},  {"url", "http://a.test/"},
        {"tel", "+49 30 1"},    {"number", "12"},
        {"password", "secret"}, {"date", "2026-11-22"},
        {"time", "12:30"},      {"week", "2026-W47"},
        {"month", "2026-11"},   {"range", "30"},
        {"color", "#ff8800"},   {"datetime-local", "2026-11-22T12:30"}};
    for (const auto &[kind, typed] : kinds)
        form += "<input type=" + kind + " name=" + kind + " aria-label=" + kind + ">";
    const QString shown = show(form + "<textarea name=area aria-label=area></textarea><input type=hidden "
                                      "name=hidden value=kept><button>Send</button></form>");
    EXPECT_FALSE(shown.contains("hidden"));
    for (const auto &[kind, typed] : kinds) {
        const int number = numberOf(shown, kind);
        ASSERT_GT(number, 0) << kind.toStdString();
        EXPECT_EQ(type(number, typed), QString("Typed the text into field [%1].").arg(number));
    }
    type(numberOf(shown, "area"), "two\nlines");
    EXPECT_EQ(click(numberOf(shown, "Send")), "Clicked 'Send'.");
    ASSERT_TRUE(waitUntil([this] { return tab().title() == "Sent"; }));
    const QByteArray sent = lastSent();
    for (const auto &[kind, typed] : kinds)
        EXPECT_TRUE(sent.contains('?' + kind + '=') || sent.contains('&' + kind + '=')) << kind.toStdString();
    for (const char *part :
         {"text=words", "tel=%2B49+30+1", "number=12", "password=secret", "date=2026-11-22", "range=30",
          "color=%23ff8800", "area=two%0D%0Alines", "hidden=kept"})
        EXPECT_TRUE(sent.contains(part)) << part << " in " << sent.toStdString();
}

TEST_F(FormsTest, BoxesAndChoicesArePressed)
{
    show("<form action=/sent><input type=checkbox name=box value=on aria-label=box>"
         "<input type=radio name=choice value=one><input type=radio name=choice value=two>"
         "<div role=checkbox onclick='this.textContent=\"ticked\"'>own</div>"
         "<button name=by value=first>First</button><input type=submit name=by value=second>"
         "<input type=image src=/none alt=x aria-label=picture style='width:20px;height:20px'>"
         "<button disabled>Off</button><input type=reset></form>");
    EXPECT_EQ(click(1), "Clicked 'box'.");
    EXPECT_EQ(click(3), "Clicked 'INPUT'.");
    EXPECT_EQ(click(4), "Clicked 'ticked'.");
    EXPECT_EQ(click(8), "Clicked 'Off'.") << "which does nothing, as for the user";
    EXPECT_EQ(
        value("[...document.querySelectorAll('input')].map(i => i.checked).slice(0, 3).join()").toString(),
        "true,false,true");
    EXPECT_EQ(click(6), "Clicked 'INPUT'.");
    EXPECT_TRUE(waitUntil([this] { return lastSent() == "/sent?box=on&choice=two&by=second"; }))
        << lastSent().toStdString();
}

TEST_F(FormsTest, AFormIsPostedAndOneThatIsNotValidStays)
{
    show("<form action=/sent method=post><input name=town aria-label=town></form>"
         "<form action=/never><input required aria-label=must></form>");
    EXPECT_EQ(type(2, "", true), "Typed the text into field [2] and submitted.") << "as it was asked to";
    EXPECT_TRUE(read().startsWith("Page: Page\n"));
    EXPECT_EQ(type(1, "Köln", true), "Typed the text into field [1] and submitted.");
    ASSERT_TRUE(arrives("/sent"));
    EXPECT_EQ(server.requests("/sent").last().method, "POST");
    EXPECT_EQ(server.requests("/sent").last().body, "town=K%C3%B6ln");
    EXPECT_TRUE(server.requests("/never").isEmpty());
}

TEST_F(FormsTest, AFileIsChosenByTheUserAlone)
{
    const QString shown = show("<input type=file id=f aria-label=Photo>");
    EXPECT_TRUE(shown.contains("[1] input 'Photo'\n"));
    EXPECT_EQ(type(1, "/etc/passwd"), "Error: could not type into that element.");
    EXPECT_EQ(click(1), "Clicked 'Photo'.");
    EXPECT_FALSE(sheet()) << "nobody is asked without having pressed anything";
    value("document.getElementById('f').focus()");
    press(" ");
    underSheet([] { return true; },
               [](QDialog &dialog) {
                   EXPECT_EQ(dialog.windowTitle(), "Choose File for 127.0.0.1");
                   EXPECT_EQ(dialog.windowModality(), Qt::WindowModal);
                   auto *const files = qobject_cast<QFileDialog *>(&dialog);
                   ASSERT_TRUE(files);
                   files->selectFile(MORVANE_SOURCE_DIR "/LICENSE");
                   dialog.accept();
               });
    EXPECT_TRUE(waitUntil([this] { return valueOf("f").endsWith("LICENSE"); }));
}

TEST_F(FormsTest, ATabThatClosesWhileAFileIsChosenTakesTheQuestionWithIt)
{
    show("<input type=file id=f>");
    manager->newTab();
    manager->switchTab(manager->tabs().front()->id());
    page().view()->show();
    value("document.getElementById('f').focus()");
    press(" ");
    underSheet([] { return true; }, [this](QDialog &) { manager->closeTab(manager->activeTabID()); });
    EXPECT_EQ(manager->tabs().size(), 1U);
    EXPECT_EQ(value("1 + 1").toInt(), 2);
}

TEST_F(FormsTest, FramesAreLeftOutAndDoNoHarm)
{
    const QByteArray inside = "<title>Inside</title><body data-agent-ref=@e0><button>inner</button>";
    server.page("/frame", inside);
    server.page("/page",
                "<title>Outside</title><button>before</button><iframe src=/frame></iframe><iframe src=\"" +
                    named("other.test", "/frame").toUtf8() +
                    "\"></iframe><iframe srcdoc='<button>written</button>'></iframe>"
                    "<iframe sandbox src=/frame></iframe><button>behind</button>");
    const QString text = open("/page");
    EXPECT_TRUE(text.startsWith("Page: Outside\n"));
    EXPECT_TRUE(text.endsWith(":\n[1] button 'before'\n[2] button 'behind'\n")) << text.toStdString();
    EXPECT_EQ(server.requests("/frame").size(), 3);
    EXPECT_EQ(click(2), "Clicked 'behind'.");
    EXPECT_EQ(visits.size(), 1) << "a frame is no visit";
    // A frame that goes elsewhere takes no numbers away.
    runInPage("document.querySelector('iframe').src = '/frame?again'");
    ASSERT_TRUE(waitUntil([this] { return server.requests("/frame").size() == 4; }));
    EXPECT_EQ(click(1), "Clicked 'before'.");
}

TEST_F(FormsTest, AFrameMayTakeThePageElsewhereOnlyAsALinkDoes)
{
    server.page("/frame", "<a id=l href=/two target=_top>leave</a>");
    server.page("/two", "<title>Two</title>");
    show("<iframe src=/frame></iframe>");
    EXPECT_EQ(tab().lastElementRefs().size(), 0);
    runInPage("frames[0].document.getElementById('l').click()");
    EXPECT_TRUE(arrives("/two"));
    EXPECT_TRUE(read().startsWith("Page: Two\n"));
}

TEST_F(FormsTest, WhatLiesInAShadowTreeIsNotListedAndDoesNoHarm)
{
    showOnly("button 'plain'",
             "<div id=open></div><div id=closed></div><button>plain</button><script>"
             "for (const mode of ['open', 'closed']) document.getElementById(mode)"
             ".attachShadow({mode}).innerHTML = '<button>in ' + mode + '</button>'</script>");
    EXPECT_EQ(click(1), "Clicked 'plain'.");
}

TEST_F(FormsTest, WhatIsCoveredIsListedAndPressed)
{
    showOnly("button 'under'",
             "<button onclick='document.title=\"pressed\"'>under</button><div style='position:"
             "fixed;inset:0;background:#fff'>a banner over everything</div>");
    EXPECT_EQ(click(1), "Clicked 'under'.");
    EXPECT_EQ(tab().title(), "pressed");
}

TEST_F(FormsTest, WhatIsOutOfSightSidewaysIsNotListed)
{
    showOnly("button 'part'",
             "<body style='margin:0'><button style='position:absolute;left:-300px;width:90px'>left"
             "</button><button style='position:absolute;left:9000px'>right</button>"
             "<button style='position:absolute;left:-40px;width:90px'>part</button>");
}

TEST_F(FormsTest, TextThatCanBeEditedIsListedAndPressed)
{
    showOnly("div 'some words'",
             "<div contenteditable=true onclick='document.title=this.textContent'>some words</div>"
             "<div contenteditable>not by this spelling</div>");
    EXPECT_EQ(click(1), "Clicked 'some words'.");
    EXPECT_EQ(value("document.title").toString(), "some words");
}

TEST_F(FormsTest, ANumberKeepsToItsElementWhereverThePageMovesIt)
{
    show("<div id=d><button onclick='document.title=\"one\"'>one</button>"
         "<button onclick='document.title=\"two\"'>two</button></div>");
    runInPage("const d = document.getElementById('d'); d.append(d.firstChild); "
              "d.prepend(document.createElement('button'))");
    EXPECT_EQ(click(1), "Clicked 'one'.");
    EXPECT_EQ(value("document.title").toString(), "one");
}

TEST_F(FormsTest, WhatComesLateIsThereInTheNextReading)
{
    EXPECT_TRUE(show("<p>soon").endsWith("(No clickable elements were found on this page.)"));
    EXPECT_TRUE(click(1).startsWith("Error: there is no element [1]."));
    runInPage("fetch('/sent').then(() => document.body.innerHTML = '<button>late</button>')");
    ASSERT_TRUE(waitUntil([this] { return value("document.body.innerText").toString() == "late"; }));
    EXPECT_TRUE(read().endsWith(":\n[1] button 'late'\n"));
    EXPECT_EQ(click(1), "Clicked 'late'.");
}

TEST_F(FormsTest, ApplicationsThatStayInOneDocumentAreReadAnew)
{
    show("<main><a href=/next onclick='history.pushState({}, \"\", \"/next\"); document.title = \"Next\";"
         "document.querySelector(\"main\").innerHTML = \"<button>next</button>\"; return "
         "false'>go</a></main>");
    EXPECT_EQ(click(1), "Clicked 'go'.");
    EXPECT_TRUE(waitUntil([this] { return tab().urlString() == server.url("/next").toString(); }));
    EXPECT_TRUE(server.requests("/next").isEmpty());
    const QString text = read();
    EXPECT_TRUE(text.startsWith("Page: Next\nURL: " + server.url("/next").toString() + '\n'));
    EXPECT_TRUE(text.endsWith(":\n[1] button 'next'\n"));
    EXPECT_TRUE(tab().canGoBack());
}

TEST_F(FormsTest, ARoleWithoutEndIsCut)
{
    const QString text =
        show("<button id=b>x</button><script>document.getElementById('b').setAttribute('role', "
             "'r'.repeat(90000))</script>");
    EXPECT_TRUE(text.endsWith("[1] " + QString(80, 'r') + " 'x'\n")) << text.size();
}

} // namespace
} // namespace morvane
