#include "EngineFixture.h"

#include "support/UrlHandler.h"

namespace morvane {
namespace {

/// What a page may say and do when it is left, or wants other programs.
class LeavingTest : public EngineFixture {
protected:
    LeavingTest() { server.page("/two", "<title>Two</title>"); }

    /// A page in which the user has written something that it would lose.
    void write()
    {
        open("/two");
        show("<input id=i autofocus><a href=/two>away</a><script>onbeforeunload = () => 'no'</script>");
        value("document.getElementById('i').focus()");
        press("text");
        ASSERT_TRUE(waitUntil([this] { return valueOf("i") == "text"; }));
    }
};

TEST_F(LeavingTest, TheUserIsAskedAboutWhatWouldBeLost)
{
    write();
    const auto leave = [this](const std::function<void(QDialog &)> &answer) {
        page().goBack();
        underSheet([] { return true; }, answer);
    };
    leave([](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "127.0.0.1 says");
        EXPECT_TRUE(dialog.accessibleDescription().startsWith("Are you sure you want to leave this page?"))
            << dialog.accessibleDescription().toStdString();
        dialog.reject();
    });
    EXPECT_EQ(valueOf("i"), "text");
    EXPECT_FALSE(page().isLoading());
    leave([](QDialog &dialog) { dialog.accept(); });
    EXPECT_TRUE(arrives("/two"));
}

TEST_F(LeavingTest, TheAgentLeavesWithoutAsking)
{
    write();
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
    write();
    EXPECT_EQ(run(manager->operations().browserBack()), "Went back to the previous page.");
    EXPECT_EQ(page().address(), server.url("/two"));
    EXPECT_FALSE(sheet());
}

TEST_F(LeavingTest, ALoadThatFailsLeavesThePageAsTalkativeAsItWas)
{
    write();
    server.answer("/nothing", "HTTP/1.1 204 No Content\r\n\r\n");
    page().load(server.url("/nothing"));
    ASSERT_TRUE(waitUntil([this] { return !page().isLoading(); }));
    EXPECT_EQ(valueOf("i"), "text");
    speak("document.title = confirm('Sure?')", [](QDialog &dialog) { dialog.accept(); });
    EXPECT_EQ(value("document.title").toString(), "true");
}

TEST_F(LeavingTest, AStepWithinTheDocumentLeavesItAsTalkativeAsItWas)
{
    show("<p>x");
    runInPage("location.hash = 'a'");
    ASSERT_TRUE(waitUntil([this] { return tab().canGoBack(); }));
    EXPECT_EQ(run(manager->operations().browserBack()), "Went back to the previous page.");
    speak("document.title = confirm('Sure?')", [](QDialog &dialog) { dialog.accept(); });
    EXPECT_EQ(value("document.title").toString(), "true");
}

TEST_F(LeavingTest, AQuestionGoesWithThePageThatAsksIt)
{
    show("<button onclick='document.title = confirm(1)'>ask</button>");
    clock.longest = std::chrono::seconds(1); // for the limit of the operation
    auto handle = scheduler.spawn(manager->operations().browserClick(1));
    underSheet([&] { return handle.done(); }, [this](QDialog &) { page().load(server.url("/two")); });
    ASSERT_TRUE(handle.done());
    EXPECT_TRUE(arrives("/two"));
    EXPECT_FALSE(announcer.spoken.join('|').contains("crashed"));
}

TEST_F(LeavingTest, APageThatAsksWithoutEndCanBeLeft)
{
    show("<button onclick='for (;;) confirm(1)'>ask</button>");
    page().evaluate("document.querySelector('button').click()", [](const QVariant &) {});
    underSheet([] { return true; }, [this](QDialog &) { page().load(server.url("/two")); });
    EXPECT_TRUE(arrives("/two"));
    EXPECT_FALSE(sheet());
    EXPECT_FALSE(announcer.spoken.join('|').contains("crashed"));
}

TEST_F(LeavingTest, NoPageStartsAnotherProgram)
{
    const UrlHandler handler;
    server.page("/frame", "<a id=l href='mailto:a@b.test'>write</a>");
    show("<iframe src=/frame></iframe><a id=m href='smb:x'>odd</a><input id=i>");
    value("document.getElementById('i').focus()");
    press("x");
    ASSERT_TRUE(waitUntil([this] { return valueOf("i") == "x"; }));
    runInPage("frames[0].document.getElementById('l').click(); document.getElementById('m').click();"
              "const f = document.createElement('iframe'); f.src = 'smb:y'; document.body.append(f);"
              "window.open('mailto:c@d.test')");
    EXPECT_TRUE(open("/two").startsWith("Page: Two\n"));
    EXPECT_TRUE(handler.opened.isEmpty());
}

} // namespace
} // namespace morvane
