#include "EngineFixture.h"

namespace morvane {
namespace {

/// By which name a site is told apart from others.
class SiteNameTest : public EngineFixture {};

TEST_F(SiteNameTest, ASiteInAnotherScriptIsNotTakenForTheOneThatItLooksLike)
{
    const QString cyrillic = "xn--80ak6aa92e.com"; // as it is sent; it looks like a name in Latin letters
    proxy().page("http://xn--80ak6aa92e.com/", "<p>x");
    run(manager->operations().browserOpen("http://" + cyrillic + "/"));
    EXPECT_EQ(tab().title(), cyrillic);
    EXPECT_TRUE(announcer.spoken.contains("Loaded " + cyrillic)) << announcer.spoken.join('|').toStdString();
    const auto expectItsName = [&](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), cyrillic + " says");
        dialog.reject();
    };
    speak("alert('Your password?')", expectItsName);
    runInPage("const a = document.createElement('a'); a.download = 'made.txt'; a.href = "
              "URL.createObjectURL(new Blob(['words'])); a.click()");
    ASSERT_TRUE(waitUntil([this] { return window.destinations.size() == 1; }));
    EXPECT_EQ(window.asked.last(), "where to write made.txt of " + cyrillic);
    window.destinations.last()({});
    HttpHeaders headers;
    headers.set("WWW-Authenticate", "Basic realm=\"Mail\"");
    proxy().answer("http://xn--80ak6aa92e.com/mail", rawHttpResponse(401, "no", headers));
    page().load(QUrl("http://xn--80ak6aa92e.com/mail"));
    underSheet([] { return true; }, expectItsName);
}

TEST_F(SiteNameTest, WhatHasNoSiteDoesNotSpeakForThePageThatItStandsIn)
{
    show("<iframe sandbox='allow-scripts allow-modals' srcdoc='<script>onmessage = () => "
         "alert(\"Your password?\")</script>'></iframe>");
    speak("frames[0].postMessage('now', '*')", [](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "An embedded page says");
        dialog.reject();
    });
}

} // namespace
} // namespace morvane
