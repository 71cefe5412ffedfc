#include "ScreenFixture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using ApplicationToolsTest = ScreenFixture;
using ClipboardToolsTest = ScreenFixture;

TEST_F(ApplicationToolsTest, TheFrontmostProgramIsNamed)
{
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is unknown."_s);
    m_desktop.applications->front = RunningApplication{1, {}};
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is unknown."_s);
    m_desktop.applications->front = RunningApplication{1, u"Terminal"_s};
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is Terminal."_s);
}

TEST_F(ApplicationToolsTest, ARunningProgramIsFoundWhateverTheCase)
{
    m_desktop.applications->runningApplications = {{1, u"Files"_s}, {2, u"Safari"_s}, {3, u"safari"_s}};
    EXPECT_EQ(run(m_tools.activateApp(u" safari\n"_s)), u"Activated safari."_s);
    EXPECT_THAT(events(), ElementsAre(u"activate Safari"_s));
}

TEST_F(ApplicationToolsTest, AProgramThatDoesNotRunIsLaunched)
{
    EXPECT_EQ(run(m_tools.activateApp(u"Notes"_s)), u"Launched and activated Notes."_s);
    EXPECT_THAT(events(), ElementsAre(u"open Notes"_s));
    m_desktop.applications->opens = false;
    EXPECT_EQ(run(m_tools.activateApp(u"Notes"_s)),
              u"Error: could not find or launch the application named \"Notes\"."_s);
    EXPECT_EQ(run(m_tools.activateApp(u" "_s)), u"Error: an application name is required."_s);
}

TEST_F(ApplicationToolsTest, AProgramIsOpened)
{
    EXPECT_EQ(run(m_tools.openApplication(u"Notes"_s)), u"Opened the Notes application."_s);
    m_desktop.applications->opens = false;
    EXPECT_EQ(run(m_tools.openApplication(u"Notes"_s)),
              u"Error: could not find or open the application named \"Notes\"."_s);
}

TEST_F(ApplicationToolsTest, AnAddressIsOpenedInTheChosenOrTheUsualProgram)
{
    EXPECT_EQ(run(m_tools.openURL(u" https://example.com/ü x \n"_s, {})),
              u"Opened https://example.com/%C3%BC%20x in the browser."_s);
    EXPECT_EQ(run(m_tools.openURL(u"mailto:a@example.com"_s, u"Mail"_s)),
              u"Opened mailto:a@example.com in the browser."_s);
    EXPECT_THAT(events(), ElementsAre(u"open address https://example.com/%C3%BC%20x in []"_s,
                                      u"open address mailto:a@example.com in [Mail]"_s));
    m_desktop.applications->opens = false;
    EXPECT_EQ(run(m_tools.openURL(u"https://example.com"_s, {})),
              u"Error: could not open the URL. Make sure a default browser is set."_s);
}

TEST_F(ApplicationToolsTest, WhatIsNoFullAddressIsRefusedAsItWasGiven)
{
    for (const QString &url : {u"example.com"_s, u""_s, u" just words "_s, u"http://["_s}) {
        EXPECT_EQ(run(m_tools.openURL(url, {})),
                  u"Error: \""_s + url +
                      u"\" is not a valid URL. Use a full address like "
                      "https://www.youtube.com/results?search_query=piano+lesson"_s);
    }
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(ApplicationToolsTest, AStopEndsTheWaitingForAProgramThatIsOpened)
{
    const QString stopped = u"Error: stopped before it was done."_s;
    auto &hook = m_desktop.applications->onOpen;
    EXPECT_EQ(stopDuring(hook, m_tools.openApplication(u"Notes"_s)), stopped);
    EXPECT_EQ(stopDuring(hook, m_tools.activateApp(u"Notes"_s)), stopped);
    EXPECT_EQ(stopDuring(hook, m_tools.openURL(u"https://example.com"_s, {})), stopped);
}

TEST_F(ClipboardToolsTest, TheClipboardIsReadWhole)
{
    EXPECT_EQ(run(m_tools.clipboardRead()), u"The clipboard is empty or does not contain text."_s);
    m_desktop.clipboard->content = QString();
    EXPECT_EQ(run(m_tools.clipboardRead()), u"The clipboard is empty or does not contain text."_s);
    m_desktop.clipboard->content = QString(500000, u'x') + u"\n "_s;
    EXPECT_EQ(run(m_tools.clipboardRead()), u"Clipboard content: "_s + QString(500000, u'x') + u"\n "_s);
}

TEST_F(ClipboardToolsTest, AStopEndsTheReading)
{
    m_desktop.clipboard->content = u"secret"_s;
    EXPECT_EQ(stopDuring(m_desktop.clipboard->onRead, m_tools.clipboardRead()),
              u"Error: stopped before it was done."_s);
}

TEST_F(ClipboardToolsTest, TheClipboardIsSetWithoutWhiteSpaceAround)
{
    EXPECT_EQ(run(m_tools.clipboardSet(u"\n two words\t"_s)), u"Copied 9 characters to the clipboard."_s);
    EXPECT_EQ(m_desktop.clipboard->content, u"two words"_s);
    EXPECT_EQ(run(m_tools.clipboardSet(u" \n"_s)), u"Error: nothing to copy."_s);
    EXPECT_EQ(m_desktop.clipboard->content, u"two words"_s);
}

} // namespace
} // namespace morvane
